#include "reminders/alerts/DueAlerts.h"

#include "eventkit/model/ReminderAlarms.h"

#include <algorithm>
#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

const QTime morning(9, 0);

bool wasDealtWith(const EKAlarm& alarm, Instant rings) {
    return alarm.acknowledgedDate && *alarm.acknowledgedDate >= rings;
}

/// Calls `visit(alarm, instant)` for each alarm that has an instant and was not dealt with.
template <typename Reminder, typename Visit>
void forEachOpenAlarm(Reminder& reminder, const TimeZone& zone, Visit visit) {
    const AlarmDates dates = AlarmDates::of(reminder);
    for (auto& alarm : reminder.alarms) {
        const auto instant = ringInstant(alarm, dates, zone);
        if (instant && !wasDealtWith(alarm, *instant))
            visit(alarm, *instant);
    }
}

}  // namespace

std::optional<Instant> dueAlert(const EKReminderData& reminder, Instant since, Instant now,
                                const TimeZone& zone) {
    std::optional<Instant> latest;
    forEachOpenAlarm(reminder, zone, [&](const EKAlarm&, Instant instant) {
        if (instant > since && instant <= now && (!latest || instant > *latest))
            latest = instant;
    });
    return latest;
}

std::optional<Instant> nextAlert(const EKReminderData& reminder, Instant now, const TimeZone& zone) {
    std::optional<Instant> next;
    forEachOpenAlarm(reminder, zone, [&](const EKAlarm&, Instant instant) {
        if (instant > now && (!next || instant < *next))
            next = instant;
    });
    return next;
}

void acknowledgeAlerts(EKReminderData& reminder, Instant now, const TimeZone& zone) {
    forEachOpenAlarm(reminder, zone, [&](EKAlarm& alarm, Instant instant) {
        if (instant <= now)
            alarm.acknowledgedDate = now;
    });
    std::erase_if(reminder.alarms, [](const EKAlarm& alarm) {
        return !alarm.snoozedAlarm.isEmpty() && alarm.acknowledgedDate;
    });
}

void snoozeAlert(EKReminderData& reminder, Instant until, Instant now, const QByteArray& newIdentifier,
                 const TimeZone& zone) {
    EKAlarm* rung = nullptr;
    std::optional<Instant> latest;
    forEachOpenAlarm(reminder, zone, [&](EKAlarm& alarm, Instant instant) {
        if (instant > now || (latest && instant < *latest))
            return;
        rung = &alarm;
        latest = instant;
    });
    if (!rung)
        return;
    EKAlarm again = EKAlarm::at(until);
    again.snoozedAlarm = rung->snoozedAlarm;
    if (again.snoozedAlarm.isEmpty()) {
        if (rung->identifier.isEmpty())
            rung->identifier = newIdentifier;
        again.snoozedAlarm = rung->identifier;
    }
    acknowledgeAlerts(reminder, now, zone);
    reminder.alarms.push_back(std::move(again));
}

std::optional<Instant> snoozedUntil(AlertAnswer answer, Instant now, const TimeZone& zone) {
    if (answer == AlertAnswer::snoozeTenMinutes)
        return now + 10min;
    if (answer == AlertAnswer::snoozeOneHour)
        return now + 1h;
    if (answer == AlertAnswer::snoozeUntilTomorrow)
        return zone.instantAt(zone.dayOf(now).addDays(1), morning, GapPolicy::nextExisting);
    return std::nullopt;
}

TextPair label(AlertAnswer answer) {
    switch (answer) {
    case AlertAnswer::complete:
        return text("Complete", "Terminer");
    case AlertAnswer::snoozeTenMinutes:
        return text("Snooze 10 minutes", "Rappeler dans 10 minutes");
    case AlertAnswer::snoozeOneHour:
        return text("Snooze 1 hour", "Rappeler dans 1 heure");
    case AlertAnswer::snoozeUntilTomorrow:
        return text("Snooze until tomorrow", "Rappeler demain");
    case AlertAnswer::open:
        return text("Open", "Ouvrir");
    case AlertAnswer::dismiss:
        return text("Dismiss", "Ignorer");
    }
    return {};
}

}  // namespace kestrant
