#include "calendar/SpokenEvent.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

constexpr auto usualLength = std::chrono::hours(1);

Duration alertBefore(const speech::Alert& alert, Instant start, QDate day, const TimeZone& zone) {
    if (!alert.time)
        return std::chrono::minutes(alert.minutesBefore);
    return std::max(Duration(0), start - zone.instantAt(day.addDays(-alert.daysBefore), *alert.time));
}

}  // namespace

SpokenEvent readEvent(const QString& line, const speech::Present& present,
                      const std::vector<EKCalendar>& calendars, const std::vector<speech::TextRange>& refused,
                      const std::vector<speech::TextRange>& accepted) {
    speech::Context context{.present = present, .purpose = speech::Purpose::event};
    for (const EKCalendar& calendar : calendars)
        context.lists.append(calendar.title);
    SpokenEvent result{
        .event = {}, .line = speech::readLine(line, context, refused, accepted), .unknownCalendar = {}};
    if (!result.line.newList.isEmpty()) {
        std::vector<speech::TextRange> more = refused;
        for (const speech::Piece& piece : result.line.pieces) {
            if (piece.kind == speech::Piece::Kind::list)
                more.push_back(piece.range);
        }
        result.unknownCalendar = result.line.newList;
        result.line = speech::readLine(line, context, more, accepted);
    }
    const speech::Line& read = result.line;
    if (!read.day || read.title.isEmpty())
        return result;
    const TimeZone& zone = present.zone;
    NewCalendarEvent event{.title = read.title, .isAllDay = !read.time};
    if (read.time) {
        event.startDate = zone.instantAt(*read.day, *read.time);
        event.endDate = read.endTime ? zone.instantAt(read.endDay.value_or(*read.day), *read.endTime)
                                     : event.startDate + usualLength;
    } else {
        event.startDate = zone.startOfDay(*read.day);
        event.endDate = zone.startOfDay(read.endDay.value_or(*read.day).addDays(1));
    }
    if (read.list)
        event.calendarID = calendars.at(*read.list).calendarIdentifier;
    event.location = read.place;
    event.notes = read.note;
    event.url = read.link;
    if (!read.rule.isEmpty())
        event.rule = EKRecurrenceRule::parse(read.rule);
    if (read.alert)
        event.alert = alertBefore(*read.alert, event.startDate, *read.day, zone);
    result.event = std::move(event);
    return result;
}

}  // namespace kestrant
