#include "eventkit/ReminderSeries.h"

#include "eventkit/icalendar/DateValue.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using icalendar::calendarOf;
using icalendar::DateKind;
using icalendar::LocalTime;
using icalendar::localTimeIn;
using icalendar::localTimeOf;
using icalendar::Occurrences;
using icalendar::RecurrenceRule;

qint64 secondsBetween(const LocalTime& from, const LocalTime& to) {
    return from.day.daysTo(to.day) * 86'400 + from.time.secsTo(to.time);
}

LocalTime plus(const LocalTime& time, qint64 seconds) {
    seconds += QTime(0, 0).secsTo(time.time);
    const qint64 days = seconds >= 0 ? seconds / 86'400 : -((86'399 - seconds) / 86'400);
    return {time.day.addDays(days), QTime(0, 0).addSecs(static_cast<int>(seconds - days * 86'400))};
}

Instant movedAlong(Instant instant, qint64 seconds, const ZoneCalendar& zone) {
    const LocalTime moved = plus({zone.dayOf(instant), zone.timeOf(instant)}, seconds);
    return zone.instantAt(moved.day, moved.time);
}

bool isExcluded(const SeriesDates& dates, const LocalTime& time) {
    return std::find(dates.excludedTimes.begin(), dates.excludedTimes.end(), time) !=
               dates.excludedTimes.end() ||
           std::find(dates.excludedDays.begin(), dates.excludedDays.end(), time.day) !=
               dates.excludedDays.end();
}

/// The rules with what is left of their counts; a rule that has nothing left is dropped.
std::vector<EKRecurrenceRule> remainingRules(const std::vector<EKRecurrenceRule>& rules,
                                             const std::vector<int>& skipped) {
    std::vector<EKRecurrenceRule> result;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const auto parsed = RecurrenceRule::parse(rules[i].text.toUtf8());
        if (!parsed || !parsed->count) {
            result.push_back(rules[i]);
            continue;
        }
        const int left = *parsed->count - skipped[i];
        if (left < 1)
            continue;
        static const QRegularExpression count(QStringLiteral("\\bCOUNT=\\d+"),
                                              QRegularExpression::CaseInsensitiveOption);
        QString text = rules[i].text;
        result.push_back(EKRecurrenceRule::parse(text.replace(count, QStringLiteral("COUNT=%1").arg(left))));
    }
    return result;
}

/// The date of a series whose occurrence is due when today begins.
LocalTime dateDueToday(const EKReminderData& data, const DateComponents& anchor, Instant now,
                       const ZoneCalendar& local) {
    LocalTime today{local.dayOf(now), QTime(0, 0)};
    if (const ZoneCalendar zone = calendarOf(anchor, local); anchor.includesTime() && !(zone == local)) {
        const Instant midnight = local.startOfDay(now);
        today = {zone.dayOf(midnight), zone.timeOf(midnight)};
    }
    if (!data.dueDateComponents || !data.dueDateComponents->date().isValid())
        return today;
    const LocalTime due = localTimeIn(anchor, *data.dueDateComponents, local);
    return plus(today, secondsBetween(due, localTimeOf(anchor)));
}

}  // namespace

std::optional<DateComponents> seriesAnchor(const EKReminderData& data) {
    const auto& anchor = data.startDateComponents ? data.startDateComponents : data.dueDateComponents;
    const bool usable =
        anchor && anchor->date().isValid() && (!anchor->includesTime() || anchor->time().isValid());
    return usable ? anchor : std::nullopt;
}

DateComponents movedAlong(const DateComponents& date, const LocalTime& from, const LocalTime& to,
                          const ZoneCalendar& seriesZone, const ZoneCalendar& local) {
    if (!date.date().isValid())
        return date;
    if (!date.includesTime())
        return DateComponents::fromDate(date.date().addDays(from.day.daysTo(to.day)));
    if (!date.time().isValid())
        return date;
    const qint64 seconds = secondsBetween(from, to);
    const ZoneCalendar own = calendarOf(date, local);
    LocalTime moved = plus(localTimeOf(date), seconds);
    if (!(own == seriesZone)) {
        const Instant instant = movedAlong(own.instantAt(date.date(), date.time()), seconds, seriesZone);
        moved = {own.dayOf(instant), own.timeOf(instant)};
    }
    return DateComponents::fromDateTime(moved.day, moved.time, date.timeZone);
}

