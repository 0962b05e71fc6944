#include "calendar/CalendarEditing.h"

#include <algorithm>
#include <chrono>

namespace kestrant {
namespace {

constexpr Duration shortestNewEvent = std::chrono::minutes(30);
constexpr Duration sameStartTolerance = std::chrono::seconds(300);
constexpr Duration searchMargin = std::chrono::seconds(120);

Instant startOfNextDay(Instant instant, const TimeZone& zone) {
    return zone.startOfDay(zone.dayOf(instant).addDays(1));
}

bool startsWith(const CalendarEventItem& row, const EKEventData& event) {
    return std::chrono::abs(event.startDate - row.startDate) < sameStartTolerance;
}

std::optional<QString> textOrAbsent(const QString& text) {
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

}  // namespace

tl::expected<EKEventData, CalendarError> newEventData(const NewCalendarEvent& event, const TimeZone& zone) {
    EKEventData data;
    data.title = event.title.trimmed();
    if (data.title.isEmpty())
        return tl::unexpected(CalendarError{CalendarError::Code::emptyTitle});
    data.isAllDay = event.isAllDay;
    if (event.isAllDay) {
        data.startDate = zone.startOfDay(event.startDate);
        data.endDate = std::max(zone.startOfDay(event.endDate), startOfNextDay(event.startDate, zone));
    } else {
        data.startDate = event.startDate;
        data.endDate = std::max(event.endDate, event.startDate + shortestNewEvent);
        data.timeZone = zone;
    }
    const auto orNone = [](const QString& text) {
        return text.isEmpty() ? CompactOptional<QString>() : CompactOptional<QString>(text);
    };
    data.location = orNone(event.location.trimmed());
    data.notes = orNone(event.notes.trimmed());
    data.url = orNone(event.url);
    if (event.rule)
        data.recurrenceRules = {*event.rule};
    if (event.alert)
        data.alarms = {EKAlarm{.absoluteDate = data.startDate - *event.alert,
                               .relativeOffset = -*event.alert,
                               .followsStart = true}};
    return data;
}

CalendarEventEditDetails editDetails(const EKEventData& event) {
    return {.title = event.title,
            .startDate = event.startDate,
            .endDate = event.endDate,
            .isAllDay = event.isAllDay,
            .calendarID = event.calendarIdentifier,
            .location = event.location.value_or(QString()),
            .notes = event.notes.value_or(QString())};
}

tl::expected<CalendarEventEditDetails, CalendarError> validated(const CalendarEventEditDetails& details,
                                                                const TimeZone& zone) {
    CalendarEventEditDetails result = details;
    result.title = details.title.trimmed();
    result.location = details.location.trimmed();
    result.notes = details.notes.trimmed();
    if (result.title.isEmpty())
        return tl::unexpected(CalendarError{CalendarError::Code::emptyTitle});
    if (details.isAllDay) {
        result.startDate = zone.startOfDay(details.startDate);
        result.endDate = zone.isSameDay(details.startDate, details.endDate)
                             ? startOfNextDay(details.startDate, zone)
                             : zone.startOfDay(details.endDate);
    }
    if (result.endDate <= result.startDate)
        return tl::unexpected(CalendarError{CalendarError::Code::invalidDateRange});
    return result;
}

void apply(const CalendarEventEditDetails& details, const TimeZone& zone, EKEventData& event) {
    if (details.isAllDay)
        event.timeZone.reset();
    else if (event.isAllDay)
        event.timeZone = zone;
    event.title = details.title;
    event.isAllDay = details.isAllDay;
    event.startDate = details.startDate;
    event.endDate = details.endDate;
    event.calendarIdentifier = details.calendarID;
    event.location = textOrAbsent(details.location);
    event.notes = textOrAbsent(details.notes);
}

bool isEventBehind(const CalendarEventItem& row, const EKEventData& lookedUp) {
    const bool recurs = lookedUp.hasRecurrenceRules() || lookedUp.occurrenceDate;
    return startsWith(row, lookedUp) || !recurs;
}

DateInterval searchIntervalFor(const CalendarEventItem& row) {
    return {row.startDate - searchMargin, row.endDate + searchMargin};
}

bool isOccurrenceBehind(const CalendarEventItem& row, const EKEventData& found) {
    const QString& identifier =
        found.eventIdentifier.isEmpty() ? found.calendarItemIdentifier : found.eventIdentifier;
    return identifier == row.itemIdentifier && startsWith(row, found);
}

}  // namespace kestrant
