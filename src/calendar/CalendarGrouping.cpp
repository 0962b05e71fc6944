#include "calendar/CalendarGrouping.h"

#include "calendar/CalendarFetch.h"
#include "calendar/CalendarRows.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

constexpr Duration instantStep = Duration(1);

/// The days of a range with their first instants, so that an instant finds its day without asking the time
/// zone.
class DayStarts {
  public:
    DayStarts(const DayRange& days, const TimeZone& zone) {
        for (QDate day = days.first; day <= days.end; day = day.addDays(1))
            starts_.push_back(zone.startOfDay(day));
    }

    /// How many days there are; the positions of days count from 0.
    [[nodiscard]] qsizetype count() const { return static_cast<qsizetype>(starts_.size()) - 1; }
    [[nodiscard]] Instant start(qsizetype day) const { return starts_[static_cast<std::size_t>(day)]; }
    /// The day of an instant; -1 before the first day, count() after the last.
    [[nodiscard]] qsizetype dayOf(Instant instant) const {
        return std::upper_bound(starts_.begin(), starts_.end(), instant) - starts_.begin() - 1;
    }

  private:
    std::vector<Instant> starts_;
};

/// On which days a row is listed, first and last included.
struct Placement {
    qsizetype first;
    qsizetype last;
};

/// Rows with their placements, side by side.
struct PlacedRows {
    std::vector<CalendarEventItem> rows;
    std::vector<Placement> placements;

    void add(CalendarEventItem row, Placement placement) {
        rows.push_back(std::move(row));
        placements.push_back(placement);
    }
};

bool isOver(const CalendarEventItem& row, Instant now) {
    return !row.isReminder && !row.isAllDay && row.endDate < now;
}

std::optional<Placement> placementOf(const EKEventData& event, const DayStarts& days) {
    const qsizetype day = days.dayOf(event.startDate);
    if (event.startDate == event.endDate && day >= 0 && days.start(day) == event.startDate)
        return std::nullopt;
    // The end is excluded; an event without length takes the instant it starts at.
    const Instant lastInstant = std::max(event.startDate, event.endDate - instantStep);
    const Placement result{std::max<qsizetype>(day, 0), std::min(days.dayOf(lastInstant), days.count() - 1)};
    return result.first <= result.last ? std::optional(result) : std::nullopt;
}

std::optional<Placement> placementOf(const EKReminderData& reminder, const DayStarts& days,
                                     const TimeZone& zone) {
    const auto dueDate = reminderDueDate(reminder, zone);
    const qsizetype day = dueDate ? days.dayOf(*dueDate) : -1;
    return day >= 0 && day < days.count() ? std::optional(Placement{day, day}) : std::nullopt;
}

/// Grows from the day nearest to today by whichever neighbour is nearer, as long as the rows fit; `rows` and
/// `distance` (from today, negative for earlier days) tell about a position below `count`. Gives the first
/// position and the one after the last.
template <typename Rows, typename Distance>
std::pair<qsizetype, qsizetype> nearestThatFit(qsizetype count, qsizetype most, Rows rows,
                                               Distance distance) {
    if (count == 0)
        return {0, 0};
    qsizetype first = 0;
    while (first < count - 1 && std::abs(distance(first + 1)) <= std::abs(distance(first)))
        ++first;
    qsizetype end = first + 1;
    qsizetype total = rows(first);
    while (first > 0 || end < count) {
        const bool isEarlier = end == count || (first > 0 && -distance(first - 1) < distance(end));
        total += rows(isEarlier ? first - 1 : end);
        if (total > most)
            break;
        if (isEarlier)
            --first;
        else
            ++end;
    }
    return {first, end};
}

/// Gives a row an id of its own where another date of its series begins at the same instant.
void makeUnique(CalendarEventItem& row, const EKEventData& event, QHash<QString, int>& known) {
    if (!event.occurrenceDate)
        return;
    if (const int number = ++known[row.id]; number > 1)
        row.id =
            eventRowID(event.calendarItemIdentifier + QStringLiteral("#%1").arg(number), event.startDate);
}

