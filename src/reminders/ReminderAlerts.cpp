#include "reminders/ReminderAlerts.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// Farther from the due date than any calendar reaches; more would not fit an instant.
constexpr double longestOffset = 1e11;

bool ringsAt(const EKAlarm& alarm, Instant instant) {
    return alarm.absoluteDate && !alarm.structuredLocation &&
           std::chrono::abs(*alarm.absoluteDate - instant) <= 1s;
}

std::optional<Instant> instantOf(const RelativeToDueTime& schedule, const DateComponents& due,
                                 const ZoneCalendar& calendar) {
    const auto dueInstant = calendar.instantFrom(due);
    if (!due.includesTime() || !dueInstant || !(std::abs(schedule.seconds) <= longestOffset))
        return std::nullopt;
    return *dueInstant + seconds(schedule.seconds);
}

std::optional<Instant> instantOf(const DayRelativeToDueDate& schedule, const DateComponents& due,
                                 const ZoneCalendar& calendar) {
    const QTime time(schedule.hour, schedule.minute);
    if (due.includesTime() || !due.date().isValid() || !time.isValid() ||
        !reminderDateOnlyAlertDay(schedule.dayOffset))
        return std::nullopt;
    return calendar.instantAt(due.date().addDays(schedule.dayOffset), time, GapPolicy::nextExisting);
}

/// In the largest unit that it is a whole number of; below a minute it is rounded to minutes.
TextPair offsetInWords(double seconds) {
    struct Unit {
        qint64 seconds;
        TextPair one;
        TextPair several;
    };
    const std::array units{Unit{86400, text("%1 day", "%1 jour"), text("%1 days", "%1 jours")},
                           Unit{3600, text("%1 hr", "%1 h"), text("%1 hr", "%1 h")},
                           Unit{60, text("%1 min", "%1 min"), text("%1 min", "%1 min")}};
    const double bounded = std::abs(seconds) <= longestOffset ? std::abs(seconds) : longestOffset;
    const qint64 length = std::max<qint64>(60, 60 * std::llround(bounded / 60));
    const auto unit = std::find_if(units.begin(), units.end(),
                                   [&](const Unit& candidate) { return length % candidate.seconds == 0; });
    const qint64 count = length / unit->seconds;
    const TextPair& words = count == 1 ? unit->one : unit->several;
    const TextPair side = seconds < 0 ? text("before", "avant") : text("after", "après");
    return {words.english.arg(count) + QLatin1Char(' ') + side.english,
            words.french.arg(count) + QLatin1Char(' ') + side.french};
}

}  // namespace

double rawValue(ReminderAlertTiming timing) {
    switch (timing) {
    case ReminderAlertTiming::atDueTime:
        return 0;
    case ReminderAlertTiming::fiveMinutesBefore:
        return -300;
    case ReminderAlertTiming::fifteenMinutesBefore:
        return -900;
    case ReminderAlertTiming::oneHourBefore:
        return -3600;
    case ReminderAlertTiming::oneDayBefore:
        return -86400;
    }
    return 0;
}

std::optional<ReminderAlertTiming> reminderAlertTiming(double raw) {
    for (const ReminderAlertTiming timing : allReminderAlertTimings) {
        if (rawValue(timing) == raw)
            return timing;
    }
    return std::nullopt;
}

TextPair label(ReminderAlertTiming timing) {
    switch (timing) {
    case ReminderAlertTiming::atDueTime:
        return text("at due time", "à l’heure choisie");
    case ReminderAlertTiming::fiveMinutesBefore:
        return text("5 minutes before", "5 minutes avant");
    case ReminderAlertTiming::fifteenMinutesBefore:
        return text("15 minutes before", "15 minutes avant");
    case ReminderAlertTiming::oneHourBefore:
        return text("1 hour before", "1 heure avant");
    case ReminderAlertTiming::oneDayBefore:
        return text("1 day before", "1 jour avant");
    }
    return {};
}

TextPair shortLabel(ReminderAlertTiming timing) {
    switch (timing) {
    case ReminderAlertTiming::atDueTime:
        return text("At due time", "À l’heure");
    case ReminderAlertTiming::fiveMinutesBefore:
        return text("5 min before", "5 min avant");
    case ReminderAlertTiming::fifteenMinutesBefore:
        return text("15 min before", "15 min avant");
    case ReminderAlertTiming::oneHourBefore:
        return text("1 hr before", "1 h avant");
    case ReminderAlertTiming::oneDayBefore:
        return text("1 day before", "1 jour avant");
    }
    return {};
}

