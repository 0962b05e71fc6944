#include "eventkit/items/ItemSnapshot.h"

#include "eventkit/EventChanges.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

Place placeOf(const Entry& entry) {
    return {QFile::encodeName(entry.data->calendarIdentifier), entry.file};
}

Place placeOf(const EventEntry& entry) {
    return {QFile::encodeName(entry.event.calendarIdentifier()), entry.file};
}

QString identifierByPlace(const QString& identifier, const Place& place, int ordinal) {
    QString result = identifier + QLatin1Char('#') + QFile::decodeName(place.collection) + QLatin1Char('/') +
                     QFile::decodeName(place.file);
    if (ordinal > 0)
        result += QStringLiteral("#%1").arg(ordinal + 1);
    return result;
}

std::vector<std::shared_ptr<const EKEventData>>
Snapshot::eventsMatching(const EKEventPredicate& predicate) const {
    std::vector<std::shared_ptr<const EKEventData>> result;
    const auto add = [&](const std::shared_ptr<const EKEventData>& data) {
        if (matches(predicate, *data))
            result.push_back(data);
    };
    singleEvents.forEachTouching(predicate.start, predicate.end, add);
    ruledEvents.forEachTouching(
        predicate.start, predicate.end, [&](const std::shared_ptr<const EventSeries>& series) {
            if (!predicate.calendars || std::find(predicate.calendars->begin(), predicate.calendars->end(),
                                                  series->calendarIdentifier()) != predicate.calendars->end())
                series->forEachRuled(predicate.start, predicate.end, add);
        });
    return result;
}

std::shared_ptr<const EKEventData> Snapshot::event(const QString& identifier,
                                                   const std::optional<Instant>& occurrenceDate) const {
    const auto entry = events.constFind(identifier);
    return entry == events.cend() ? nullptr : entry->event.occurrence(occurrenceDate);
}

std::shared_ptr<const EKEventData> Snapshot::firstEvent(const QString& identifier) const {
    const auto entry = events.constFind(identifier);
    return entry == events.cend() ? nullptr : entry->event.first();
}

std::optional<EKCalendar> Snapshot::calendar(const QString& identifier) const {
    const auto found = std::find_if(calendars.begin(), calendars.end(), [&](const EKCalendar& calendar) {
        return calendar.calendarIdentifier == identifier;
    });
    return found == calendars.end() ? std::nullopt : std::optional(*found);
}

}  // namespace kestrant::items
