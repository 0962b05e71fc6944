#pragma once

#include "eventkit/icalendar/AlarmText.h"
#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/ItemReading.h"
#include "eventkit/model/EKTypes.h"

#include <functional>
#include <optional>

namespace kestrant::icalendar {

// Functions shared by writing reminders and writing events.

/// Replaces single properties of one component of a file.
class Editor {
  public:
    Editor(Component& component, const Document& document) : component_(component), document_(document) {}

    /// The property as it is, or a new one.
    [[nodiscard]] Property present(QByteArrayView name) const;
    [[nodiscard]] bool has(QByteArrayView name) const { return component_.view().property(name).has_value(); }

    void set(const Property& property) { component_.set(property, document_.lineEnd()); }
    void setValue(QByteArrayView name, const QByteArray& value);
    /// An absent text or date removes the property; parameters stay.
    void setText(QByteArrayView name, const std::optional<QString>& text);
    void setDate(QByteArrayView name, const std::optional<DateComponents>& date);
    void append(const Property& property) { component_.append(property, document_.lineEnd()); }
    void remove(QByteArrayView name) { component_.remove(name); }

  private:
    Component& component_;
    const Document& document_;
};

/// Writes what differs among the properties that reminders and events share, but for rules, alarms and dates.
template <typename Data>
void writeProperties(Editor& editor, const Data& before, const Data& after) {
    if (before.title != after.title)
        editor.setText("SUMMARY", after.title);
    if (before.notes != after.notes)
        editor.setText("DESCRIPTION", after.notes);
    if (before.location != after.location)
        editor.setText("LOCATION", after.location);
    if (before.url == after.url)
        return;
    if (after.url)
        editor.setValue("URL",
                        QString(*after.url).remove(QLatin1Char('\n')).remove(QLatin1Char('\r')).toUtf8());
    else
        editor.remove("URL");
}

/// Without rules there are no extra and no excluded dates either.
template <typename Data>
void writeRules(Editor& editor, const Data& before, const Data& after) {
    if (before.recurrenceRules == after.recurrenceRules)
        return;
    editor.remove("RRULE");
    for (const EKRecurrenceRule& rule : after.recurrenceRules)
        editor.append(Property{"RRULE", {}, rule.text.toUtf8()});
    if (after.recurrenceRules.empty()) {
        editor.remove("RDATE");
        editor.remove("EXDATE");
    }
}

/// The marks of a new revision (RFC 5545, 3.8.7).
void markRevision(Editor& editor, const std::optional<Instant>& creationDate, Instant now);

template <typename Data>
void writeRevision(Editor& editor, const Data& before, const Data& after, Instant now) {
    markRevision(editor, before.creationDate, now);
    if (before.creationDate != after.creationDate && after.creationDate)
        editor.setValue("CREATED", utcText(*after.creationDate));
}

/// The first lines of a new item.
template <typename Data>
void beginItem(Editor& editor, const QByteArray& uid, const Data& data, Instant now) {
    editor.setValue("UID", uid);
    editor.setValue("DTSTAMP", utcText(now));
    editor.setValue("CREATED", utcText(data.creationDate.value_or(now)));
    editor.setValue("SUMMARY", escapedText(data.title));
}

/// Whether a file holds reminders, events or journal entries besides this item.
[[nodiscard]] bool holdsMore(const Document& document, const ItemComponents& item);
/// Takes an item, whose components have this name, out of a file, or everything but the item.
void removeItem(Document& document, QByteArrayView name, const ItemComponents& item);
void keepOnlyItem(Document& document, QByteArrayView name, const ItemComponents& item);
/// Takes out the reminders, events and journal entries for which `isDoomed(name, index)` holds.
void removeItems(Document& document, const std::function<bool(QByteArrayView, qsizetype)>& isDoomed);

}  // namespace kestrant::icalendar
