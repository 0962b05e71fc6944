#pragma once

#include "foundation/Text.h"

#include <QLocale>
#include <QString>

#include <tl/expected.hpp>

#include <functional>

namespace kestrant {

class BackgroundExecutor;
class CalendarActionRecorder;
class Clock;
class CurrentTimeZone;
class EKEventStore;
class NotificationCenter;
class OpenReminders;
class Preferences;
class Scheduler;

/// The surroundings of a CalendarStore. Everything here must outlive the store.
struct CalendarStoreServices {
    EKEventStore& eventStore;
    /// Those of the same database.
    OpenReminders& openReminders;
    Scheduler& scheduler;
    const Clock& clock;
    CurrentTimeZone& currentZone;
    const Preferences& preferences;
    NotificationCenter& notifications;
    /// Where rows are made and grouped.
    BackgroundExecutor& executor;
    /// The locale of titles' order, asked anew for each load.
    std::function<QLocale()> locale;
    /// Clears a reminder's due date: the reminders' own operation. Calls back once, on a later turn, with the
    /// failure's text.
    std::function<void(const QString& reminderID, std::function<void(tl::expected<void, TextPair>)> done)>
        clearReminderDueDate;
    /// May be null: then nothing is recorded.
    CalendarActionRecorder* actions = nullptr;
};

}  // namespace kestrant
