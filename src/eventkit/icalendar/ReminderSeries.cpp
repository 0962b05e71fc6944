#include "eventkit/icalendar/ReminderSeries.h"

#include "eventkit/icalendar/DateValue.h"
#include "eventkit/recurrence/RecurrenceSet.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using icalendar::DateKind;
using icalendar::LocalTime;
using icalendar::localTimeIn;
using icalendar::localTimeOf;
using icalendar::OccurrenceIterator;
using icalendar::RecurrenceRule;
using icalendar::RecurrenceSet;
using icalendar::RecurrenceWalk;

qint64 secondsBetween(const LocalTime& from, const LocalTime& to) {
    return from.day.daysTo(to.day) * 86'400 + from.time.secsTo(to.time);
}

LocalTime plus(const LocalTime& time, qint64 seconds) {
    seconds += QTime(0, 0).secsTo(time.time);
    const qint64 days = seconds >= 0 ? seconds / 86'400 : -((86'399 - seconds) / 86'400);
    return {time.day.addDays(days), QTime(0, 0).addSecs(static_cast<int>(seconds - days * 86'400))};
}

Instant movedAlong(Instant instant, qint64 seconds, const TimeZone& zone) {
    const LocalTime moved = plus({zone.dayOf(instant), zone.timeOf(instant)}, seconds);
    return zone.instantAt(moved.day, moved.time);
}

/// Budget of each search for a date, in candidates examined.
constexpr qint64 mostSteps = 1'000'000;
/// Largest cost of skipping one excluded date.
constexpr qint64 stepsPerExclusion = 4;

RecurrenceSet recurrenceOf(const EKReminderData& data, const SeriesDates& dates,
                           const DateComponents& present, const TimeZone& local) {
    RecurrenceSet result{.start = dates.anchor.value_or(localTimeOf(present)),
                         .kind = present.includesTime() ? DateKind::time : DateKind::day,
                         .zone = present.timeZone.value_or(local),
                         .rules = {},
                         .extraDates = dates.extraTimes,
                         .excludedTimes = dates.excludedTimes,
                         .excludedDays = dates.excludedDays,
                         .exceptionRules = {}};
    for (const QDate day : dates.extraDays)
        result.extraDates.push_back({day, result.start.time});
    const RecurrenceRule startAlone{.count = 1};
    for (const EKRecurrenceRule& rule : data.recurrenceRules)
        result.rules.push_back(RecurrenceRule::parse(rule.text.toUtf8()).value_or(startAlone));
    if (result.rules.empty())
        result.rules.push_back(startAlone);
    for (const QByteArray& text : dates.exceptionRules) {
        if (auto rule = RecurrenceRule::parse(text))
            result.exceptionRules.push_back(*std::move(rule));
    }
    result.sort();
    return result;
}

OccurrenceIterator datesOf(const RecurrenceRule& rule, const RecurrenceSet& set) {
    OccurrenceIterator result = set.datesOf(rule);
    result.limitSteps(mostSteps);
    return result;
}

/// How many dates of a rule with a COUNT are before `time`; absent where they are too many to be counted.
std::optional<int> countBefore(const LocalTime& time, OccurrenceIterator dates) {
    int count = 0;
    for (auto date = dates.next(); date && *date < time; date = dates.next())
        ++count;
    return dates.ranOut() ? std::nullopt : std::optional(count);
}

QString untilText(const LocalTime& last, const RecurrenceSet& set, bool isFloating) {
    if (set.kind == DateKind::day)
        return last.day.toString(QStringLiteral("'UNTIL='yyyyMMdd"));
    if (isFloating)
        return last.day.toString(QStringLiteral("'UNTIL='yyyyMMdd")) +
               last.time.toString(QStringLiteral("'T'HHmmss"));
    return QStringLiteral("UNTIL=") +
           QString::fromLatin1(icalendar::utcText(set.zone.instantAt(last.day, last.time)));
}

/// The rules with what is left of their counts; a rule that has nothing left is dropped. Where its dates are
/// too many to be counted, a rule gets its last date for the count, if that can be found.
std::vector<EKRecurrenceRule> remainingRules(const std::vector<EKRecurrenceRule>& rules,
                                             const SeriesDate& next, const RecurrenceSet& set,
                                             bool isFloating) {
    std::vector<EKRecurrenceRule> result;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const auto parsed = RecurrenceRule::parse(rules[i].text.toUtf8());
        QString end;
        if (parsed && parsed->count && next.spent[i]) {
            const int left = *parsed->count - *next.spent[i];
            if (left < 1)
                continue;
            end = QStringLiteral("COUNT=%1").arg(left);
        } else if (parsed && parsed->count) {
            if (const auto last = datesOf(*parsed, set).lastByCount())
                end = untilText(*last, set, isFloating);
        }
        static const QRegularExpression count(QStringLiteral("\\bCOUNT=\\d+"),
                                              QRegularExpression::CaseInsensitiveOption);
        QString text = rules[i].text;
        result.push_back(end.isEmpty() ? rules[i] : EKRecurrenceRule::parse(text.replace(count, end)));
    }
    return result;
}

/// The date of a series whose occurrence is due when today begins.
LocalTime dateDueToday(const EKReminderData& data, const DateComponents& anchor, Instant now,
                       const TimeZone& local) {
    LocalTime today{local.dayOf(now), QTime(0, 0)};
    if (const TimeZone zone = anchor.timeZone.value_or(local); anchor.includesTime() && !(zone == local)) {
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
                          const TimeZone& seriesZone, const TimeZone& local) {
    if (!date.date().isValid())
        return date;
    if (!date.includesTime())
        return DateComponents::fromDate(date.date().addDays(from.day.daysTo(to.day)));
    if (!date.time().isValid())
        return date;
    const qint64 seconds = secondsBetween(from, to);
    const TimeZone own = date.timeZone.value_or(local);
    LocalTime moved = plus(localTimeOf(date), seconds);
    if (!(own == seriesZone)) {
        const Instant instant = movedAlong(own.instantAt(date.date(), date.time()), seconds, seriesZone);
        moved = {own.dayOf(instant), own.timeOf(instant)};
    }
    return DateComponents::fromDateTime(moved.day, moved.time, date.timeZone);
}

std::optional<SeriesDate> findSeriesDate(const EKReminderData& data, const SeriesDates& dates,
                                         const LocalTime& from, SearchFrom searchFrom,
                                         const TimeZone& local) {
    const auto present = seriesAnchor(data);
    if (!present)
        return std::nullopt;
    const RecurrenceSet set = recurrenceOf(data, dates, *present, local);
    const qint64 stepsOfRule = mostSteps + stepsPerExclusion * std::ssize(dates.excludedTimes);
    RecurrenceWalk walk(set, RecurrenceWalk::Way::forward, from, {}, {}, stepsOfRule * std::ssize(set.rules));
    auto time = walk.next();
    if (time == from && searchFrom == SearchFrom::excluded)
        time = walk.next();
    if (!time)
        return std::nullopt;
    SeriesDate result{*time, !walk.isByRule(), {}};
    for (std::size_t i = 0; i < set.rules.size(); ++i) {
        const auto before = set.rules[i].count ? countBefore(from, datesOf(set.rules[i], set)) : 0;
        result.spent.push_back(before ? std::optional(*before + walk.passed()[i]) : std::nullopt);
    }
    return result;
}

CompletedOccurrence completeOccurrence(EKReminderData completed, const SeriesDates& dates, Instant now,
                                       const TimeZone& local) {
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

    const TimeZone zone = present->timeZone.value_or(local);
    // Rules of exceptions count from where the series begins.
    CompletedOccurrence result{.series = completed,
                               .copy = completed,
                               .keepsAnchor = next->isExtra || !dates.exceptionRules.empty()};
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
    // Snoozed alarms of the finished occurrence do not apply to the next one.
    std::erase_if(series.alarms, [](const EKAlarm& alarm) { return !alarm.snoozedAlarm.isEmpty(); });
    for (EKAlarm& alarm : series.alarms) {
        if (alarm.absoluteDate && !alarm.relativeOffset)
            alarm.absoluteDate = movedAlong(*alarm.absoluteDate, secondsBetween(from, next->time), zone);
    }
    if (!result.keepsAnchor)
        series.recurrenceRules =
            remainingRules(completed.recurrenceRules, *next, recurrenceOf(completed, dates, *present, local),
                           !present->timeZone);
    return result;
}

}  // namespace kestrant
