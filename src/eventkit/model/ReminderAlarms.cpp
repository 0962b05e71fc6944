#include "eventkit/model/ReminderAlarms.h"

#include <chrono>

namespace kestrant {

const std::optional<DateComponents>& AlarmDates::followedBy(const EKAlarm& alarm) const {
    if (alarm.followsStart)
        return start ? start : due;
    return due ? due : start;
}

std::optional<Instant> ringInstant(const EKAlarm& alarm, const AlarmDates& dates, const TimeZone& local) {
    if (alarm.structuredLocation)
        return std::nullopt;
    if (!alarm.relativeOffset)
        return alarm.absoluteDate;
    auto date = dates.followedBy(alarm);
    if (!date || !date->date().isValid())
        return std::nullopt;
    const QDate day = date->date().addDays(alarm.relativeDays);
    date = date->includesTime() ? DateComponents::fromDateTime(day, date->time(), date->timeZone)
                                : DateComponents::fromDate(day);
    const auto instant = local.instantFrom(*date);
    if (!instant)
        return std::nullopt;
    return *instant + (*alarm.relativeOffset - std::chrono::days(alarm.relativeDays));
}

void placeAlarms(EKReminderData& reminder, const TimeZone& local) {
    for (EKAlarm& alarm : reminder.alarms) {
        if (alarm.relativeOffset)
            alarm.absoluteDate = ringInstant(alarm, AlarmDates::of(reminder), local);
    }
}

}  // namespace kestrant
