#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Text.h"

#include <optional>

namespace kestrant {

/// Why a change to the reminders did not happen. Nothing was written, but for outcomeUnknown.
struct ReminderStoreError {
    enum class Code {
        /// There is no list to put the reminder into and none could be made; `underlying` says why.
        unableToCreateInitialList,
        /// The reminder was deleted, here or elsewhere.
        reminderNotFound,
        /// A title of nothing but blanks.
        emptyTitle,
        /// A time of day or an alert was given without a due date.
        dueDateRequired,
        /// A reminder without a due date cannot repeat.
        repeatRequiresDueDate,
        /// The list to move to was deleted, here or elsewhere.
        listUnavailable,
        /// The flag is set here but not where other programs see it.
        flagNotUpdated,
        /// Somebody else has changed the same meanwhile; `underlying` is the database's own text.
        changedElsewhere,
        /// The database has not said in time whether it made the change; `underlying` is its own text.
        outcomeUnknown,
        /// The database refused; `underlying` is its own text.
        database,
    };

    Code code = Code::database;
    std::optional<TextPair> underlying;

    [[nodiscard]] static ReminderStoreError from(const EKError& error);

    /// The sentence for the person.
    [[nodiscard]] TextPair message() const;

    bool operator==(const ReminderStoreError&) const = default;
};

}  // namespace kestrant
