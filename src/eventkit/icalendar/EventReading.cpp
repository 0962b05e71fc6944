#include "eventkit/icalendar/Event.h"

#include <algorithm>
#include <utility>

namespace kestrant::icalendar {
namespace {

/// Where a conference takes place: CONFERENCE (RFC 7986, 5.11), one with video before others, or the property
/// that a widespread service writes instead.
std::optional<QString> readConference(ComponentView event) {
    std::optional<QString> found;
    for (const Property& conference : event.properties("CONFERENCE")) {
        if (!conference.value.toLower().startsWith("http"))
            continue;
        const bool hasVideo =
            conference.parameter("FEATURE").value_or(QByteArray()).toUpper().contains("VIDEO");
        if (!found || hasVideo)
            found = QString::fromUtf8(conference.value);
        if (hasVideo)
            return found;
    }
    if (const auto other = event.property("X-GOOGLE-CONFERENCE"); !found && other && !other->value.isEmpty())
        found = QString::fromUtf8(other->value);
    return found;
}

std::optional<EventComponent> readEvent(ComponentView event, const Document& document,
                                        const TimeZone& local) {
    EventComponent result;
    result.recurrenceId = readDateProperty(event, "RECURRENCE-ID", document);
    auto start = readDateProperty(event, "DTSTART", document);
    if (!start)
        start = result.recurrenceId;
    if (!start)
        return std::nullopt;
    result.times.start = std::move(*start);
    result.times.end = readDateProperty(event, "DTEND", document);
    if (!result.times.end) {
        if (const auto duration = event.property("DURATION"))
            result.times.duration = readDuration(duration->value);
    }
    if (const auto status = event.property("STATUS"))
        result.isCancelled = status->value.trimmed().toUpper() == "CANCELLED";
    if (const auto date = event.property("RECURRENCE-ID"); date && result.recurrenceId) {
        const auto range = date->parameter("RANGE");
        result.isForLaterDates = range && range->trimmed().toUpper() == "THISANDFUTURE";
        const auto sequence = event.property("SEQUENCE");
        result.sequence = sequence ? sequence->value.trimmed().toInt() : 0;
        result.stamp = readInstant(event.property("DTSTAMP"), document, local);
    }
    EKEventData& data = result.data;
    readProperties(data, event, document, local);
    // Forms do not change the address, so that the conference is never written as one.
    if (!data.url)
        data.url = readConference(event);
    data.isAllDay = !result.times.start.includesTime();
    data.timeZone = result.times.start.timeZone;
    data.alarms = readAlarms(event, document, local);
    return result;
}

/// A period says besides when it starts how long it lasts or when it ends.
std::optional<EventTimes> readExtraDate(const QByteArray& value, const Property& property,
                                        const Document& document) {
    const qsizetype slash = value.indexOf('/');
    auto start = readDate(slash < 0 ? value : value.first(slash), property, document);
    if (!start)
        return std::nullopt;
    EventTimes result{.start = std::move(*start)};
    if (slash >= 0) {
        const QByteArray rest = value.sliced(slash + 1);
        result.duration = readDuration(rest);
        if (!result.duration)
            result.end = readDate(rest, property, document);
    }
    return result;
}

}  // namespace

EventLength lengthOf(const EventTimes& times, const TimeZone& local) {
    const DateComponents& start = times.start;
    if (!start.includesTime()) {
        qint64 days = 1;
        if (times.end)
            days = start.date().daysTo(times.end->date()) +
                   (times.end->includesTime() && times.end->time() > QTime(0, 0) ? 1 : 0);
        else if (times.duration)
            days = times.duration->days + times.duration->seconds / 86'400;
        return {.days = static_cast<int>(std::max<qint64>(days, 1))};
    }
    if (times.end) {
        const TimeZone zone = start.timeZone.value_or(local);
        const Instant from = zone.instantAt(start.date(), start.time());
        const Instant to =
            times.end->includesTime()
                ? times.end->timeZone.value_or(local).instantAt(times.end->date(), times.end->time())
                : zone.startOfDay(times.end->date());
        return {.exact = std::max(to - from, Duration::zero())};
    }
    if (times.duration && times.duration->days >= 0 && times.duration->seconds >= 0)
        return {times.duration->days, std::chrono::seconds(times.duration->seconds)};
    return {};
}

DateInterval intervalOf(const EventTimes& times, const TimeZone& local) {
    return intervalOf(times, localTimeOf(times.start), lengthOf(times, local), local);
}

DateInterval intervalOf(const EventTimes& times, const LocalTime& start, const EventLength& length,
                        const TimeZone& local) {
    if (!times.start.includesTime())
        return {local.startOfDay(start.day), local.startOfDay(start.day.addDays(length.days))};
    const TimeZone zone = times.start.timeZone.value_or(local);
    const Instant from = zone.instantAt(start.day, start.time);
    const Instant to = length.days > 0 ? zone.instantAt(start.day.addDays(length.days), start.time) : from;
    return {from, to + length.exact};
}

std::vector<EventItem> readEvents(const Document& document, const TimeZone& local) {
    const auto views = document.components("VEVENT");
    std::vector<std::optional<EventComponent>> components;
    components.reserve(views.size());
    for (const ComponentView& view : views)
        components.push_back(readEvent(view, document, local));
    const auto at = [&](qsizetype index) -> std::optional<EventComponent>& {
        return components[static_cast<std::size_t>(index)];
    };

    const auto isUsable = [&](qsizetype index) { return at(index).has_value(); };
    const auto showsSameTime = [&](qsizetype series, qsizetype change) {
        const DateComponents& start = at(series)->times.start;
        const auto& date = at(change)->recurrenceId;
        return date && localTimeIn(start, *date, local).time == localTimeOf(start).time;
    };
    std::vector<EventItem> result;
    for (ItemComponents& parts : itemsAmong(views, isUsable, showsSameTime)) {
        EventItem item;
        static_cast<ItemComponents&>(item) = std::move(parts);
        item.event = std::move(*at(item.index));
        if (item.event.recurrenceId) {
            // One date of a series that is not here does not recur, whatever it says.
            item.event.data.recurrenceRules.clear();
            result.push_back(std::move(item));
            continue;
        }
        const ComponentView view = views[static_cast<std::size_t>(item.index)];
        forEachListed(view, "RDATE", [&](const QByteArray& value, const Property& property) {
            if (auto date = readExtraDate(value, property, document))
                item.extraDates.push_back(std::move(*date));
        });
        forEachListed(view, "EXDATE", [&](const QByteArray& value, const Property& property) {
            if (auto date = readDate(value, property, document))
                item.excludedDates.push_back(std::move(*date));
        });
        for (const Property& rule : view.properties("EXRULE"))
            item.exceptionRules.push_back(rule.value);
        for (const qsizetype index : item.changeIndexes) {
            item.changes.push_back(std::move(*at(index)));
            item.changes.back().data.recurrenceRules = item.event.data.recurrenceRules;
        }
        result.push_back(std::move(item));
    }
    return result;
}

}  // namespace kestrant::icalendar