int rawValue(ReminderDateOnlyAlertDay day) {
    return day == ReminderDateOnlyAlertDay::dayBefore ? -1 : 0;
}

std::optional<ReminderDateOnlyAlertDay> reminderDateOnlyAlertDay(int raw) {
    for (const ReminderDateOnlyAlertDay day : allReminderDateOnlyAlertDays) {
        if (rawValue(day) == raw)
            return day;
    }
    return std::nullopt;
}

TextPair label(ReminderDateOnlyAlertDay day) {
    return day == ReminderDateOnlyAlertDay::dayBefore ? text("Day before", "La veille")
                                                      : text("On day of event", "Le jour même");
}

TextPair label(const ReminderAlertSchedule& schedule, ClockHours hours) {
    if (const auto* relative = std::get_if<RelativeToDueTime>(&schedule)) {
        const auto timing = reminderAlertTiming(relative->seconds);
        return timing ? shortLabel(*timing) : offsetInWords(relative->seconds);
    }
    const auto& day = std::get<DayRelativeToDueDate>(schedule);
    const auto offered = reminderDateOnlyAlertDay(day.dayOffset);
    const TextPair words = offered ? label(*offered) : offsetInWords(86400.0 * day.dayOffset);
    const QString time = clockText(QTime(day.hour, day.minute), hours);
    return {QStringLiteral("%1 at %2").arg(words.english, time),
            QStringLiteral("%1 à %2").arg(words.french, time)};
}

std::optional<Instant> alarmInstant(const ReminderDueAlert& dueAlert, const ZoneCalendar& calendar) {
    if (!dueAlert.dueComponents || !dueAlert.schedule)
        return std::nullopt;
    return std::visit(
        [&](const auto& schedule) { return instantOf(schedule, *dueAlert.dueComponents, calendar); },
        *dueAlert.schedule);
}

void replaceAlarm(EKReminderData& reminder, const ReminderDueAlert& before, const ReminderDueAlert& after,
                  const ZoneCalendar& calendar) {
    const auto oldInstant = alarmInstant(before, calendar);
    const auto newInstant = alarmInstant(after, calendar);
    if (oldInstant && oldInstant != newInstant) {
        std::vector<QByteArray> removed;
        for (const EKAlarm& alarm : reminder.alarms) {
            if (ringsAt(alarm, *oldInstant) && !alarm.identifier.isEmpty())
                removed.push_back(alarm.identifier);
        }
        std::erase_if(reminder.alarms, [&](const EKAlarm& alarm) {
            return ringsAt(alarm, *oldInstant) ||
                   std::find(removed.begin(), removed.end(), alarm.snoozedAlarm) != removed.end();
        });
    }
    if (newInstant && std::none_of(reminder.alarms.begin(), reminder.alarms.end(),
                                   [&](const EKAlarm& alarm) { return ringsAt(alarm, *newInstant); }))
        reminder.alarms.push_back(EKAlarm::at(*newInstant));
}

std::optional<ReminderAlertSchedule> alertSchedule(const EKReminderData& reminder,
                                                   const ZoneCalendar& calendar) {
    const auto alarm =
        std::find_if(reminder.alarms.begin(), reminder.alarms.end(), [](const EKAlarm& candidate) {
            return candidate.absoluteDate && !candidate.structuredLocation &&
                   candidate.snoozedAlarm.isEmpty();
        });
    if (alarm == reminder.alarms.end() || !reminder.dueDateComponents)
        return std::nullopt;
    const auto due = calendar.instantFrom(*reminder.dueDateComponents);
    if (!due)
        return std::nullopt;
    const Instant rings = *alarm->absoluteDate;
    if (reminder.dueDateComponents->includesTime())
        return RelativeToDueTime{std::chrono::duration<double>(rings - *due).count()};
    const QTime time = calendar.timeOf(rings);
    const qint64 days = reminder.dueDateComponents->date().daysTo(calendar.dayOf(rings));
    return DayRelativeToDueDate{static_cast<int>(days), time.hour(), time.minute()};
}

}  // namespace kestrant
