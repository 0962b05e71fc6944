#include "eventkit/EKErrors.h"
#include "eventkit/EventChanges.h"
#include "eventkit/EventSeries.h"
#include "eventkit/InMemoryChange.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

constexpr Duration followedFor = std::chrono::days(5 * 365);

}  // namespace

std::optional<EKCalendar> InMemoryEventStore::defaultCalendarForNewEvents() const {
    if (defaultForNewEvents_)
        return calendarWithIdentifier(*defaultForNewEvents_);
    const auto found = calendars(EKEntityType::event);
    const auto first = std::find_if(found.begin(), found.end(),
                                    [](const EKCalendar& list) { return list.allowsContentModifications; });
    return first == found.end() ? std::nullopt : std::optional(*first);
}

void InMemoryEventStore::events(const EKEventPredicate& matching, EventsCompletion completion) {
    EKEvents result;
    if (hasAccess()) {
        for (const auto& [identifier, occurrences] : series_) {
            for (const auto& occurrence : occurrences) {
                if (matches(matching, *occurrence))
                    result.events.push_back(occurrence);
            }
        }
    }
    later([completion = std::move(completion), result = std::move(result)]() mutable {
        completion(std::move(result));
    });
}

EKEventRef InMemoryEventStore::event(const QString& withIdentifier) {
    if (!hasAccess())
        return nullptr;
    const auto found = std::find_if(series_.begin(), series_.end(), [&](const auto& entry) {
        return entry.second.front()->eventIdentifier == withIdentifier;
    });
    if (found == series_.end())
        return nullptr;
    return std::make_shared<EKEvent>(found->second.front());
}

std::optional<std::size_t> InMemoryEventStore::positionOf(const EKEventData& base) const {
    const auto found = series_.find(base.calendarItemIdentifier);
    if (found == series_.end())
        return std::nullopt;
    const auto& occurrences = found->second;
    const auto position = std::find_if(occurrences.begin(), occurrences.end(), [&](const auto& occurrence) {
        return occurrence->occurrenceDate == base.occurrenceDate;
    });
    if (position == occurrences.end())
        return std::nullopt;
    return static_cast<std::size_t>(position - occurrences.begin());
}

tl::expected<EKSaveResult, EKError>
InMemoryEventStore::carryOut(const EKEventRef& event, EKEventData edited,
                             const std::shared_ptr<const EKEventData>& base) {
    if (auto error = failure(Operation::save))
        return tl::unexpected(std::move(*error));
    if (!hasAccess())
        return tl::unexpected(accessDeniedError());
    if (!base)
        return addEvent(event, std::move(edited));
    const auto position = positionOf(*base);
    if (!position)
        return tl::unexpected(itemNotFoundError());
    EKSaveResult result{base->calendarItemIdentifier, std::nullopt, nullptr};
    auto& stored = series_.at(base->calendarItemIdentifier)[*position];
    MergedEventEdits merge = mergeEdits(*base, edited, *stored);
    if (merge.conflict)
        return tl::unexpected(conflictError(stored->title));
    if (merge.merged != *stored) {
        for (const QString& calendar : {stored->calendarIdentifier, merge.merged.calendarIdentifier}) {
            if (auto error = reasonNotToChange(calendar))
                return tl::unexpected(std::move(*error));
        }
        if (auto error = invalidReason(*stored, merge.merged))
            return tl::unexpected(std::move(*error));
        const bool leaves =
            stored->occurrenceDate && merge.merged.calendarIdentifier != stored->calendarIdentifier;
        EKEventData prepared = preparedForSave(*stored, std::move(merge.merged), clock_.now());
        if (leaves) {
            const auto former = stored;
            takeOut(*base);
            return storedAs(event, putEvent(separated(std::move(prepared))), former);
        }
        result.change =
            std::make_shared<EventChange>(std::vector<EventChange::Occurrence>{{*stored, prepared}});
        stored = std::make_shared<const EKEventData>(std::move(prepared));
        announceChange();
    }
    event->setStored(stored);
    return result;
}

