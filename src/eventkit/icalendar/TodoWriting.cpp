#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/icalendar/Todo.h"

namespace kestrant::icalendar {
namespace {

constexpr QByteArrayView presentDateName("X-KDE-LIBKCAL-DTRECURRENCE");

void writeDates(Editor& editor, const TodoItem& item, const EKReminderData& after) {
    const bool startChanged = item.data.startDateComponents != after.startDateComponents;
    const bool dueChanged = item.data.dueDateComponents != after.dueDateComponents;
    // What was shown is a later date of the series than the one that is written: both dates move there, and
    // so they do for a new rule, which counts from what was shown.
    const bool moved = item.dates.anchor.has_value();
    if (!startChanged && !dueChanged && !(moved && item.data.recurrenceRules != after.recurrenceRules))
        return;
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
                       const TimeZone& local) {
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

}  // namespace

void writeTodo(Component& todo, const TodoItem& item, const EKReminderData& after, const Document& document,
               const TimeZone& local, Instant now) {
    Editor editor(todo, document);
    const EKReminderData& before = item.data;
    writeProperties(editor, before, after);
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
    if (after.recurrenceRules.empty() && !before.recurrenceRules.empty())
        editor.remove(presentDateName);
    if (before.alarms != after.alarms)
        writeAlarms(todo, after.alarms, after.title, document, local);
    writeRevision(editor, before, after, now);
}

void writeAdvancedTodo(Component& todo, const TodoItem& item, const CompletedOccurrence& step,
                       const Document& document, const TimeZone& local, Instant now) {
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

Document makeTodo(const QByteArray& uid, const EKReminderData& data, const TimeZone& local, Instant now) {
    Document document = Document::make();
    Component todo("VTODO", document.lineEnd().toByteArray());
    Editor editor(todo, document);
    beginItem(editor, uid, data, now);
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
                           const EKReminderData& copy, const TimeZone& local, Instant now) {
    Document document = series;
    Component todo(series.components("VTODO")[static_cast<std::size_t>(item.index)].lines());
    removeItems(document, [](QByteArrayView, qsizetype) { return true; });
    writeTodo(todo, item, copy, series, local, now);
    Editor editor(todo, series);
    for (const char* name : {"RRULE", "RDATE", "EXDATE", "EXRULE", "RECURRENCE-ID", "SEQUENCE"})
        editor.remove(name);
    editor.remove(presentDateName);
    editor.setValue("UID", uid);
    editor.append(Property{"RELATED-TO", {{"RELTYPE", "SIBLING"}}, escapedText(QString::fromUtf8(item.key))});
    document.add(todo);
    return document;
}

}  // namespace kestrant::icalendar
