#pragma once

#include "eventkit/icalendar/AlarmText.h"
#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/Document.h"
#include "eventkit/model/EKTypes.h"

#include <functional>
#include <optional>
#include <vector>

namespace kestrant::icalendar {

// Functions shared by reading reminders and reading events.

/// Which of a file's components make one item. Indexes count the file's components of one name.
struct ItemComponents {
    /// UID as it stands; empty when there is none. With a RECURRENCE-ID, and no series beside it in the file,
    /// the two joined by a slash.
    QByteArray key;
    qsizetype index = 0;
    /// The components that change single dates of its series.
    std::vector<qsizetype> changeIndexes;

    bool operator==(const ItemComponents&) const = default;
};

/// Tells the items of a file apart, in the order in which they stand in it. Components for which `isUsable`
/// fails are passed over. Where several claim one UID, a change of a single date belongs to the one of them
/// that stands before it, of the last few the nearest for which `fits(series, change)` holds.
[[nodiscard]] std::vector<ItemComponents>
itemsAmong(const std::vector<ComponentView>& components, const std::function<bool(qsizetype)>& isUsable,
           const std::function<bool(qsizetype, qsizetype)>& fits = {});

/// Absent for a property that is missing or empty.
[[nodiscard]] std::optional<QString> readText(ComponentView item, QByteArrayView name);
/// Absent for a property that is missing or no date.
[[nodiscard]] std::optional<DateComponents> readDateProperty(ComponentView item, QByteArrayView name,
                                                             const Document& document);

/// Reads the properties that reminders and events share, but for the alarms.
template <typename Data>
void readProperties(Data& data, ComponentView item, const Document& document, const TimeZone& local) {
    data.title = readText(item, "SUMMARY").value_or(QString());
    data.notes = readText(item, "DESCRIPTION");
    data.location = readText(item, "LOCATION");
    if (const auto url = item.property("URL"); url && !url->value.isEmpty())
        data.url = QString::fromUtf8(url->value);
    const auto created = item.property("CREATED");
    data.creationDate = readInstant(created ? created : item.property("DTSTAMP"), document, local);
    data.lastModifiedDate = readInstant(item.property("LAST-MODIFIED"), document, local);
    for (const Property& rule : item.properties("RRULE"))
        data.recurrenceRules.push_back(EKRecurrenceRule::parse(QString::fromUtf8(rule.value)));
}

[[nodiscard]] std::vector<EKAlarm> readAlarms(ComponentView item, const Document& document,
                                              const TimeZone& local);

/// Calls `visit(value, property)` for each value of a list of dates (RDATE, EXDATE), whatever lines it stands
/// in.
template <typename Visit>
void forEachListed(ComponentView item, QByteArrayView name, Visit visit) {
    for (const Property& property : item.properties(name)) {
        for (const QByteArray& value : property.value.split(','))
            visit(value, property);
    }
}

}  // namespace kestrant::icalendar
