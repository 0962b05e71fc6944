#include "reminders/model/ReminderTask.h"

#include "foundation/Choice.h"

namespace kestrant {

template <>
inline constexpr std::array choicesOf<ReminderSortMode>{
    Choice{ReminderSortMode::manual, "manual", "Manual order", "Ordre manuel"},
    Choice{ReminderSortMode::dueDate, "dueDate", "Due date", "Échéance"},
    Choice{ReminderSortMode::priority, "priority", "Priority", "Priorité"},
    Choice{ReminderSortMode::title, "title", "Title", "Titre"},
    Choice{ReminderSortMode::creationOldestFirst, "creationOldestFirst", "Creation: oldest first",
           "Création : plus ancien"},
    Choice{ReminderSortMode::creationNewestFirst, "creationNewestFirst", "Creation: newest first",
           "Création : plus récent"},
};

template <>
inline constexpr std::array choicesOf<NewReminderPriority>{
    Choice{NewReminderPriority::high, "high", "High", "Haute"},
    Choice{NewReminderPriority::normal, "normal", "Medium", "Moyenne"},
    Choice{NewReminderPriority::low, "low", "Low", "Basse"},
};

QString rawValue(ReminderSortMode mode) {
    return rawValue<ReminderSortMode>(mode);
}

std::optional<ReminderSortMode> reminderSortMode(QStringView raw) {
    return fromRawValue<ReminderSortMode>(raw);
}

TextPair title(ReminderSortMode mode) {
    return title<ReminderSortMode>(mode);
}

QString rawValue(NewReminderPriority priority) {
    return rawValue<NewReminderPriority>(priority);
}

std::optional<NewReminderPriority> newReminderPriority(QStringView raw) {
    return fromRawValue<NewReminderPriority>(raw);
}

}  // namespace kestrant