EKSaveResult InMemoryEventStore::storedAs(const EKEventRef& event, const QString& identifier,
                                          const std::shared_ptr<const EKEventData>& former) const {
    const Occurrences& made = series_.at(identifier);
    event->setStored(made.front());
    std::vector<EventChange::Occurrence> changed;
    for (const auto& occurrence : made)
        changed.push_back({std::nullopt, *occurrence});
    if (former)
        changed.push_back({*former, std::nullopt});
    return {identifier, std::nullopt, std::make_shared<EventChange>(std::move(changed))};
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::addEvent(const EKEventRef& event,
                                                                 EKEventData edited) {
    if (edited.calendarIdentifier.isEmpty()) {
        const auto standard = defaultCalendarForNewEvents();
        edited.calendarIdentifier =
            standard
                ? standard->calendarIdentifier
                : putCalendar({.title = newCalendarTitle, .allowsReminders = false, .allowsEvents = true});
    }
    if (auto error = reasonNotToChange(edited.calendarIdentifier))
        return tl::unexpected(std::move(*error));
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    edited.calendarItemIdentifier.clear();
    edited.eventIdentifier.clear();
    const EKEventData prepared = preparedForSave(std::nullopt, std::move(edited), clock_.now());
    if (!prepared.hasRecurrenceRules())
        return storedAs(event, putEvent(prepared), nullptr);
    const ZoneCalendar local = calendar_.calendar();
    const auto document = icalendar::makeEvent("series", prepared, local, clock_.now());
    const EventSeries series(icalendar::readEvents(document, local).front(), {}, prepared.calendarIdentifier,
                             local);
    std::vector<EKEventData> occurrences;
    series.forEachRecurring({prepared.startDate, prepared.startDate + followedFor, prepared.startDate},
                            [&](const EventSeries::Date& date) {
                                occurrences.push_back(*series.dataOf(date));
                                return true;
                            });
    return storedAs(event, putSeries(std::move(occurrences)), nullptr);
}

void InMemoryEventStore::takeOut(const EKEventData& occurrence) {
    const auto entry = series_.find(occurrence.calendarItemIdentifier);
    auto& occurrences = entry->second;
    occurrences.erase(occurrences.begin() + static_cast<std::ptrdiff_t>(*positionOf(occurrence)));
    if (occurrences.empty())
        series_.erase(entry);
    announceChange();
}

void InMemoryEventStore::save(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    later([this, event, edited = event->data, base = event->stored(), completion = std::move(completion)] {
        completion(carryOut(event, edited, base));
    });
}

std::optional<EKError>
InMemoryEventStore::reasonNotToRemove(const std::shared_ptr<const EKEventData>& base) const {
    if (auto error = failure(Operation::remove))
        return error;
    if (!hasAccess())
        return accessDeniedError();
    const auto position = base ? positionOf(*base) : std::nullopt;
    if (!position)
        return itemNotFoundError();
    return reasonNotToChange(series_.at(base->calendarItemIdentifier)[*position]->calendarIdentifier);
}

void InMemoryEventStore::remove(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    later([this, base = event->stored(), completion = std::move(completion)] {
        if (auto error = reasonNotToRemove(base)) {
            completion(tl::unexpected(std::move(*error)));
            return;
        }
        const EKEventData gone = *present(*base);
        takeOut(gone);
        completion(EKSaveResult{
            base->calendarItemIdentifier, std::nullopt,
            std::make_shared<EventChange>(std::vector<EventChange::Occurrence>{{gone, std::nullopt}})});
    });
}

QString InMemoryEventStore::putEvent(EKEventData data) {
    data.occurrenceDate.reset();
    return putOccurrences({std::move(data)});
}

QString InMemoryEventStore::putSeries(std::vector<EKEventData> occurrences) {
    for (EKEventData& occurrence : occurrences) {
        if (!occurrence.occurrenceDate)
            occurrence.occurrenceDate = occurrence.startDate;
        occurrence.recurrenceRules = occurrences.front().recurrenceRules;
    }
    return putOccurrences(std::move(occurrences));
}

QString InMemoryEventStore::putOccurrences(std::vector<EKEventData> occurrences) {
    QString identifier = occurrences.front().calendarItemIdentifier;
    if (identifier.isEmpty())
        identifier = QStringLiteral("memory-%1").arg(nextIdentifier_++);
    QString eventIdentifier = occurrences.front().eventIdentifier;
    if (eventIdentifier.isEmpty())
        eventIdentifier = identifier;
    Occurrences series;
    for (EKEventData& occurrence : occurrences) {
        occurrence.calendarItemIdentifier = identifier;
        occurrence.eventIdentifier = eventIdentifier;
        series.push_back(std::make_shared<const EKEventData>(std::move(occurrence)));
    }
    series_[identifier] = std::move(series);
    announceChange();
    return identifier;
}

void InMemoryEventStore::dropEvent(const QString& identifier) {
    if (series_.erase(identifier) > 0)
        announceChange();
}

std::vector<EKEventData> InMemoryEventStore::allEvents() const {
    std::vector<EKEventData> result;
    for (const auto& [identifier, occurrences] : series_) {
        for (const auto& occurrence : occurrences)
            result.push_back(*occurrence);
    }
    return result;
}

}  // namespace kestrant