PlacedRows placedRows(const CalendarItems& items, const DayStarts& days, const CalendarPresent& present) {
    const auto appearance = [&](const QString& calendar) {
        const auto found = items.calendars.constFind(calendar);
        return found == items.calendars.constEnd() ? nullptr : &*found;
    };
    PlacedRows result;
    QHash<QString, int> known;
    for (const auto& event : items.events) {
        const auto placement = placementOf(*event, days);
        if (!placement)
            continue;
        CalendarEventItem row = eventRow(*event, appearance(event->calendarIdentifier), present.language);
        makeUnique(row, *event, known);
        result.add(std::move(row), *placement);
    }
    for (const auto& reminder : items.reminders) {
        if (const auto placement = placementOf(*reminder, days, present.zone))
            result.add(reminderRow(*reminder, *reminderDueDate(*reminder, present.zone),
                                   appearance(reminder->calendarIdentifier), present.language),
                       *placement);
    }
    return result;
}

/// An empty day is shown only where it is today, in the compact mode, and something else is shown.
void dropEmptyGroups(QList<CalendarDayGroup>& groups, CalendarMode mode) {
    groups.removeIf([&](const CalendarDayGroup& group) {
        return group.events.isEmpty() && !(mode == CalendarMode::compact && group.isToday);
    });
    if (groups.size() == 1 && groups.front().events.isEmpty())
        groups.clear();
}

qsizetype indexOfToday(const QList<CalendarDayGroup>& groups) {
    const auto found =
        std::find_if(groups.begin(), groups.end(), [](const auto& group) { return group.isToday; });
    return found == groups.end() ? -1 : found - groups.begin();
}

CalendarDayGroup united(const CalendarDayGroup& a, const CalendarDayGroup& b,
                        const TextCollation& collation) {
    std::vector<CalendarEventItem> rows(a.events.begin(), a.events.end());
    QSet<QString> ids;
    for (const CalendarEventItem& row : rows)
        ids.insert(row.id);
    std::copy_if(b.events.begin(), b.events.end(), std::back_inserter(rows),
                 [&](const CalendarEventItem& row) { return !ids.contains(row.id); });
    CalendarDayGroup result = a;
    result.events.clear();
    for (const std::size_t row : rowOrder(rows, collation))
        result.events.push_back(std::move(rows[row]));
    return result;
}

}  // namespace

DayRange compactDays(const CalendarPresent& present) {
    const QDate today = present.zone.dayOf(present.now);
    return {today, today.addDays(7)};
}

DayRange daysThatFit(const CalendarItems& items, const DayRange& days, const CalendarPresent& present,
                     qsizetype most) {
    const DayStarts starts(days, present.zone);
    // How many rows more a day has than the one before.
    std::vector<qsizetype> changes(static_cast<std::size_t>(starts.count()) + 1);
    const auto count = [&](const std::optional<Placement>& placement) {
        if (placement) {
            ++changes[static_cast<std::size_t>(placement->first)];
            --changes[static_cast<std::size_t>(placement->last) + 1];
        }
    };
    for (const auto& event : items.events)
        count(placementOf(*event, starts));
    for (const auto& reminder : items.reminders)
        count(placementOf(*reminder, starts, present.zone));
    std::partial_sum(changes.begin(), changes.end(), changes.begin());
    const qint64 today = days.first.daysTo(present.zone.dayOf(present.now));
    const auto [first, end] = nearestThatFit(
        starts.count(), most, [&](qsizetype day) { return changes[static_cast<std::size_t>(day)]; },
        [&](qsizetype day) { return day - today; });
    return {days.first.addDays(first), days.first.addDays(end)};
}

QList<CalendarDayGroup> groupsThatFit(const QList<CalendarDayGroup>& groups, QDate today, qsizetype most) {
    const auto [first, end] = nearestThatFit(
        groups.size(), most, [&](qsizetype index) { return groups.at(index).events.size(); },
        [&](qsizetype index) { return today.daysTo(groups.at(index).day); });
    return groups.mid(first, end - first);
}

