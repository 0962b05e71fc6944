#include "eventkit/icalendar/Todo.h"
#include "eventkit/model/ReminderAlarms.h"

#include <algorithm>

namespace kestrant::icalendar {
namespace {

/// Start and duration together say when something is due.
std::optional<DateComponents> dueFromDuration(ComponentView todo, const std::optional<DateComponents>& start,
                                              const TimeZone& local) {
    const auto property = todo.property("DURATION");
    const auto duration = property ? readDuration(property->value) : std::nullopt;
    if (!duration || !start)
        return std::nullopt;
    const QDate day = start->date().addDays(duration->days);
    if (!start->includesTime())
        return DateComponents::fromDate(day.addDays(duration->seconds / 86'400));
    const TimeZone zone = start->timeZone.value_or(local);
    const Instant due = zone.instantAt(day, start->time()) + std::chrono::seconds(duration->seconds);
    return DateComponents::fromDateTime(zone.dayOf(due), zone.timeOf(due), start->timeZone);
}

struct Completion {
    bool isClosed = false;
    std::optional<Instant> date;
};

Completion readCompletion(ComponentView todo, const Document& document, const TimeZone& local) {
    const auto status = todo.property("STATUS");
    const QByteArray statusValue = status ? status->value.trimmed().toUpper() : QByteArray();
    const auto percent = todo.property("PERCENT-COMPLETE");
    const auto completed = todo.property("COMPLETED");
    const bool isClosed = statusValue == "COMPLETED" || statusValue == "CANCELLED" ||
                          (completed && !completed->value.isEmpty()) ||
                          (percent && percent->value.trimmed() == "100");
    return {isClosed, isClosed ? readInstant(completed, document, local) : std::nullopt};
}

void readListedDates(ComponentView todo, QByteArrayView name, const DateComponents& anchor,
                     const Document& document, const TimeZone& local, std::vector<LocalTime>& times,
                     std::vector<QDate>& days) {
    forEachListed(todo, name, [&](const QByteArray& value, const Property& property) {
        // A period counts by its start.
        const auto date = readDate(value.split('/').front(), property, document);
        if (date && date->includesTime())
            times.push_back(localTimeIn(anchor, *date, local));
        else if (date)
            days.push_back(date->date());
    });
}

/// Moves a series to its first date that is still open, or completes it.
void showPresentDate(TodoItem& item, ComponentView todo, const DateComponents& anchor,
                     const std::optional<Instant>& lastCompletion, const Document& document,
                     const TimeZone& local) {
    const LocalTime start = localTimeOf(anchor);
    LocalTime from = start;
    if (const auto present = readDateProperty(todo, "X-KDE-LIBKCAL-DTRECURRENCE", document))
        from = std::max(start, localTimeIn(anchor, *present, local));
    const auto found = findSeriesDate(item.data, item.dates, from, SearchFrom::included, local);
    if (!found) {
        item.data.isCompleted = true;
        item.data.completionDate = lastCompletion;
        return;
    }
    if (found->time == start)
        return;
    item.dates.anchor = start;
    const TimeZone zone = anchor.timeZone.value_or(local);
    for (auto* date : {&item.data.startDateComponents, &item.data.dueDateComponents}) {
        if (*date)
            *date = movedAlong(**date, start, found->time, zone, local);
    }
}

void readSeries(TodoItem& item, ComponentView todo, const std::vector<ComponentView>& overrides,
                const Document& document, const TimeZone& local) {
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
    for (const Property& rule : todo.properties("EXRULE"))
        item.dates.exceptionRules.push_back(rule.value);
    std::optional<Instant> lastCompletion;
    for (const ComponentView& single : overrides) {
        const auto date = readDateProperty(single, "RECURRENCE-ID", document);
        const Completion completion = readCompletion(single, document, local);
        if (!date || !completion.isClosed)
            continue;
        item.dates.excludedTimes.push_back(localTimeIn(*anchor, *date, local));
        lastCompletion = std::max(lastCompletion, completion.date);
    }
    if (!item.data.isCompleted)
        showPresentDate(item, todo, *anchor, lastCompletion, document, local);
}

TodoItem readTodo(ComponentView todo, const std::vector<ComponentView>& overrides, const Document& document,
                  const TimeZone& local) {
    TodoItem item;
    EKReminderData& data = item.data;
    readProperties(data, todo, document, local);
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
    const auto pinned = todo.property("X-PINNED");
    data.isFlagged = pinned && pinned->value.trimmed().toUpper() == "TRUE";
    data.alarms = readAlarms(todo, document, local);
    readSeries(item, todo, overrides, document, local);
    placeAlarms(data, local);
    return item;
}

}  // namespace

std::vector<TodoItem> readTodos(const Document& document, const TimeZone& local) {
    const auto todos = document.components("VTODO");
    std::vector<TodoItem> items;
    for (ItemComponents& parts : itemsAmong(todos, [](qsizetype) { return true; })) {
        std::vector<ComponentView> changes;
        for (const qsizetype index : parts.changeIndexes)
            changes.push_back(todos[static_cast<std::size_t>(index)]);
        TodoItem item = readTodo(todos[static_cast<std::size_t>(parts.index)], changes, document, local);
        static_cast<ItemComponents&>(item) = std::move(parts);
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace kestrant::icalendar
