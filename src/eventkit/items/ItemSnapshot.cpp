#include "eventkit/items/ItemSnapshot.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

FileLocation locationOf(const Entry& entry) {
    return {QFile::encodeName(entry.data->calendarIdentifier), entry.file};
}

FileLocation locationOf(const EventEntry& entry) {
    return {QFile::encodeName(entry.event.calendarIdentifier()), entry.file};
}

QString identifierByLocation(const QString& identifier, const FileLocation& location, int ordinal) {
    QString result = identifier + QLatin1Char('#') + QFile::decodeName(location.collection) +
                     QLatin1Char('/') + QFile::decodeName(location.file);
    result.replace(QLatin1Char('%'), QLatin1String("%25")).replace(QLatin1Char('/'), QLatin1String("%2F"));
    if (ordinal > 0)
        result += QStringLiteral("#%1").arg(ordinal + 1);
    return result;
}

std::shared_ptr<const EKEventData> Snapshot::event(const QString& identifier,
                                                   const std::optional<Instant>& occurrenceDate) const {
    const EventEntry* const entry = events.find(identifier);
    return entry ? entry->event.occurrence(occurrenceDate) : nullptr;
}

std::shared_ptr<const EKEventData> Snapshot::firstEvent(const QString& identifier) const {
    const EventEntry* const entry = events.find(identifier);
    return entry ? entry->event.first() : nullptr;
}

std::optional<EKCalendar> Snapshot::calendar(const QString& identifier) const {
    const auto found = std::find_if(calendars.begin(), calendars.end(), [&](const EKCalendar& calendar) {
        return calendar.calendarIdentifier == identifier;
    });
    return found == calendars.end() ? std::nullopt : std::optional(*found);
}

}  // namespace kestrant::items
