#include "foundation/ZoneCalendar.h"

#include <QDateTime>
#include <QHash>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrant {

namespace {

constexpr int firstTabulatedYear = 1900;
constexpr int lastTabulatedYear = 2100;
const QDate epoch(1970, 1, 1);

qint64 millisecondsAtStartOfYear(int year) {
    return epoch.daysTo(QDate(year, 1, 1)) * 86'400'000LL;
}

Duration microsecondsOf(QTime time) {
    return std::chrono::milliseconds(time.msecsSinceStartOfDay());
}

}  // namespace

/// Offsets from UTC of one zone, from each transition to the next.
struct ZoneOffsets {
    struct Step {
        Instant from;
        Duration offset;
    };

    explicit ZoneOffsets(const QTimeZone& timeZone) : zone(timeZone) {
        const auto start =
            QDateTime::fromMSecsSinceEpoch(millisecondsAtStartOfYear(firstTabulatedYear), Qt::UTC);
        const auto stop =
            QDateTime::fromMSecsSinceEpoch(millisecondsAtStartOfYear(lastTabulatedYear), Qt::UTC);
        first = Instant(std::chrono::milliseconds(start.toMSecsSinceEpoch()));
        last = Instant(std::chrono::milliseconds(stop.toMSecsSinceEpoch()));
        steps.push_back({first, std::chrono::seconds(zone.offsetFromUtc(start))});
        const auto transitions =
            zone.hasTransitions() ? zone.transitions(start, stop) : QTimeZone::OffsetDataList();
        for (const QTimeZone::OffsetData& transition : transitions) {
            const Instant at(std::chrono::milliseconds(transition.atUtc.toMSecsSinceEpoch()));
            const Duration offset = std::chrono::seconds(transition.offsetFromUtc);
            if (at > first && offset != steps.back().offset)
                steps.push_back({at, offset});
        }
    }

    [[nodiscard]] Duration at(Instant instant) const {
        if (instant < first || instant >= last) {
            const auto milliseconds =
                std::chrono::floor<std::chrono::milliseconds>(instant).time_since_epoch();
            return std::chrono::seconds(
                zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(milliseconds.count(), Qt::UTC)));
        }
        const auto after =
            std::upper_bound(steps.begin(), steps.end(), instant,
                             [](Instant value, const Step& step) { return value < step.from; });
        return std::prev(after)->offset;
    }

    /// The first instant after `from`, and no later than `to`, at which the offset becomes `offset`.
    [[nodiscard]] Instant changeTo(Duration offset, Instant from, Instant to) const {
        Instant low = from;
        Instant high = to;
        while (high - low > std::chrono::microseconds(1)) {
            const Instant middle = low + (high - low) / 2;
            (at(middle) == offset ? high : low) = middle;
        }
        return high;
    }

    QTimeZone zone;
    Instant first;
    Instant last;
    std::vector<Step> steps;
};

namespace {

/// Tables are the same for everybody who asks for a zone, and cost some milliseconds to make.
std::shared_ptr<const ZoneOffsets> offsetsOf(const QTimeZone& zone) {
    static std::mutex mutex;
    static QHash<QByteArray, std::shared_ptr<const ZoneOffsets>> tables;
    const std::lock_guard lock(mutex);
    auto& table = tables[zone.id()];
    if (!table)
        table = std::make_shared<const ZoneOffsets>(zone);
    return table;
}

}  // namespace

QDate DateComponents::date() const {
    return year && month && day ? QDate(*year, *month, *day) : QDate();
}

QTime DateComponents::time() const {
    return hour ? QTime(*hour, minute.value_or(0), std::min(second.value_or(0), 59)) : QTime();
}

DateComponents DateComponents::fromDate(QDate date) {
    DateComponents components;
    components.year = date.year();
    components.month = date.month();
    components.day = date.day();
    return components;
}

DateComponents DateComponents::fromDateTime(QDate date, QTime time, std::optional<QByteArray> zone) {
    DateComponents components = fromDate(date);
    components.hour = time.hour();
    components.minute = time.minute();
    components.second = time.second();
    components.timeZone = std::move(zone);
    return components;
}

std::optional<QTimeZone> timeZoneFromIdentifier(const QByteArray& identifier) {
    if (identifier == "UTC" || identifier == "Z" || identifier == "Etc/UTC")
        return QTimeZone::utc();
    if (QTimeZone::isTimeZoneIdAvailable(identifier))
        return QTimeZone(identifier);
    const QByteArray olson = QTimeZone::windowsIdToDefaultIanaId(identifier);
    return olson.isEmpty() ? std::nullopt : std::optional(QTimeZone(olson));
}

ZoneCalendar::ZoneCalendar(const QTimeZone& zone)
    : zone_(zone.isValid() ? zone : QTimeZone::utc())
    , offsets_(offsetsOf(zone_)) {}

QDate ZoneCalendar::dayOf(Instant instant) const {
    const auto days = std::chrono::floor<std::chrono::days>(instant + offsets_->at(instant));
    return epoch.addDays(days.time_since_epoch().count());
}

QTime ZoneCalendar::timeOf(Instant instant) const {
    const Instant local = instant + offsets_->at(instant);
    const auto sinceMidnight = local - std::chrono::floor<std::chrono::days>(local);
    return QTime::fromMSecsSinceStartOfDay(
        static_cast<int>(std::chrono::floor<std::chrono::milliseconds>(sinceMidnight).count()));
}

Instant ZoneCalendar::startOfDay(QDate day) const {
    return instantAt(day, QTime(0, 0), GapPolicy::nextExisting);
}

Instant ZoneCalendar::instantAt(QDate day, QTime time, GapPolicy policy) const {
    const Instant local = Instant(std::chrono::days(epoch.daysTo(day)) + microsecondsOf(time));
    // No zone is further than a day from UTC, so these lie on either side of a transition near the local
    // time.
    const Instant early = local - std::chrono::days(1);
    const Instant late = local + std::chrono::days(1);
    const Duration before = offsets_->at(early);
    const Duration after = offsets_->at(late);
    const Instant first = local - std::max(before, after);
    const Instant second = local - std::min(before, after);
    if (offsets_->at(first) == local - first)
        return first;
    if (offsets_->at(second) == local - second)
        return second;
    return policy == GapPolicy::keepOffset ? local - before : offsets_->changeTo(after, early, late);
}

DateInterval ZoneCalendar::yearContaining(Instant instant) const {
    const int year = dayOf(instant).year();
    return {startOfDay(QDate(year, 1, 1)), startOfDay(QDate(year, 1, 1).addYears(1))};
}

std::optional<Instant> ZoneCalendar::instantFrom(const DateComponents& components) const {
    const QDate date = components.date();
    if (!date.isValid())
        return {};
    if (!components.includesTime())
        return startOfDay(date);
    const QTime time = components.time();
    if (!time.isValid())
        return {};
    if (components.timeZone && *components.timeZone != zone_.id()) {
        if (const auto zone = timeZoneFromIdentifier(*components.timeZone))
            return ZoneCalendar(*zone).instantAt(date, time);
    }
    return instantAt(date, time);
}

DateComponents ZoneCalendar::componentsOf(Instant instant) const {
    return DateComponents::fromDateTime(dayOf(instant), timeOf(instant), zone_.id());
}

}  // namespace kestrant
