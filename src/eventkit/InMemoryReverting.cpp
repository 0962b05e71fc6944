#include "eventkit/EKErrors.h"
#include "eventkit/EventChanges.h"
#include "eventkit/InMemoryChange.h"
#include "eventkit/ReminderChanges.h"

#include <algorithm>
#include <utility>

namespace kestrant {

std::optional<EKError> InMemoryEventStore::reasonNotToTakeBack(const Change& change,
                                                               const QString& identifier) {
    for (const Change::Item& item : change.items) {
        const bool isCopy = &item != &change.items.front();
        const auto found = entries_.find(isCopy ? item.identifier : identifier);
        if (item.before) {
            if (auto error = reasonNotToChange(item.before->calendarIdentifier))
                return error;
        }
        if (!item.after)
            continue;
        if (found == entries_.end()) {
            if (isCopy)
                continue;
            return itemNotFoundError();
        }
        const EKReminderData& current = *found->second;
        if (auto error = reasonNotToChange(current.calendarIdentifier))
            return error;
        if (item.before ? mergeEdits(*item.after, *item.before, current).conflict
                        : !saysTheSame(*item.after, current))
            return conflictError(current.title);
    }
    return std::nullopt;
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::takeBack(const Change& change,
                                                                 const QString& identifier) {
    if (auto error = failure(Operation::revert))
        return tl::unexpected(std::move(*error));
    if (!hasAccess())
        return tl::unexpected(accessDeniedError());
    if (auto error = reasonNotToTakeBack(change, identifier))
        return tl::unexpected(std::move(*error));
    EKSaveResult result{identifier, std::nullopt};
    const auto reverse = std::make_shared<Change>();
    for (const Change::Item& item : change.items) {
        const bool isCopy = &item != &change.items.front();
        QString name = isCopy ? item.identifier : identifier;
        const auto found = entries_.find(name);
        std::optional<EKReminderData> current;
        if (item.after && found != entries_.end())
            current = *found->second;
        std::optional<EKReminderData> restored = item.before;
        if (current && item.before) {
            restored = mergeEdits(*item.after, *item.before, *current).merged;
            restored->lastModifiedDate = clock_.now();
        }
        if (restored) {
            // What was removed comes back as something new, as it does in databases that number their items.
            if (!current)
                name = newIdentifier();
            store(name, *restored);
            restored = *entries_.at(name);
        } else if (found != entries_.end()) {
            entries_.erase(found);
            announceChange();
        }
        reverse->items.push_back({name, std::move(current), std::move(restored)});
        if (!isCopy)
            result.calendarItemIdentifier = name;
        else if (item.before)
            result.completedCopyIdentifier = name;
    }
    result.change = reverse;
    return result;
}

std::shared_ptr<const EKEventData> InMemoryEventStore::present(const EKEventData& occurrence) const {
    const auto position = positionOf(occurrence);
    return position ? series_.at(occurrence.calendarItemIdentifier)[*position] : nullptr;
}

void InMemoryEventStore::putBack(EKEventData occurrence) {
    Occurrences& occurrences = series_[occurrence.calendarItemIdentifier];
    const auto place = std::find_if(occurrences.begin(), occurrences.end(), [&](const auto& other) {
        return other->occurrenceDate >= occurrence.occurrenceDate;
    });
    auto stored = std::make_shared<const EKEventData>(std::move(occurrence));
    if (place != occurrences.end() && (*place)->occurrenceDate == stored->occurrenceDate)
        *place = std::move(stored);
    else
        occurrences.insert(place, std::move(stored));
    announceChange();
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::takeBack(const EventChange& change) {
    if (auto error = failure(Operation::revert))
        return tl::unexpected(std::move(*error));
    if (!hasAccess())
        return tl::unexpected(accessDeniedError());
    const auto reverse = std::make_shared<EventChange>();
    for (const auto& [before, after] : change.occurrences) {
        const auto current = present(after ? *after : *before);
        for (const auto& data : {before, after}) {
            if (!data)
                continue;
            if (auto error = reasonNotToChange(data->calendarIdentifier))
                return tl::unexpected(std::move(*error));
        }
        if (after && !current)
            return tl::unexpected(itemNotFoundError());
        if (!after && current)
            return tl::unexpected(conflictError(current->title));
        auto& undone = reverse->occurrences.emplace_back();
        if (current)
            undone.before = *current;
        if (!before)
            undone.after = std::nullopt;
        else if (!after)
            undone.after = *before;
        else
            undone.after = mergeEdits(*after, *before, *current).merged;
        const bool isRefused = after && (before ? mergeEdits(*after, *before, *current).conflict
                                                : mergeEdits(*current, *after, *current).merged != *current);
        if (isRefused)
            return tl::unexpected(conflictError(current->title));
    }
    for (const auto& [before, after] : reverse->occurrences) {
        if (after)
            putBack(*after);
        else
            takeOut(*before);
    }
    const auto& first = change.occurrences.front();
    return EKSaveResult{(first.after ? first.after : first.before)->calendarItemIdentifier, std::nullopt,
                        reverse};
}

void InMemoryEventStore::revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                                SaveCompletion completion) {
    if (const auto ofEvent = std::dynamic_pointer_cast<const EventChange>(change)) {
        later([this, ofEvent, completion = std::move(completion)] { completion(takeBack(*ofEvent)); });
        return;
    }
    later([this, change = std::dynamic_pointer_cast<const Change>(change), identifier,
           completion = std::move(completion)] {
        if (change)
            completion(
                attempt(identifier, [this, change, identifier] { return takeBack(*change, identifier); }));
        else
            completion(tl::unexpected(itemNotFoundError()));
    });
}

}  // namespace kestrant
