#include "calendar/CalendarGrouping.h"

#include "calendar/CalendarFetch.h"
#include "calendar/CalendarRows.h"

#include <QSet>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

constexpr Duration instantStep = Duration(1);

/// The days of a range with their first instants, so that an instant finds its day without asking the time
/// zone.
class DayStarts {
  public:
    DayStarts(const DayRange& days, const ZoneCalendar& calendar) {
        for (QDate day = days.first; day <= days.end; day = day.addDays(1))
            starts_.push_back(calendar.startOfDay(day));
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

PlacedRows placedRows(const CalendarItems& items, const DayStarts& days, const CalendarPresent& present) {
    const auto appearance = [&](const QString& calendar) {
        const auto found = items.calendars.constFind(calendar);
        return found == items.calendars.constEnd() ? nullptr : &*found;
    };
    PlacedRows result;
    for (const auto& event : items.events) {
        // The end is excluded; an event without length takes the instant it starts at.
        const Instant lastInstant = std::max(event->startDate, event->endDate - instantStep);
        const qsizetype first = std::max<qsizetype>(days.dayOf(event->startDate), 0);
        const qsizetype last = std::min(days.dayOf(lastInstant), days.count() - 1);
        if (first <= last)
            result.add(eventRow(*event, appearance(event->calendarIdentifier), present.language),
                       {first, last});
    }
    for (const auto& reminder : items.reminders) {
        const auto dueDate = reminderDueDate(*reminder, present.calendar);
        const qsizetype day = dueDate ? days.dayOf(*dueDate) : -1;
        if (day >= 0 && day < days.count())
            result.add(
                reminderRow(*reminder, *dueDate, appearance(reminder->calendarIdentifier), present.language),
                {day, day});
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
    const QDate today = present.calendar.dayOf(present.now);
    return {today, today.addDays(7)};
}

QList<CalendarDayGroup> groupByDay(const CalendarItems& items, const DayRange& days, CalendarMode mode,
                                   const CalendarPresent& present) {
    const DayStarts starts(days, present.calendar);
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
    const QDate todaysDate = present.calendar.dayOf(present.now);
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
        // What ends at an instant is not happening at it, and is over right after it.
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
