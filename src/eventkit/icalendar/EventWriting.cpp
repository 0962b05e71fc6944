#include "eventkit/icalendar/Event.h"
#include "eventkit/icalendar/ItemWriting.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant::icalendar {
namespace {

/// An instant in the form of another date: on the clock of the same zone, which is the person's own where it
/// names none. One that comes twice on that clock, and is not the first, can only be said in UTC.
DateComponents inFormOf(const DateComponents& form, Instant instant, const TimeZone& local) {
    if (!form.includesTime())
        return DateComponents::fromDate(local.dayOf(instant));
    const TimeZone zone = form.timeZone.value_or(local);
    const QDate day = zone.dayOf(instant);
    const QTime time = zone.timeOf(instant);
    if (zone.instantAt(day, time) == instant)
        return DateComponents::fromDateTime(day, time, form.timeZone);
    return TimeZone().componentsOf(instant);
}

bool haveSameForm(const DateComponents& a, const DateComponents& b) {
    return a.includesTime() == b.includesTime() && a.timeZone == b.timeZone;
}

/// Whole days from the one on which it starts to the one on which it ends, which counts when it has begun.
DateInterval wholeDays(const EKEventData& event, const TimeZone& local) {
    const QDate first = local.dayOf(event.startDate);
    QDate end = local.dayOf(event.endDate);
    if (event.endDate > local.startOfDay(end) || end == first)
        end = end.addDays(1);
    return {local.startOfDay(first), local.startOfDay(end)};
}

/// A duration that leads from the start to `end`.
QByteArray durationTo(Instant end, const EventTimes& times, const TimeZone& local) {
    const LocalTime start = localTimeOf(times.start);
    if (!times.start.includesTime())
        return durationText(start.day.daysTo(local.dayOf(end)) * 86'400);
    const auto seconds =
        std::chrono::floor<std::chrono::seconds>(end - intervalOf(times, start, {}, local).start).count();
    QByteArray text = durationText(seconds);
    // A duration in days follows the clock, which may have been changed meanwhile.
    const EventTimes written{.start = times.start, .duration = readDuration(text)};
    if (intervalOf(written, local).end != end)
        text = "PT" + QByteArray::number(seconds) + 'S';
    return text;
}

void writeTimes(Editor& editor, const std::optional<EventTimes>& present, const EKEventData& after,
                const TimeZone& local) {
    const DateInterval wanted =
        after.isAllDay ? wholeDays(after, local) : DateInterval{after.startDate, after.endDate};
    DateComponents form = DateComponents::fromDate(QDate(1970, 1, 1));
    if (!after.isAllDay)
        form = DateComponents::fromDateTime(QDate(1970, 1, 1), QTime(0, 0), after.timeZone);
    EventTimes times = present.value_or(EventTimes{});
    const bool keepsForm = present && haveSameForm(times.start, form);
    if (keepsForm && intervalOf(times, local) == wanted)
        return;
    if (!keepsForm || intervalOf(times, local).start != wanted.start) {
        times.start = inFormOf(form, wanted.start, local);
        editor.setDate("DTSTART", times.start);
    }
    const bool isOfOneKind = !times.end || times.end->includesTime() == form.includesTime();
    if (isOfOneKind && intervalOf(times, local).end == wanted.end)
        return;
    if (times.duration) {
        editor.setValue("DURATION", durationTo(wanted.end, times, local));
        return;
    }
    editor.remove("DURATION");
    if (wanted.end == wanted.start)
        editor.remove("DTEND");
    else
        editor.setDate(
            "DTEND", inFormOf(keepsForm && times.end && isOfOneKind ? *times.end : form, wanted.end, local));
}

/// A date of a series in the form of the series' own start.
Property datedLike(const EventItem& series, QByteArrayView name, const LocalTime& date,
                   const Component& component, const Document& document) {
    Property result{name.toByteArray(), {}, {}};
    if (const auto start = component.view().property("DTSTART")) {
        if (const auto zone = start->parameter("TZID"))
            result.parameters.push_back({"TZID", *zone});
    }
    const DateComponents& form = series.event.times.start;
    writeDate(result,
              form.includesTime() ? DateComponents::fromDateTime(date.day, date.time, form.timeZone)
                                  : DateComponents::fromDate(date.day),
              document);
    return result;
}

Component componentOf(const EventItem& series, const Document& document) {
    return Component(document.components("VEVENT")[static_cast<std::size_t>(series.index)].lines());
}

void removeRepetition(Editor& editor) {
    for (const char* name : {"RRULE", "RDATE", "EXDATE", "EXRULE"})
        editor.remove(name);
}

}  // namespace

void writeEvent(Component& event, const std::optional<EventTimes>& times, const EKEventData& before,
                const EKEventData& after, const Document& document, const TimeZone& local, Instant now) {
    Editor editor(event, document);
    writeProperties(editor, before, after);
    writeTimes(editor, times, after, local);
    writeRules(editor, before, after);
    if (before.alarms != after.alarms)
        writeAlarms(event, after.alarms, after.title, document, local);
    writeRevision(editor, before, after, now);
}

Document makeEvent(const QByteArray& uid, const EKEventData& data, const TimeZone& local, Instant now) {
    Document document = Document::make();
    Component event("VEVENT", document.lineEnd().toByteArray());
    Editor editor(event, document);
    beginItem(editor, uid, data, now);
    EKEventData empty;
    empty.title = data.title;
    empty.creationDate = data.creationDate;
    writeEvent(event, std::nullopt, empty, data, document, local, now);
    editor.remove("SEQUENCE");
    document.add(event);
    return document;
}

Component makeChange(const EventItem& series, const LocalTime& date, const std::optional<std::size_t>& source,
                     const Document& document) {
    const Component whole = componentOf(series, document);
    Component change =
        source
            ? Component(document.components("VEVENT")[static_cast<std::size_t>(series.changeIndexes[*source])]
                            .lines())
            : whole;
    Editor editor(change, document);
    editor.remove("RECURRENCE-ID");
    editor.append(datedLike(series, "RECURRENCE-ID", date, whole, document));
    removeRepetition(editor);
    return change;
}

Document makeSeparateEvent(const QByteArray& uid, Component occurrence, Document document) {
    Editor editor(occurrence, document);
    removeRepetition(editor);
    if (!editor.has("DTSTART")) {
        // It starts when its series says.
        Property start = editor.present("RECURRENCE-ID");
        start.name = "DTSTART";
        start.removeParameter("RANGE");
        editor.set(start);
    }
    editor.remove("RECURRENCE-ID");
    editor.remove("SEQUENCE");
    editor.setValue("UID", uid);
    removeItems(document, [](QByteArrayView, qsizetype) { return true; });
    document.add(occurrence);
    return document;
}

void excludeDate(Document& document, const EventItem& series, const LocalTime& date,
                 const std::optional<std::size_t>& change, Instant now) {
    Component component = componentOf(series, document);
    Editor editor(component, document);
    editor.append(datedLike(series, "EXDATE", date, component, document));
    markRevision(editor, series.event.data.creationDate, now);
    document.replace(series.index, component);
    if (change)
        document.remove("VEVENT", series.changeIndexes[*change]);
}

}  // namespace kestrant::icalendar
