#include "eventkit/EKErrors.h"
#include "eventkit/InMemoryChange.h"
#include "eventkit/ReminderChanges.h"

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

void InMemoryEventStore::revert(const std::shared_ptr<const EKReminderChange>& change,
                                const QString& identifier, SaveCompletion completion) {
    later([this, change = std::dynamic_pointer_cast<const Change>(change), identifier,
           completion = std::move(completion)] {
        if (change)
            completion(attempt(identifier, [this, change, identifier] { return takeBack(*change, identifier); }));
        else
            completion(tl::unexpected(itemNotFoundError()));
    });
}

}  // namespace kestrant
