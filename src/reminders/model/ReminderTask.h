#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Choice.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "reminders/model/ReminderAlertSchedule.h"
#include "reminders/model/ReminderRepeat.h"

#include <QString>
#include <QUuid>

#include <array>
#include <optional>
#include <vector>

namespace kestrant {

/// One open reminder as it is shown.
struct ReminderTask {
    /// The identifier in the database; the task's identity everywhere.
    QString id;
    QString title;
    /// For a date-only reminder, the start of its day in the person's time zone.
    std::optional<Instant> dueDate;
    bool dueDateIncludesTime = false;
    std::optional<ReminderAlertSchedule> dueAlertSchedule;
    std::optional<Instant> creationDate;
    /// 0 none, 1 highest to 9 lowest.
    int priority = 0;
    QString listID;
    /// From the flag index, not from the database.
    bool isFlagged = false;
    std::vector<EKRecurrenceRule> recurrenceRules;

    /// Completing it moves it to its next date, as recurrenceRules say.
    [[nodiscard]] bool isRecurring() const { return !recurrenceRules.empty(); }

    bool operator==(const ReminderTask&) const = default;
};

struct ReminderList {
    QString id;
    QString title;
    std::optional<Color> color;
    /// False for a list that takes no new or changed reminders.
    bool allowsContentModifications = true;
    /// False while it cannot be reached; then it takes no changes either.
    bool isAnswering = true;

    bool operator==(const ReminderList&) const = default;
};

/// Whether the reminders may be read, and if not, why.
struct ReminderAccessState {
    enum class Kind {
        /// Access has not been requested yet; nothing is shown.
        notDetermined,
        /// The database is being opened.
        requesting,
        /// Reminders are read and written.
        authorized,
        /// The person said no.
        denied,
        /// The machine's rules say no.
        restricted,
        /// The database could not be opened, or refused a completion: `message` says why.
        failed,
    };
    Kind kind = Kind::notDetermined;
    /// Only for `failed`.
    TextPair message;

    [[nodiscard]] static ReminderAccessState failed(const TextPair& message) {
        return {Kind::failed, message};
    }
    bool operator==(const ReminderAccessState&) const = default;
};

enum class ReminderSortMode { manual, dueDate, priority, title, creationOldestFirst, creationNewestFirst };

/// As preferences and the command line hold them, in the order of the menu.
template <>
inline constexpr auto choicesOf<ReminderSortMode> = std::to_array<Choice<ReminderSortMode>>({
    {ReminderSortMode::manual, "manual", "Manual order", "Ordre manuel"},
    {ReminderSortMode::dueDate, "dueDate", "Due date", "Échéance"},
    {ReminderSortMode::priority, "priority", "Priority", "Priorité"},
    {ReminderSortMode::title, "title", "Title", "Titre"},
    {ReminderSortMode::creationOldestFirst, "creationOldestFirst", "Creation: oldest first",
     "Création : plus ancien"},
    {ReminderSortMode::creationNewestFirst, "creationNewestFirst", "Creation: newest first",
     "Création : plus récent"},
});

/// The priority chosen when creating.
enum class NewReminderPriority { high, normal, low };

template <>
inline constexpr auto choicesOf<NewReminderPriority> = std::to_array<Choice<NewReminderPriority>>({
    {NewReminderPriority::high, "high", "High", "Haute"},
    {NewReminderPriority::normal, "normal", "Medium", "Moyenne"},
    {NewReminderPriority::low, "low", "Low", "Basse"},
});

/// The database's number: 1, 5 or 9.
[[nodiscard]] constexpr int servicePriority(NewReminderPriority priority) {
    return 1 + 4 * static_cast<int>(priority);
}

/// The content of a creation form.
struct NewReminder {
    QString title;
    /// For a date-only reminder, any instant of its day in the person's time zone.
    std::optional<Instant> dueDate;
    bool dueDateIncludesTime = false;
    std::optional<ReminderAlertSchedule> dueAlertSchedule;
    /// Absent for none.
    std::optional<NewReminderPriority> priority = NewReminderPriority::normal;
    /// The list chosen in the form; absent leaves the choice to the store.
    std::optional<QString> listID;
    /// Names a list to be made for it, in place of listID; empty for none.
    QString newListTitle;
    bool isFlagged = false;
    /// Anything but `none` needs a due date.
    ReminderRepeat repeat = ReminderRepeat::none;
    /// In place of `repeat`, with its first date for the due date.
    std::optional<EKRecurrenceRule> rule;
    /// Empty for none.
    QString url;
    QString notes;
};

/// The content of an edit form, shown and returned.
struct ReminderEditDetails {
    QString title;
    /// For a date-only reminder, any instant of its day in the person's time zone.
    std::optional<Instant> dueDate;
    bool dueDateIncludesTime = false;
    std::optional<ReminderAlertSchedule> dueAlertSchedule;
    /// 0 none, 1 highest to 9 lowest.
    int priority = 0;
    QString listID;
    QString notes;

    bool operator==(const ReminderEditDetails&) const = default;
};

/// Asks the grid to scroll to one card and highlight it. Two requests for the same reminder differ in `id`.
struct ReminderRevealRequest {
    QUuid id;
    QString reminderID;

    bool operator==(const ReminderRevealRequest&) const = default;
};

}  // namespace kestrant
