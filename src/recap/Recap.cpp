#include "recap/Recap.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <span>
#include <utility>

namespace kestrant {
namespace {

constexpr int daysOfWeek = 7;

int countOn(const std::vector<CompletedDay>& days, QDate day) {
    const auto found = std::ranges::lower_bound(days, day, {}, &CompletedDay::day);
    return found != days.end() && found->day == day ? found->count : 0;
}

std::span<const CompletedDay> daysBetween(const std::vector<CompletedDay>& days, QDate first, QDate last) {
    const auto begin = std::ranges::lower_bound(days, first, {}, &CompletedDay::day);
    return {begin, std::ranges::upper_bound(begin, days.end(), last, {}, &CompletedDay::day)};
}

/// The first record at an instant or later.
auto firstAt(const std::vector<CompletionRecord>& records, Instant instant) {
    return std::ranges::lower_bound(records, instant, {}, &CompletionRecord::completedAt);
}

/// The hour that the clock shows at instants of one day.
class HourOfDay {
  public:
    HourOfDay(const TimeZone& zone, Instant start, Instant end)
        : zone_(zone)
        , start_(start)
        , isPlain_(end - start == std::chrono::hours(24)) {}

    [[nodiscard]] int at(Instant instant) const {
        // Days on which the clock is put forward or back are few.
        return isPlain_ ? int(std::chrono::floor<std::chrono::hours>(instant - start_).count())
                        : zone_.timeOf(instant).hour();
    }

  private:
    const TimeZone& zone_;
    Instant start_;
    bool isPlain_;
};

}  // namespace

RecapPeriod periodContaining(RecapKind kind, QDate day, Qt::DayOfWeek firstDayOfWeek) {
    switch (kind) {
    case RecapKind::day:
        break;
    case RecapKind::week: {
        const QDate first = day.addDays(-((day.dayOfWeek() - firstDayOfWeek + daysOfWeek) % daysOfWeek));
        return {kind, first, first.addDays(daysOfWeek - 1)};
    }
    case RecapKind::month:
        return {kind, QDate(day.year(), day.month(), 1), QDate(day.year(), day.month(), day.daysInMonth())};
    case RecapKind::year:
        return {kind, QDate(day.year(), 1, 1), QDate(day.year(), 12, 31)};
    }
    return {kind, day, day};
}

RecapPeriod periodBefore(const RecapPeriod& period) {
    return periodContaining(period.kind, period.first.addDays(-1),
                            static_cast<Qt::DayOfWeek>(period.first.dayOfWeek()));
}

WeekNumber weekNumberOf(QDate day, Qt::DayOfWeek firstDayOfWeek) {
    const QDate first = periodContaining(RecapKind::week, day, firstDayOfWeek).first;
    // The day of each week that decides which year the week belongs to.
    const QDate deciding = first.addDays(firstDayOfWeek == Qt::Monday ? 3 : daysOfWeek - 1);
    return {(deciding.dayOfYear() - 1) / daysOfWeek + 1, deciding.year()};
}

std::vector<CompletedDay> completedDays(const std::vector<CompletionRecord>& records, const TimeZone& zone,
                                        Instant now) {
    std::vector<CompletedDay> days;
    const auto end = std::ranges::upper_bound(records, now, {}, &CompletionRecord::completedAt);
    for (auto record = records.begin(); record != end;) {
        const QDate day = zone.dayOf(record->completedAt);
        const Instant dayEnd = zone.startOfDay(day.addDays(1));
        const HourOfDay hour(zone, zone.startOfDay(day), dayEnd);
        CompletedDay& completed = days.emplace_back(CompletedDay{.day = day});
        do {
            ++completed.count;
            ++completed.hours[static_cast<std::size_t>(hour.at(record->completedAt))];
        } while (++record != end && record->completedAt < dayEnd);
    }
    return days;
}

Recap recapOf(const RecapPeriod& period, const std::vector<CompletedDay>& days, QDate today) {
    Recap recap{.period = period};
    recap.days.resize(static_cast<std::size_t>(period.dayCount()));
    const QDate lastBegun = std::min(period.last, today);
    recap.elapsedDays = std::max(0, int(period.first.daysTo(lastBegun)) + 1);

    std::array<int, 24> hours{};
    int run = 0;
    QDate previous;
    for (const CompletedDay& each : daysBetween(days, period.first, period.last)) {
        recap.days[static_cast<std::size_t>(period.first.daysTo(each.day))] = each.count;
        recap.completed += each.count;
        if (each.count >= recap.bestCount) {
            recap.bestCount = each.count;
            recap.bestDay = each.day;
        }
        run = previous.isValid() && previous.addDays(1) == each.day ? run + 1 : 1;
        recap.longestStreak = std::max(recap.longestStreak, run);
        previous = each.day;
        std::ranges::transform(hours, each.hours, hours.begin(), std::plus());
    }
    if (recap.completed > 0)
        recap.usualHour = int(std::ranges::max_element(hours) - hours.begin());
    const auto begun = recap.days.begin() + recap.elapsedDays;
    recap.quietDays = int(std::count(recap.days.begin(), begun, 0));

    QDate day = lastBegun == today && countOn(days, today) == 0 ? today.addDays(-1) : lastBegun;
    for (; countOn(days, day) > 0; day = day.addDays(-1))
        ++recap.streak;

    const RecapPeriod before = periodBefore(period);
    const QDate sameDay = recap.elapsedDays < period.dayCount()
                              ? std::min(before.last, before.first.addDays(recap.elapsedDays - 1))
                              : before.last;
    for (const CompletedDay& each :
         daysBetween(days, before.first, std::max(before.first.addDays(-1), sameDay)))
        recap.completedBefore += each.count;
    return recap;
}

std::vector<ListCount>
completedByList(const std::vector<CompletionRecord>& records, const RecapPeriod& period, const TimeZone& zone,
                Instant now,
                const std::function<std::optional<QString>(const QString& reminderIdentifier)>& listOf) {
    std::map<QString, int> counts;
    const auto end = firstAt(records, zone.startOfDay(period.last.addDays(1)));
    for (auto record = firstAt(records, zone.startOfDay(period.first));
         record < end && record->completedAt <= now; ++record) {
        if (const auto list = listOf(record->reminderIdentifier))
            ++counts[*list];
    }
    std::vector<ListCount> result;
    result.reserve(counts.size());
    for (const auto& [list, count] : counts)
        result.push_back({list, count});
    std::ranges::stable_sort(result, std::greater(), &ListCount::count);
    return result;
}

}  // namespace kestrant
