#include "eventkit/icalendar/ItemWriting.h"

#include <algorithm>
#include <array>

namespace kestrant::icalendar {
namespace {

constexpr std::array<QByteArrayView, 3> itemNames{"VTODO", "VEVENT", "VJOURNAL"};

bool isPartOf(const ItemComponents& item, qsizetype index) {
    return index == item.index ||
           std::find(item.changeIndexes.begin(), item.changeIndexes.end(), index) != item.changeIndexes.end();
}

}  // namespace

Property Editor::present(QByteArrayView name) const {
    return component_.view().property(name).value_or(Property{name.toByteArray(), {}, {}});
}

void Editor::setValue(QByteArrayView name, const QByteArray& value) {
    set(Property{name.toByteArray(), {}, value});
}

void Editor::setText(QByteArrayView name, const std::optional<QString>& text) {
    if (!text) {
        component_.remove(name);
        return;
    }
    Property property = present(name);
    property.removeParameter("ALTREP");
    property.value = escapedText(*text);
    set(property);
}

void Editor::setDate(QByteArrayView name, const std::optional<DateComponents>& date) {
    if (!date) {
        component_.remove(name);
        return;
    }
    Property property = present(name);
    writeDate(property, *date, document_);
    set(property);
}

void markRevision(Editor& editor, const std::optional<Instant>& creationDate, Instant now) {
    if (creationDate && !editor.has("CREATED"))
        editor.setValue("CREATED", utcText(*creationDate));
    editor.setValue("LAST-MODIFIED", utcText(now));
    editor.setValue("DTSTAMP", utcText(now));
    editor.setValue("SEQUENCE", QByteArray::number(editor.present("SEQUENCE").value.trimmed().toInt() + 1));
}

bool holdsMore(const Document& document, const ItemComponents& item) {
    qsizetype count = 0;
    for (const QByteArrayView name : itemNames)
        count += std::ssize(document.components(name));
    return count > 1 + std::ssize(item.changeIndexes);
}

void removeItem(Document& document, QByteArrayView name, const ItemComponents& item) {
    removeItems(document, [&](QByteArrayView itemName, qsizetype index) {
        return itemName == name && isPartOf(item, index);
    });
}

void keepOnlyItem(Document& document, QByteArrayView name, const ItemComponents& item) {
    removeItems(document, [&](QByteArrayView itemName, qsizetype index) {
        return itemName != name || !isPartOf(item, index);
    });
}

void removeItems(Document& document, const std::function<bool(QByteArrayView, qsizetype)>& isDoomed) {
    for (const QByteArrayView name : itemNames) {
        for (qsizetype index = std::ssize(document.components(name)) - 1; index >= 0; --index) {
            if (isDoomed(name, index))
                document.remove(name, index);
        }
    }
}

}  // namespace kestrant::icalendar
