#include "foundation/ZoneCalendar.h"

#include "foundation/ZoneOffsets.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

constexpr qint64 unixEpochJulianDay = 2440588;
constexpr qint64 microsecondsPerDay = 86'400'000'000;
/// More than any zone's distance from UTC, so that the instants of a local time lie this near to it read as
/// UTC.
constexpr qint64 largestOffset = 26LL * 3'600'000'000;

qint64 floorDivide(qint64 a, qint64 b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

Instant fromMicroseconds(qint64 value) {
    return Instant(Duration(value));
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

DateComponents DateComponents::fromDateTime(QDate date, QTime time, std::optional<QByteArray> zone) {
    return {.year = date.year(),
            .month = date.month(),
            .day = date.day(),
            .hour = time.hour(),
            .minute = time.minute(),
            .second = time.second(),
            .timeZone = std::move(zone)};
}

std::optional<QTimeZone> timeZoneFromIdentifier(const QByteArray& identifier) {
    if (identifier.isEmpty() || identifier.startsWith('/') || identifier.contains(".."))
        return std::nullopt;  // never a path to somewhere else on the disk
    QTimeZone zone(identifier);
    if (!zone.isValid()) {
        const QByteArray standardName = QTimeZone::windowsIdToDefaultIanaId(identifier);
        if (standardName.isEmpty())
            return std::nullopt;
        zone = QTimeZone(standardName);
    }
    if (!zone.isValid())
        return std::nullopt;
    return zone;
}

ZoneCalendar::ZoneCalendar(const QTimeZone& zone)
    : zone_(zone.isValid() ? zone : QTimeZone::utc())
    , offsets_(ZoneOffsets::of(zone_)) {}

qint64 ZoneCalendar::localMicroseconds(Instant instant) const {
    const qint64 utc = instant.time_since_epoch().count();
    return utc + offsets_->at(utc);
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
    const qint64 local = (day.toJulianDay() - unixEpochJulianDay) * microsecondsPerDay +
                         qint64{time.msecsSinceStartOfDay()} * 1000;
    // The local time exists where applying a span's offset to it leads into that span; the earliest such span
    // is its first occurrence. Where it leads before the next span only, the clock has skipped the local time
    // between the two.
    qint64 offset = 0;
    for (const ZoneOffsets::Span& span :
         offsets_->spansBetween(local - largestOffset, local + largestOffset)) {
        if (local - span.offset < span.start)
            return fromMicroseconds(policy == GapPolicy::nextExisting ? span.start : local - offset);
        offset = span.offset;
        if (local - offset < span.end)
            break;
    }
    return fromMicroseconds(local - offset);
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
    if (components.timeZone && *components.timeZone != zone_.id()) {
        if (const std::optional<QTimeZone> zone = timeZoneFromIdentifier(*components.timeZone))
            return ZoneCalendar(*zone).instantAt(date, time);
    }
    return instantAt(date, time);
}

DateComponents ZoneCalendar::componentsOf(Instant instant) const {
    return DateComponents::fromDateTime(dayOf(instant), timeOf(instant), zone_.id());
}

}  // namespace kestrant
