#include "eventkit/icalendar/AlarmText.h"
#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/icalendar/Todo.h"

#include <algorithm>
#include <set>

namespace kestrant::icalendar {
namespace {

constexpr QByteArrayView presentDateName("X-KDE-LIBKCAL-DTRECURRENCE");

/// Replaces single properties of one component.
class Editor {
  public:
    Editor(Component& component, const Document& document) : component_(component), document_(document) {}

    /// The property as it is, or a new one.
    [[nodiscard]] Property present(QByteArrayView name) const {
        return component_.view().property(name).value_or(Property{name.toByteArray(), {}, {}});
    }
    void set(const Property& property) { component_.set(property, document_.lineEnd()); }
    void setValue(QByteArrayView name, const QByteArray& value) {
        set(Property{name.toByteArray(), {}, value});
    }
    void setText(QByteArrayView name, const std::optional<QString>& text) {
        if (!text) {
            component_.remove(name);
            return;
        }
        Property property = present(name);
        property.removeParameter("ALTREP");
        property.value = escapedText(*text);
        set(property);
    }
    void setDate(QByteArrayView name, const std::optional<DateComponents>& date) {
        if (!date) {
            component_.remove(name);
            return;
        }
        Property property = present(name);
        writeDate(property, *date, document_);
        set(property);
    }
    void remove(QByteArrayView name) { component_.remove(name); }
    void append(const Property& property) { component_.append(property, document_.lineEnd()); }
    [[nodiscard]] bool has(QByteArrayView name) const { return component_.view().property(name).has_value(); }