QList<CalendarDayGroup> groupByDay(const CalendarItems& items, const DayRange& days, CalendarMode mode,
                                   const CalendarPresent& present) {
    const DayStarts starts(days, present.zone);
    const qsizetype today = starts.dayOf(present.now);
    PlacedRows placed = placedRows(items, starts, present);

    QList<CalendarDayGroup> groups;
    groups.reserve(starts.count());
    for (qsizetype day = 0; day < starts.count(); ++day)
        groups.push_back({days.first.addDays(day), starts.start(day), {}, day == today, {}});
    // Rows in order, dealt out to their days, leave every day in order.
    for (const std::size_t index : rowOrder(placed.rows, TextCollation(present.locale))) {
        const auto [first, last] = placed.placements[index];
        for (qsizetype day = first; day <= last; ++day) {
            CalendarEventItem row = day == last ? std::move(placed.rows[index]) : placed.rows[index];
            if (day == today) {
                if (mode == CalendarMode::compact && isOver(row, present.now))
                    continue;
                row.isHappeningNow = isHappening(row, present.now);
            }
            groups[day].events.push_back(std::move(row));
        }
    }
    dropEmptyGroups(groups, mode);
    const QDate todaysDate = present.zone.dayOf(present.now);
    for (CalendarDayGroup& group : groups)
        group.headerTitle = headerTitle(group.day, todaysDate, present.language);
    return groups;
}

QList<CalendarDayGroup> merged(const QList<CalendarDayGroup>& a, const QList<CalendarDayGroup>& b,
                               const QLocale& locale) {
    const TextCollation collation(locale);
    QList<CalendarDayGroup> result;
    result.reserve(a.size() + b.size());
    auto left = a.begin();
    auto right = b.begin();
    while (left != a.end() || right != b.end()) {
        if (right == b.end() || (left != a.end() && left->day < right->day))
            result.push_back(*left++);
        else if (left == a.end() || right->day < left->day)
            result.push_back(*right++);
        else
            result.push_back(united(*left++, *right++, collation));
    }
    return result;
}

QList<CalendarDayGroup> withoutRow(QList<CalendarDayGroup> groups, const QString& id, CalendarMode mode) {
    const auto isRow = [&](const CalendarEventItem& row) { return row.id == id; };
    for (qsizetype index = 0; index < groups.size(); ++index) {
        const auto& rows = groups.at(index).events;
        if (std::any_of(rows.begin(), rows.end(), isRow))
            groups[index].events.removeIf(isRow);
    }
    dropEmptyGroups(groups, mode);
    return groups;
}

QList<CalendarDayGroup> atMoment(QList<CalendarDayGroup> groups, Instant now, CalendarMode mode) {
    const qsizetype today = indexOfToday(groups);
    if (today < 0)
        return groups;
    QList<CalendarEventItem>& rows = groups[today].events;
    if (mode == CalendarMode::compact)
        rows.removeIf([&](const CalendarEventItem& row) { return isOver(row, now); });
    for (CalendarEventItem& row : rows)
        row.isHappeningNow = isHappening(row, now);
    dropEmptyGroups(groups, mode);
    return groups;
}

std::optional<Instant> nextMomentOfChange(const QList<CalendarDayGroup>& groups, Instant now) {
    std::optional<Instant> result;
    const qsizetype today = indexOfToday(groups);
    if (today < 0)
        return result;
    for (const CalendarEventItem& row : groups.at(today).events) {
        if (row.isReminder || row.isAllDay)
            continue;
        // An event that ends at an instant is no longer running at it.
        for (const Instant moment : {row.startDate, row.endDate, row.endDate + instantStep}) {
            if (moment > now && (!result || moment < *result))
                result = moment;
        }
    }
    return result;
}

std::optional<CalendarEventItem> nextEvent(const QList<CalendarDayGroup>& groups, Instant now) {
    for (const CalendarDayGroup& group : groups) {
        for (const CalendarEventItem& row : group.events) {
            if (!row.isReminder && !row.isAllDay && row.startDate > now)
                return row;
        }
    }
    return std::nullopt;
}

QString headerTitle(QDate day, QDate today, Language language) {
    const QLocale locale = language == Language::french ? QLocale(QLocale::French, QLocale::France)
                                                        : QLocale(QLocale::English, QLocale::UnitedStates);
    QString date = locale.toUpper(locale.toString(day, QStringLiteral("ddd d")));
    if (day == today)
        return text("TODAY", "AUJOURD’HUI").in(language) + QStringLiteral(" · ") + date;
    if (day == today.addDays(1))
        return text("TOMORROW", "DEMAIN").in(language) + QStringLiteral(" · ") + date;
    return date;
}

}  // namespace kestrant
