#include "eventkit/icalendar/AlarmText.h"
#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/Todo.h"

#include <algorithm>
#include <map>

namespace kestrant::icalendar {
namespace {

std::optional<QString> readText(ComponentView todo, QByteArrayView name) {
    const auto property = todo.property(name);
    if (!property || property->value.isEmpty())
        return std::nullopt;
    return unescapedText(property->value);
}

std::optional<DateComponents> readDateProperty(ComponentView todo, QByteArrayView name,
                                               const Document& document) {
    const auto property = todo.property(name);
    return property ? readDate(*property, document) : std::nullopt;
}

/// Start and duration together say when something is due.
std::optional<DateComponents> dueFromDuration(ComponentView todo, const std::optional<DateComponents>& start,
                                              const ZoneCalendar& local) {
    const auto property = todo.property("DURATION");
    const auto duration = property ? readDuration(property->value) : std::nullopt;
    if (!duration || !start)
        return std::nullopt;
    const QDate day = start->date().addDays(duration->days);
    if (!start->includesTime())
        return DateComponents::fromDate(day.addDays(duration->seconds / 86'400));
    const ZoneCalendar zone = calendarOf(*start, local);
    const Instant due = zone.instantAt(day, start->time()) + std::chrono::seconds(duration->seconds);
    return DateComponents::fromDateTime(zone.dayOf(due), zone.timeOf(due), start->timeZone);
}

struct Completion {
    bool isClosed = false;
    std::optional<Instant> date;
};

Completion readCompletion(ComponentView todo, const Document& document, const ZoneCalendar& local) {
    const auto status = todo.property("STATUS");
    const QByteArray statusValue = status ? status->value.trimmed().toUpper() : QByteArray();
    const auto percent = todo.property("PERCENT-COMPLETE");
    const auto completed = todo.property("COMPLETED");
    const bool isClosed = statusValue == "COMPLETED" || statusValue == "CANCELLED" ||
                          (completed && !completed->value.isEmpty()) ||
                          (percent && percent->value.trimmed() == "100");
    return {isClosed, isClosed ? readInstant(completed, document, local) : std::nullopt};
}

LocalTime inSeriesZone(const DateComponents& date, const DateComponents& anchor, const ZoneCalendar& local) {
    if (!date.includesTime())
        return {date.date(), anchor.includesTime() ? anchor.time() : QTime(0, 0)};
    if (!anchor.includesTime())
        return {date.date(), QTime(0, 0)};
    if (date.timeZone == anchor.timeZone)
        return {date.date(), date.time()};
    const ZoneCalendar zone = calendarOf(anchor, local);
    const Instant instant = calendarOf(date, local).instantAt(date.date(), date.time());
    return {zone.dayOf(instant), zone.timeOf(instant)};
}

void readListedDates(ComponentView todo, QByteArrayView name, const DateComponents& anchor,
                     const Document& document, const ZoneCalendar& local, std::vector<LocalTime>& times,
                     std::vector<QDate>& days) {
    for (const Property& property : todo.properties(name)) {
        for (const QByteArray& value : property.value.split(',')) {
            // A period counts by its start.
            const auto date = readDate(value.split('/').front(), property, document);
            if (!date)
                continue;
            if (date->includesTime())
                times.push_back(inSeriesZone(*date, anchor, local));
            else
                days.push_back(date->date());
        }
    }
}

/// Moves a series to its first date that is still open, or completes it.
void showPresentDate(TodoItem& item, ComponentView todo, const DateComponents& anchor,
                     const std::optional<Instant>& lastCompletion, const Document& document,
                     const ZoneCalendar& local) {
    const LocalTime start = inSeriesZone(anchor, anchor, local);
    LocalTime from = start;
    if (const auto present = readDateProperty(todo, "X-KDE-LIBKCAL-DTRECURRENCE", document))
        from = std::max(start, inSeriesZone(*present, anchor, local));
    const auto found = findSeriesDate(item.data, item.dates, from, SearchFrom::included, local);
    if (!found) {
        item.data.isCompleted = true;
        item.data.completionDate = lastCompletion;
        return;
    }
    if (found->time == start)
        return;
    item.dates.anchor = start;
    const ZoneCalendar zone = calendarOf(anchor, local);
    for (auto* date : {&item.data.startDateComponents, &item.data.dueDateComponents}) {
        if (*date)
            *date = movedAlong(**date, start, found->time, zone, local);
    }
}

void readSeries(TodoItem& item, ComponentView todo, const std::vector<ComponentView>& overrides,
                const Document& document, const ZoneCalendar& local) {
    for (const Property& rule : todo.properties("RRULE"))
        item.data.recurrenceRules.push_back(EKRecurrenceRule::parse(QString::fromUtf8(rule.value)));
    const auto anchor = seriesAnchor(item.data);
    if (!anchor)
        return;
    readListedDates(todo, "RDATE", *anchor, document, local, item.dates.extraTimes, item.dates.extraDays);
    const bool recurs =
        !item.data.recurrenceRules.empty() || !item.dates.extraTimes.empty() || !item.dates.extraDays.empty();
    if (!recurs)
        return;
    readListedDates(todo, "EXDATE", *anchor, document, local, item.dates.excludedTimes,
                    item.dates.excludedDays);
    std::optional<Instant> lastCompletion;
    for (const ComponentView& single : overrides) {
        const auto date = readDateProperty(single, "RECURRENCE-ID", document);
        const Completion completion = readCompletion(single, document, local);
        if (!date || !completion.isClosed)
            continue;
        item.dates.excludedTimes.push_back(inSeriesZone(*date, *anchor, local));
        lastCompletion = std::max(lastCompletion, completion.date);
    }
    if (!item.data.isCompleted)
        showPresentDate(item, todo, *anchor, lastCompletion, document, local);
}

TodoItem readTodo(ComponentView todo, const std::vector<ComponentView>& overrides, const Document& document,
                  const ZoneCalendar& local) {
    TodoItem item;
    EKReminderData& data = item.data;
    data.title = readText(todo, "SUMMARY").value_or(QString());
    data.notes = readText(todo, "DESCRIPTION");
    data.location = readText(todo, "LOCATION");
    if (const auto url = todo.property("URL"); url && !url->value.isEmpty())
        data.url = QString::fromUtf8(url->value);
    if (const auto priority = todo.property("PRIORITY")) {
        const int value = priority->value.trimmed().toInt();
        data.priority = value >= 1 && value <= 9 ? value : 0;
    }
    data.startDateComponents = readDateProperty(todo, "DTSTART", document);
    data.dueDateComponents = readDateProperty(todo, "DUE", document);
    if (!data.dueDateComponents)
        data.dueDateComponents = dueFromDuration(todo, data.startDateComponents, local);
    const Completion completion = readCompletion(todo, document, local);
    data.isCompleted = completion.isClosed;
    data.completionDate = completion.date;
    const auto created = todo.property("CREATED");
    data.creationDate = readInstant(created ? created : todo.property("DTSTAMP"), document, local);
    data.lastModifiedDate = readInstant(todo.property("LAST-MODIFIED"), document, local);
    const auto pinned = todo.property("X-PINNED");
    data.isFlagged = pinned && pinned->value.trimmed().toUpper() == "TRUE";
    for (const ComponentView& alarm : todo.components("VALARM"))
        data.alarms.push_back(readAlarm(alarm, data, document, local));
    readSeries(item, todo, overrides, document, local);
    return item;
}

}  // namespace

std::vector<TodoItem> readTodos(const Document& document, const ZoneCalendar& local) {
    struct Header {
        QByteArray uid;
        QByteArray recurrenceId;
    };
    struct Series {
        bool hasMaster = false;
        std::vector<ComponentView> overrides;
    };
    const auto todos = document.components("VTODO");
    std::vector<Header> headers;
    std::map<QByteArray, Series> seriesByUid;
    for (const ComponentView& todo : todos) {
        Header header;
        if (const auto uid = todo.property("UID"))
            header.uid = uid->value.trimmed();
        if (const auto id = todo.property("RECURRENCE-ID"))
            header.recurrenceId = id->value.trimmed();
        Series& series = seriesByUid[header.uid];
        if (header.recurrenceId.isEmpty())
            series.hasMaster = true;
        else
            series.overrides.push_back(todo);
        headers.push_back(std::move(header));
    }
    std::vector<TodoItem> items;
    for (std::size_t i = 0; i < todos.size(); ++i) {
        const Header& header = headers[i];
        const Series& series = seriesByUid[header.uid];
        const bool isSingleDate = !header.recurrenceId.isEmpty();
        if (isSingleDate && series.hasMaster)
            continue;
        TodoItem item = readTodo(todos[i], isSingleDate ? std::vector<ComponentView>() : series.overrides,
                                 document, local);
        item.key = isSingleDate ? header.uid + '/' + header.recurrenceId : header.uid;
        item.index = static_cast<qsizetype>(i);
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace kestrant::icalendar
