#include "reminders/quickadd/QuickAddParser.h"

#include "foundation/ClockText.h"

#include <algorithm>
#include <chrono>
#include <ratio>
#include <utility>

namespace kestrant {
namespace {

NewReminderPriority priorityOf(int number) {
    return number < 5    ? NewReminderPriority::high
           : number == 5 ? NewReminderPriority::normal
                         : NewReminderPriority::low;
}

/// An alert as a reminder has it: before a time by a length, on a day at a time.
ReminderAlertSchedule scheduleOf(const speech::Alert& alert, const QuickAddLine& line, const TimeZone& zone) {
    constexpr int minutesOfDay = 1440;
    if (line.time) {
        double minutes = alert.minutesBefore;
        if (alert.time) {
            const Instant due = zone.instantAt(*line.day, *line.time);
            const Instant rings = zone.instantAt(line.day->addDays(-alert.daysBefore), *alert.time);
            minutes = std::chrono::duration<double, std::ratio<60>>(due - rings).count();
        }
        return RelativeToDueTime{-60 * std::max(0.0, minutes)};
    }
    const QTime time = alert.time.value_or(QTime(9, 0));
    const int days = alert.time ? alert.daysBefore : (alert.minutesBefore + minutesOfDay - 1) / minutesOfDay;
    return DayRelativeToDueDate{-std::min(days, 1), time.hour(), time.minute()};
}

}  // namespace

speech::Present presentFor(const QuickAddContext& context) {
    const bool isEnglish = context.language == Language::english;
    speech::Present present{.now = context.now, .zone = context.zone, .language = context.language};
    const bool isKnown = context.locale && context.locale->language() != QLocale::C;
    bool monthFirst = isEnglish;
    present.hasTwelveHours = isEnglish;
    if (isKnown) {
        const QString format = context.locale->dateFormat(QLocale::ShortFormat);
        monthFirst = format.indexOf(u'M') < format.indexOf(u'd') && !format.startsWith(u'y');
        present.hasTwelveHours = clockHours(context.language, *context.locale) == ClockHours::twelve;
    }
    present.order = monthFirst ? speech::DateOrder::monthFirst : speech::DateOrder::dayFirst;
    return present;
}

QuickAddLine parseQuickAdd(const QString& line, const QuickAddContext& context,
                           const std::vector<TextRange>& refused, const std::vector<TextRange>& accepted) {
    speech::Context spoken{.present = presentFor(context)};
    for (const ReminderList& list : context.lists)
        spoken.lists.append(list.title);
    speech::Line read = speech::readLine(line, spoken, refused, accepted);
    QuickAddLine result{.title = std::move(read.title), .day = read.day, .time = read.time};
    result.timeInZone = read.timeInZone;
    result.zone = std::move(read.zone);
    result.hasEnd = read.endDay.has_value();
    if (!read.rule.isEmpty())
        result.rule = EKRecurrenceRule::parse(read.rule);
    if (read.priority)
        result.priority = priorityOf(*read.priority);
    if (read.list)
        result.listID = context.lists.at(*read.list).id;
    result.newListTitle = std::move(read.newList);
    result.isFlagged = read.isFlagged;
    result.url = std::move(read.link);
    result.notes = std::move(read.note);
    if (read.alert && read.day)
        result.alert = scheduleOf(*read.alert, result, context.zone);
    result.pieces = std::move(read.pieces);
    result.offers = std::move(read.offers);
    return result;
}

}  // namespace kestrant
