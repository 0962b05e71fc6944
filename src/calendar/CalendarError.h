#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Text.h"

#include <optional>

namespace kestrant {

/// Why a change to the calendar did not happen. Nothing was written, but for outcomeUnknown.
struct CalendarError {
    enum class Code {
        /// The calendars may not be read or written (yet).
        notAuthorized,
        /// A title of nothing but blanks.
        emptyTitle,
        /// The event was deleted, or moved too far to be recognised, here or elsewhere.
        itemNotFound,
        /// An end that does not come after the start.
        invalidDateRange,
        /// The chosen calendar was deleted, here or elsewhere.
        calendarUnavailable,
        /// The database has not said in time whether it made the change; `underlying` is its own text.
        outcomeUnknown,
        /// The database refused; `underlying` is its own text.
        database,
    };

    Code code = Code::database;
    std::optional<TextPair> underlying;

    [[nodiscard]] static CalendarError from(const EKError& error);

    /// The sentence for the person.
    [[nodiscard]] TextPair message() const;

    bool operator==(const CalendarError&) const = default;
};

}  // namespace kestrant
