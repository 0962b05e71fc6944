#include "foundation/ZoneCalendar.h"

#include <utility>

namespace kestrant {

namespace {

constexpr qint64 unixEpochJulianDay = 2440588;
constexpr qint64 microsecondsPerDay = 86'400'000'000;

qint64 floorDivide(qint64 a, qint64 b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

}  // namespace

QDate DateComponents::date() const {
    if (!year || !month || !day || *year < 1 || *year > 9999)
        return {};
    return {*year, *month, *day};
}

QTime DateComponents::time() const {
    if (!hour)
        return {};
    const int wholeSecond = second.value_or(0);
    // Clocks that do not count leap seconds read the 60th as the 59th (RFC 5545, 3.3.12).
    return {*hour, minute.value_or(0), wholeSecond == 60 ? 59 : wholeSecond};
}

DateComponents DateComponents::fromDate(QDate date) {
    return {.year = date.year(), .month = date.month(), .day = date.day()};
}

DateComponents DateComponents::fromDateTime(QDate date, QTime time, std::optional<TimeZone> zone) {
    return {.year = date.year(),
            .month = date.month(),
            .day = date.day(),
            .hour = time.hour(),
            .minute = time.minute(),
            .second = time.second(),
            .timeZone = std::move(zone)};
}

qint64 ZoneCalendar::localMicroseconds(Instant instant) const {
    return (instant.time_since_epoch() + zone_.offsetAt(instant)).count();
}

QDate ZoneCalendar::dayOf(Instant instant) const {
    return QDate::fromJulianDay(unixEpochJulianDay +
                                floorDivide(localMicroseconds(instant), microsecondsPerDay));
}

QTime ZoneCalendar::timeOf(Instant instant) const {
    const qint64 local = localMicroseconds(instant);
    const qint64 sinceMidnight = local - floorDivide(local, microsecondsPerDay) * microsecondsPerDay;
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(sinceMidnight / 1000));
}

Instant ZoneCalendar::startOfDay(QDate day) const {
    return instantAt(day, QTime(0, 0), GapPolicy::nextExisting);
}

Instant ZoneCalendar::instantAt(QDate day, QTime time, GapPolicy policy) const {
    if (!day.isValid() || !time.isValid())
        return {};
    return zone_.instantAt(Duration((day.toJulianDay() - unixEpochJulianDay) * microsecondsPerDay +
                                    qint64{time.msecsSinceStartOfDay()} * 1000),
                           policy);
}

DateInterval ZoneCalendar::yearContaining(Instant instant) const {
    const int year = dayOf(instant).year();
    return {startOfDay(QDate(year, 1, 1)), startOfDay(QDate(year == -1 ? 1 : year + 1, 1, 1))};
}

std::optional<Instant> ZoneCalendar::instantFrom(const DateComponents& components) const {
    const QDate date = components.date();
    if (!date.isValid())
        return std::nullopt;
    if (!components.includesTime())
        return startOfDay(date);
    const QTime time = components.time();
    if (!time.isValid())
        return std::nullopt;
    return components.timeZone ? ZoneCalendar(*components.timeZone).instantAt(date, time)
                               : instantAt(date, time);
}

DateComponents ZoneCalendar::componentsOf(Instant instant) const {
    return DateComponents::fromDateTime(dayOf(instant), timeOf(instant), zone_);
}

}  // namespace kestrant
