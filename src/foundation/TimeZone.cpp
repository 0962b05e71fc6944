#include "foundation/TimeZone.h"

#include "foundation/DateComponents.h"
#include "foundation/ZoneFile.h"

#include <QDate>
#include <QHash>
#include <QTime>
#include <QTimeZone>

#include <algorithm>
#include <limits>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

namespace kestrant {
namespace {

constexpr qint64 secondsPerDay = 86'400;
constexpr qint64 microsecondsPerDay = secondsPerDay * 1'000'000;
constexpr qint64 unixEpochJulianDay = 2440588;
/// More than any zone's distance from UTC.
constexpr qint64 largestOffset = 26LL * 3600;
/// Names that lead to no zone may be many and long.
constexpr qsizetype mostNamesKept = 4000;

qint64 floorDivide(qint64 a, qint64 b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

qint64 wholeSeconds(Instant instant) {
    return std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count();
}

int yearOf(qint64 seconds) {
    return QDate::fromJulianDay(unixEpochJulianDay + floorDivide(seconds, secondsPerDay)).year();
}

qint64 startOfYear(int year) {
    return (QDate(year, 1, 1).toJulianDay() - unixEpochJulianDay) * secondsPerDay;
}

bool isLater(qint64 seconds, const ZoneChange& change) {
    return seconds < change.at;
}

/// The distance in "UTC+05:30" or "UTC-3".
std::optional<int> distanceIn(const QByteArray& name) {
    if (!name.startsWith("UTC") || name.size() < 5 || (name[3] != '+' && name[3] != '-'))
        return std::nullopt;
    const QByteArrayList parts = name.sliced(4).split(':');
    int seconds = 0;
    int unit = 3600;
    for (const QByteArray& part : parts) {
        bool isNumber = false;
        const int number = part.toInt(&isNumber);
        if (!isNumber || part.size() > 2 || number < 0 || number > (unit == 3600 ? 23 : 59) || unit == 0)
            return std::nullopt;
        seconds += number * unit;
        unit /= 60;
    }
    return name[3] == '-' ? -seconds : seconds;
}

}  // namespace

TimeZone::TimeZone() {
    static const auto utc = std::make_shared<const Data>(Data{.kind = Kind::utc,
                                                              .identifier = "UTC",
                                                              .zone = {.before = {.abbreviation = "UTC"}},
                                                              .end = std::numeric_limits<qint64>::max()});
    data_ = utc;
}

TimeZone::TimeZone(Kind kind, const QByteArray& identifier, ZoneChanges zone) {
    const qint64 end = zone.repeatsFrom ? startOfYear(*zone.repeatsFrom) : std::numeric_limits<qint64>::max();
    data_ = std::make_shared<const Data>(Data{kind, identifier, std::move(zone), end});
}

TimeZone TimeZone::defined(const QByteArray& identifier, ZoneChanges changes) {
    return {Kind::defined, identifier, std::move(changes)};
}

std::optional<TimeZone> TimeZone::named(const QByteArray& name) {
    static std::shared_mutex mutex;
    static QHash<QByteArray, std::optional<TimeZone>> known;
    {
        const std::shared_lock lock(mutex);
        const auto found = known.constFind(name);
        if (found != known.cend())
            return *found;
    }
    auto zone = find(name);
    const std::unique_lock lock(mutex);
    if (known.size() >= mostNamesKept)
        known.clear();
    // Another thread may have been faster; all are to share one.
    const auto found = known.constFind(name);
    return found != known.cend() ? *found : *known.insert(name, zone);
}

std::optional<TimeZone> TimeZone::find(const QByteArray& name) {
    if (name.toUpper() == "UTC" || name == "Z")
        return TimeZone();
    // The same zones over again, the second time with leap seconds.
    for (const QByteArrayView collection : {QByteArrayView("posix/"), QByteArrayView("right/")}) {
        if (name.startsWith(collection))
            return named(name.sliced(collection.size()));
    }
    if (auto changes = readNamedZone(name))
        return TimeZone(Kind::named, name, std::move(*changes));
    if (const auto distance = distanceIn(name))
        return TimeZone(Kind::named, name, {.before = {.offset = *distance, .abbreviation = name}});
    const QByteArray standardName = QTimeZone::windowsIdToDefaultIanaId(name);
    return standardName.isEmpty() ? std::nullopt : named(standardName);
}

/// How far back the year begins in which the clocks do the same.
qint64 TimeZone::secondsToRepeated(qint64 seconds) const {
    if (seconds < data_->end)
        return 0;
    const int year = yearOf(seconds);
    const QDate first(year, 1, 1);
    for (int like = *data_->zone.repeatsFrom - 1;; --like) {
        const QDate start(like, 1, 1);
        const bool isAlike =
            start.dayOfWeek() == first.dayOfWeek() && QDate::isLeapYear(like) == QDate::isLeapYear(year);
        if (isAlike)
            return startOfYear(year) - startOfYear(like);
    }
}

const ZoneChange& TimeZone::presentIn(qint64 seconds) const {
    const auto& changes = data_->zone.changes;
    const auto next =
        std::upper_bound(changes.begin(), changes.end(), seconds - secondsToRepeated(seconds), isLater);
    return next == changes.begin() ? data_->zone.before : *std::prev(next);
}

std::chrono::seconds TimeZone::offsetAt(Instant instant) const {
    return std::chrono::seconds(presentIn(wholeSeconds(instant)).offset);
}

ZoneChange TimeZone::presentAt(Instant instant) const {
    return presentIn(wholeSeconds(instant));
}

Instant TimeZone::instantAt(Duration local, GapPolicy policy) const {
    const auto& changes = data_->zone.changes;
    const qint64 whole = std::chrono::floor<std::chrono::seconds>(local).count();
    const qint64 moved = secondsToRepeated(whole);
    const qint64 wanted = whole - moved;
    // The local time exists where applying a span's offset to it leads into that span; the earliest such span
    // is its first occurrence. Where it leads behind one span and before the next, the clock has skipped the
    // local time between the two, unless it is set back to it later on.
    auto next = std::upper_bound(changes.begin(), changes.end(), wanted - largestOffset, isLater);
    int offset = data_->zone.before.offset;
    qint64 start = std::numeric_limits<qint64>::min();
    if (next != changes.begin()) {
        offset = std::prev(next)->offset;
        start = std::prev(next)->at;
    }
    const auto inSpan = [&] { return Instant(local - std::chrono::seconds(offset)); };
    std::optional<Instant> skipped;
    for (;; ++next) {
        const qint64 candidate = wanted - offset;
        const bool isLast = next == changes.end();
        if (candidate >= start && (isLast || candidate < next->at))
            return inSpan();
        if (isLast || next->at > wanted + largestOffset)
            return skipped.value_or(inSpan());
        if (!skipped && candidate >= next->at && wanted - next->offset < next->at)
            skipped = policy == GapPolicy::nextExisting ? Instant(std::chrono::seconds(next->at + moved))
                                                        : inSpan();
        offset = next->offset;
        start = next->at;
    }
}

std::vector<ZoneChange> TimeZone::changesBetween(Instant first, Instant end) const {
    const qint64 begin = wholeSeconds(first);
    const qint64 moved = secondsToRepeated(begin);
    std::vector<ZoneChange> result;
    for (ZoneChange change : data_->zone.changes) {
        change.at += moved;
        if (change.at >= begin && change.at < wholeSeconds(end))
            result.push_back(std::move(change));
    }
    return result;
}

qint64 TimeZone::localMicroseconds(Instant instant) const {
    return (instant.time_since_epoch() + offsetAt(instant)).count();
}

QDate TimeZone::dayOf(Instant instant) const {
    return QDate::fromJulianDay(unixEpochJulianDay +
                                floorDivide(localMicroseconds(instant), microsecondsPerDay));
}

QTime TimeZone::timeOf(Instant instant) const {
    const qint64 local = localMicroseconds(instant);
    const qint64 sinceMidnight = local - floorDivide(local, microsecondsPerDay) * microsecondsPerDay;
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(sinceMidnight / 1000));
}

Instant TimeZone::startOfDay(QDate day) const {
    return instantAt(day, QTime(0, 0), GapPolicy::nextExisting);
}

Instant TimeZone::instantAt(QDate day, QTime time, GapPolicy policy) const {
    if (!day.isValid() || !time.isValid())
        return {};
    return instantAt(Duration((day.toJulianDay() - unixEpochJulianDay) * microsecondsPerDay +
                              qint64{time.msecsSinceStartOfDay()} * 1000),
                     policy);
}

DateInterval TimeZone::yearContaining(Instant instant) const {
    const int year = dayOf(instant).year();
    return {startOfDay(QDate(year, 1, 1)), startOfDay(QDate(year == -1 ? 1 : year + 1, 1, 1))};
}

std::optional<Instant> TimeZone::instantFrom(const DateComponents& components) const {
    const QDate date = components.date();
    if (!date.isValid())
        return std::nullopt;
    if (!components.includesTime())
        return startOfDay(date);
    const QTime time = components.time();
    if (!time.isValid())
        return std::nullopt;
    return components.timeZone ? components.timeZone->instantAt(date, time) : instantAt(date, time);
}

DateComponents TimeZone::componentsOf(Instant instant) const {
    return DateComponents::fromDateTime(dayOf(instant), timeOf(instant), *this);
}

}  // namespace kestrant