  private:
    Component& component_;
    const Document& document_;
};

void writeDates(Editor& editor, const TodoItem& item, const EKReminderData& after) {
    const bool startChanged = item.data.startDateComponents != after.startDateComponents;
    const bool dueChanged = item.data.dueDateComponents != after.dueDateComponents;
    if (!startChanged && !dueChanged)
        return;
    // What was shown is a later date of the series than the one that is written: both dates move there.
    const bool moved = item.dates.anchor.has_value();
    const bool hadDuration = editor.has("DURATION");
    editor.remove("DURATION");
    editor.remove(presentDateName);
    if (startChanged || moved)
        editor.setDate("DTSTART", after.startDateComponents);
    if (dueChanged || moved || hadDuration)
        editor.setDate("DUE", after.dueDateComponents);
}

void writeCompletion(Editor& editor, const EKReminderData& before, const EKReminderData& after) {
    if (before.isCompleted == after.isCompleted && before.completionDate == after.completionDate)
        return;
    if (!after.isCompleted) {
        editor.setValue("STATUS", "NEEDS-ACTION");
        editor.remove("COMPLETED");
        editor.remove("PERCENT-COMPLETE");
        return;
    }
    editor.setValue("STATUS", "COMPLETED");
    if (after.completionDate)
        editor.setValue("COMPLETED", utcText(*after.completionDate));
    editor.setValue("PERCENT-COMPLETE", "100");
}

void writeRules(Editor& editor, const EKReminderData& before, const EKReminderData& after) {
    if (before.recurrenceRules == after.recurrenceRules)
        return;
    editor.remove("RRULE");
    for (const EKRecurrenceRule& rule : after.recurrenceRules)
        editor.append(Property{"RRULE", {}, rule.text.toUtf8()});
    if (after.recurrenceRules.empty()) {
        for (const QByteArrayView name : {QByteArrayView("RDATE"), QByteArrayView("EXDATE"), presentDateName})
            editor.remove(name);
    }
}

/// The marks of a new revision (RFC 5545, 3.8.7).
void writeRevision(Editor& editor, const EKReminderData& before, Instant now) {
    if (before.creationDate && !editor.has("CREATED"))
        editor.setValue("CREATED", utcText(*before.creationDate));
    editor.setValue("LAST-MODIFIED", utcText(now));
    editor.setValue("DTSTAMP", utcText(now));
    editor.setValue("SEQUENCE", QByteArray::number(editor.present("SEQUENCE").value.trimmed().toInt() + 1));
}

/// Writes the present date of a series that goes on counting from where it did.
void writePresentDate(Component& todo, const TodoItem& item, const EKReminderData& after,
                      const Document& document) {
    Editor editor(todo, document);
    Property present{presentDateName.toByteArray(), {}, {}};
    if (const auto date = seriesAnchor(after)) {
        // Written as the series' own date is, with its name for the zone.
        const Property own = editor.present(item.data.startDateComponents ? "DTSTART" : "DUE");
        present.parameters = own.parameters;
        writeDate(present, *date, document);
        editor.set(present);
    }
}

/// Takes the extra dates out that a series has passed.
void removePassedDates(Component& todo, const EKReminderData& after, const Document& document,
                       const ZoneCalendar& local) {
    const auto present = seriesAnchor(after);
    const auto now = present ? local.instantFrom(*present) : std::nullopt;
    if (!now)
        return;
    const auto lines = todo.view().properties("RDATE");
    if (lines.empty())
        return;
    todo.remove("RDATE");
    for (Property property : lines) {
        QByteArrayList left;
        for (const QByteArray& value : property.value.split(',')) {
            const auto date = readDate(value.split('/').front(), property, document);
            const auto instant = date ? local.instantFrom(*date) : std::nullopt;
            if (!instant || *instant > *now)
                left.append(value);
        }
        if (left.isEmpty())
            continue;
        property.value = left.join(',');
        todo.append(property, document.lineEnd());
    }
}

void removeAll(Document& document, QByteArrayView kind) {
    for (auto count = static_cast<qsizetype>(document.components(kind).size()); count > 0; --count)
        document.remove(kind, count - 1);
}

/// The positions of a reminder and of what changes single dates of its series.
std::set<qsizetype> partsOf(const Document& document, const TodoItem& item) {
    std::set<qsizetype> result{item.index};
    const auto todos = document.components("VTODO");
    if (todos[static_cast<std::size_t>(item.index)].property("RECURRENCE-ID"))
        return result;
    for (std::size_t i = 0; i < todos.size(); ++i) {
        const auto uid = todos[i].property("UID");
        if (uid && uid->value.trimmed() == item.key && todos[i].property("RECURRENCE-ID"))
            result.insert(static_cast<qsizetype>(i));
    }
    return result;
}

}  // namespace

void writeTodo(Component& todo, const TodoItem& item, const EKReminderData& after, const Document& document,
               const ZoneCalendar& local, Instant now) {
    Editor editor(todo, document);
    const EKReminderData& before = item.data;
    if (before.title != after.title)
        editor.setText("SUMMARY", after.title);
    if (before.notes != after.notes)
        editor.setText("DESCRIPTION", after.notes);
    if (before.location != after.location)
        editor.setText("LOCATION", after.location);
    if (before.url != after.url) {
        if (after.url)
            editor.setValue("URL",
                            QString(*after.url).remove(QLatin1Char('\n')).remove(QLatin1Char('\r')).toUtf8());
        else
            editor.remove("URL");
    }
    if (before.priority != after.priority) {
        if (after.priority > 0)
            editor.setValue("PRIORITY", QByteArray::number(after.priority));
        else
            editor.remove("PRIORITY");
    }
    if (before.isFlagged != after.isFlagged) {
        // In small letters, because some programs compare letter by letter.
        if (after.isFlagged)
            editor.setValue("X-PINNED", "true");
        else
            editor.remove("X-PINNED");
    }
    writeDates(editor, item, after);
    writeCompletion(editor, before, after);
    writeRules(editor, before, after);
    if (before.alarms != after.alarms)
        writeAlarms(todo, after.alarms, after, document, local);
    writeRevision(editor, before, now);
    if (before.creationDate != after.creationDate && after.creationDate)
        editor.setValue("CREATED", utcText(*after.creationDate));
}

void writeAdvancedTodo(Component& todo, const TodoItem& item, const CompletedOccurrence& step,
                       const Document& document, const ZoneCalendar& local, Instant now) {
    EKReminderData after = step.series;
    if (step.keepsAnchor) {
        after.startDateComponents = item.data.startDateComponents;
        after.dueDateComponents = item.data.dueDateComponents;
    }
    writeTodo(todo, item, after, document, local, now);
    if (step.keepsAnchor)
        writePresentDate(todo, item, step.series, document);
    else
        removePassedDates(todo, after, document, local);
}

Document makeTodo(const QByteArray& uid, const EKReminderData& data, const ZoneCalendar& local, Instant now) {
    Document document = Document::make();
    Component todo("VTODO", document.lineEnd().toByteArray());
    Editor editor(todo, document);
    editor.setValue("UID", uid);
    editor.setValue("DTSTAMP", utcText(now));
    editor.setValue("CREATED", utcText(data.creationDate.value_or(now)));
    editor.setValue("SUMMARY", escapedText(data.title));
    editor.setValue("STATUS", "NEEDS-ACTION");
    TodoItem empty;
    empty.data.title = data.title;
    empty.data.creationDate = data.creationDate;
    writeTodo(todo, empty, data, document, local, now);
    editor.remove("SEQUENCE");
    document.add(todo);
    return document;
}

Document makeCompletedCopy(const QByteArray& uid, const Document& series, const TodoItem& item,
                           const EKReminderData& copy, const ZoneCalendar& local, Instant now) {
    Document document = series;
    Component todo(series.components("VTODO")[static_cast<std::size_t>(item.index)].lines());
    for (const char* kind : {"VTODO", "VEVENT", "VJOURNAL"})
        removeAll(document, kind);
    writeTodo(todo, item, copy, series, local, now);
    Editor editor(todo, series);
    for (const char* name : {"RRULE", "RDATE", "EXDATE", "RECURRENCE-ID", "SEQUENCE"})
        editor.remove(name);
    editor.remove(presentDateName);
    editor.setValue("UID", uid);
    editor.append(Property{"RELATED-TO", {{"RELTYPE", "SIBLING"}}, item.key});
    document.add(todo);
    return document;
}

void removeTodo(Document& document, const TodoItem& item) {
    const auto parts = partsOf(document, item);
    for (auto index = parts.rbegin(); index != parts.rend(); ++index)
        document.remove("VTODO", *index);
}

void keepOnlyTodo(Document& document, const TodoItem& item) {
    const std::set<qsizetype> parts = partsOf(document, item);
    for (auto index = static_cast<qsizetype>(document.components("VTODO").size()) - 1; index >= 0; --index) {
        if (!parts.contains(index))
            document.remove("VTODO", index);
    }
    for (const char* kind : {"VEVENT", "VJOURNAL"})
        removeAll(document, kind);
}

void addMissingTimeZones(Document& document, int year) {
    std::set<QByteArray> defined;
    for (const ComponentView& definition : document.components("VTIMEZONE")) {
        if (const auto identifier = definition.property("TZID"))
            defined.insert(identifier->value);
    }
    std::set<QByteArray> used;
    for (const char* kind : {"VTODO", "VEVENT"}) {
        for (const ComponentView& item : document.components(kind)) {
            for (const Line& line : item.lines()) {
                if (!line.content().contains("TZID="))
                    continue;
                if (const auto zone = Property::parse(line.content()).parameter("TZID"))
                    used.insert(*zone);
            }
        }
    }
    for (const QByteArray& zone : used) {
        if (defined.contains(zone))
            continue;
        if (const auto definition = timeZoneDefinition(zone, year, document.lineEnd()))
            document.add(*definition, Document::Place::first);
    }
}

}  // namespace kestrant::icalendar