std::optional<SeriesDate> findSeriesDate(const EKReminderData& data, const SeriesDates& dates,
                                         const LocalTime& from, SearchFrom searchFrom,
                                         const ZoneCalendar& local) {
    const auto present = seriesAnchor(data);
    if (!present)
        return std::nullopt;
    const DateKind kind = present->includesTime() ? DateKind::time : DateKind::day;
    const LocalTime anchor = dates.anchor.value_or(localTimeOf(*present));
    const auto qualifies = [&](const LocalTime& time) {
        return searchFrom == SearchFrom::included ? !(time < from) : from < time;
    };

    std::optional<SeriesDate> best;
    std::vector<LocalTime> extras = dates.extraTimes;
    for (const QDate day : dates.extraDays)
        extras.push_back({day, anchor.time});
    for (const LocalTime& extra : extras) {
        if (qualifies(extra) && !isExcluded(dates, extra) && (!best || extra < best->time))
            best = SeriesDate{extra, true, {}};
    }

    const ZoneCalendar zone = calendarOf(*present, local);
    const RecurrenceRule startAlone{.count = 1};
    std::vector<Occurrences> rules;
    for (const EKRecurrenceRule& rule : data.recurrenceRules) {
        const auto parsed = RecurrenceRule::parse(rule.text.toUtf8()).value_or(startAlone);
        rules.emplace_back(parsed, anchor, kind, zone);
        // What a COUNT has spent is counted below.
        if (!parsed.count)
            rules.back().skipTo(from);
    }
    if (rules.empty())
        rules.emplace_back(startAlone, anchor, kind, zone);
    std::vector<int> skipped(rules.size(), 0);
    std::vector<std::optional<LocalTime>> heads;
    for (Occurrences& rule : rules)
        heads.push_back(rule.next());
    // The rules are walked side by side; a date that several of them give is one date.
    while (true) {
        std::optional<LocalTime> earliest;
        for (const auto& head : heads) {
            if (head && (!earliest || *head < *earliest))
                earliest = head;
        }
        if (!earliest || (best && best->isExtra && best->time < *earliest))
            break;
        if (qualifies(*earliest) && !isExcluded(dates, *earliest)) {
            best = SeriesDate{*earliest, false, {}};
            break;
        }
        for (std::size_t i = 0; i < heads.size(); ++i) {
            if (heads[i] == earliest) {
                heads[i] = rules[i].next();
                ++skipped[i];
            }
        }
    }
    if (best)
        best->skipped = std::move(skipped);
    return best;
}

CompletedOccurrence completeOccurrence(EKReminderData completed, const SeriesDates& dates, Instant now,
                                       const ZoneCalendar& local) {
    const auto present = seriesAnchor(completed);
    const bool understood = std::any_of(
        completed.recurrenceRules.begin(), completed.recurrenceRules.end(),
        [](const EKRecurrenceRule& rule) { return RecurrenceRule::parse(rule.text.toUtf8()).has_value(); });
    const bool recurs = understood || !dates.extraTimes.empty() || !dates.extraDays.empty();
    if (!present || !recurs)
        return {std::move(completed), std::nullopt};
    const LocalTime from = localTimeOf(*present);
    const LocalTime today = dateDueToday(completed, *present, now, local);
    const auto next = from < today ? findSeriesDate(completed, dates, today, SearchFrom::included, local)
                                   : findSeriesDate(completed, dates, from, SearchFrom::excluded, local);
    if (!next)
        return {std::move(completed), std::nullopt};

    const ZoneCalendar zone = calendarOf(*present, local);
    CompletedOccurrence result{.series = completed, .copy = completed, .keepsAnchor = next->isExtra};
    if (completed.recurrenceRules.empty())
        result.keepsAnchor = false;
    result.copy->recurrenceRules.clear();
    result.copy->alarms.clear();
    result.copy->calendarItemIdentifier.clear();

    EKReminderData& series = result.series;
    series.isCompleted = false;
    series.completionDate.reset();
    for (auto* date : {&series.startDateComponents, &series.dueDateComponents}) {
        if (*date)
            *date = movedAlong(**date, from, next->time, zone, local);
    }
    // What was to ring once more for the finished occurrence has nothing to say about the next one.
    std::erase_if(series.alarms, [](const EKAlarm& alarm) { return !alarm.snoozedAlarm.isEmpty(); });
    for (EKAlarm& alarm : series.alarms) {
        if (alarm.absoluteDate && !alarm.relativeOffset)
            alarm.absoluteDate = movedAlong(*alarm.absoluteDate, secondsBetween(from, next->time), zone);
    }
    if (!result.keepsAnchor)
        series.recurrenceRules = remainingRules(completed.recurrenceRules, next->skipped);
    return result;
}

}  // namespace kestrant
