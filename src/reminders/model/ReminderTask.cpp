#include "reminders/model/ReminderTask.h"

namespace kestrant {

QString rawValue(ReminderSortMode mode) {
    switch (mode) {
    case ReminderSortMode::manual:
        return QStringLiteral("manual");
    case ReminderSortMode::dueDate:
        return QStringLiteral("dueDate");
    case ReminderSortMode::priority:
        return QStringLiteral("priority");
    case ReminderSortMode::title:
        return QStringLiteral("title");
    case ReminderSortMode::creationOldestFirst:
        return QStringLiteral("creationOldestFirst");
    case ReminderSortMode::creationNewestFirst:
        return QStringLiteral("creationNewestFirst");
    }
    return {};
}

std::optional<ReminderSortMode> reminderSortMode(QStringView raw) {
    for (const ReminderSortMode mode : allReminderSortModes) {
        if (rawValue(mode) == raw)
            return mode;
    }
    return std::nullopt;
}

TextPair title(ReminderSortMode mode) {
    switch (mode) {
    case ReminderSortMode::manual:
        return text("Manual order", "Ordre manuel");
    case ReminderSortMode::dueDate:
        return text("Due date", "Échéance");
    case ReminderSortMode::priority:
        return text("Priority", "Priorité");
    case ReminderSortMode::title:
        return text("Title", "Titre");
    case ReminderSortMode::creationOldestFirst:
        return text("Creation: oldest first", "Création : plus ancien");
    case ReminderSortMode::creationNewestFirst:
        return text("Creation: newest first", "Création : plus récent");
    }
    return {};
}

QString rawValue(NewReminderPriority priority) {
    switch (priority) {
    case NewReminderPriority::high:
        return QStringLiteral("high");
    case NewReminderPriority::normal:
        return QStringLiteral("normal");
    case NewReminderPriority::low:
        return QStringLiteral("low");
    }
    return {};
}

std::optional<NewReminderPriority> newReminderPriority(QStringView raw) {
    for (const NewReminderPriority priority : allNewReminderPriorities) {
        if (rawValue(priority) == raw)
            return priority;
    }
    return std::nullopt;
}

}  // namespace kestrant
