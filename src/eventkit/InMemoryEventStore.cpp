#include "eventkit/InMemoryEventStore.h"

#include "eventkit/EKErrors.h"
#include "eventkit/InMemoryChange.h"
#include "eventkit/ReminderAlarms.h"
#include "eventkit/ReminderChanges.h"
#include "eventkit/ReminderSeries.h"

#include <algorithm>
#include <utility>

namespace kestrant {

/// What was asked for, as it stood at that moment.
struct InMemoryEventStore::SaveRequest {
    EKReminderRef reminder;
    EKReminderData edited;
    std::shared_ptr<const EKReminderData> base;
};

InMemoryEventStore::InMemoryEventStore(Scheduler& scheduler, const Clock& clock,
                                       const CurrentCalendar& calendar)
    : scheduler_(scheduler)
    , clock_(clock)
    , calendar_(calendar) {}

InMemoryEventStore::~InMemoryEventStore() = default;

void InMemoryEventStore::later(std::function<void()> work) {
    scheduler_.post([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (!weak.expired())
            work();
    });
}

void InMemoryEventStore::announceChange() {
    if (std::exchange(changeAnnounced_, true))
        return;
    later([this] {
        changeAnnounced_ = false;
        observers_.notify();
    });
}

bool InMemoryEventStore::hasAccess() const {
    return status_ == EKAuthorizationStatus::fullAccess;
}

std::optional<EKError> InMemoryEventStore::failure(Operation operation) const {
    const auto found = failures_.find(operation);
    return found == failures_.end() ? std::nullopt : std::optional(found->second);
}

EKAuthorizationStatus InMemoryEventStore::authorizationStatus(EKEntityType) const {
    return status_;
}

void InMemoryEventStore::requestFullAccessToReminders(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void InMemoryEventStore::requestFullAccessToEvents(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void InMemoryEventStore::requestAccess(AccessCompletion completion) {
    later([this, completion = std::move(completion)] {
        if (auto error = failure(Operation::requestAccess)) {
            completion(false, std::move(error));
            return;
        }
        if (status_ == EKAuthorizationStatus::notDetermined) {
            status_ = EKAuthorizationStatus::fullAccess;
            announceChange();
        }
        completion(hasAccess(), std::nullopt);
    });
}

std::vector<EKCalendar> InMemoryEventStore::calendars(EKEntityType type) const {
    std::vector<EKCalendar> result;
    if (!hasAccess())
        return result;
    std::copy_if(calendars_.begin(), calendars_.end(), std::back_inserter(result),
                 [&](const EKCalendar& calendar) {
                     return type == EKEntityType::reminder ? calendar.allowsReminders : calendar.allowsEvents;
                 });
    return result;
}

std::optional<EKCalendar> InMemoryEventStore::calendarWithIdentifier(const QString& identifier) const {
    if (!hasAccess())
        return std::nullopt;
    const auto found = std::find_if(calendars_.begin(), calendars_.end(), [&](const EKCalendar& calendar) {
        return calendar.calendarIdentifier == identifier;
    });
    return found == calendars_.end() ? std::nullopt : std::optional(*found);
}

std::optional<EKCalendar> InMemoryEventStore::defaultCalendarForNewReminders() const {
    const auto lists = calendars(EKEntityType::reminder);
    const auto found = std::find_if(lists.begin(), lists.end(),
                                    [](const EKCalendar& list) { return list.allowsContentModifications; });
    return found == lists.end() ? std::nullopt : std::optional(*found);
}

void InMemoryEventStore::fetchReminders(const EKPredicate& matching, FetchCompletion completion) {
    EKReminders result;
    if (hasAccess()) {
        const ZoneCalendar local = calendar_.calendar();
        for (const auto& [identifier, entry] : entries_) {
            if (matches(matching, *entry, local))
                result.push_back(entry);
        }
    }
    later([completion = std::move(completion), result = std::move(result)]() mutable {
        completion(std::move(result));
    });
}

EKReminderRef InMemoryEventStore::calendarItem(const QString& withIdentifier) {
    auto stored = storedReminder(withIdentifier);
    return stored ? std::make_shared<EKReminder>(*this, std::move(stored)) : nullptr;
}

std::shared_ptr<const EKReminderData> InMemoryEventStore::storedReminder(const QString& identifier) const {
    const auto found = entries_.find(identifier);
    if (!hasAccess() || found == entries_.end())
        return nullptr;
    return found->second;
}

std::optional<EKError> InMemoryEventStore::reasonNotToChange(const QString& calendarIdentifier) const {
    if (!hasAccess())
        return accessDeniedError();
    const auto calendar = calendarWithIdentifier(calendarIdentifier);
    if (!calendar)
        return calendarNotFoundError();
    if (!calendar->allowsContentModifications)
        return readOnlyError(calendar->title);
    return std::nullopt;
}

void InMemoryEventStore::store(const QString& identifier, EKReminderData data) {
    data.calendarItemIdentifier = identifier;
    placeAlarms(data, calendar_.calendar());
    entries_[identifier] = std::make_shared<const EKReminderData>(std::move(data));
    announceChange();
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::carryOut(const SaveRequest& request) {
    if (auto error = failure(Operation::save))
        return tl::unexpected(std::move(*error));
    if (!hasAccess())
        return tl::unexpected(accessDeniedError());
    EKReminderData wanted = request.edited;
    std::optional<EKReminderData> before;
    QString identifier;
    if (request.base) {
        identifier = request.base->calendarItemIdentifier;
        const auto found = entries_.find(identifier);
        if (found == entries_.end())
            return tl::unexpected(itemNotFoundError());
        before = *found->second;
        MergedEdits merge = mergeEdits(*request.base, request.edited, *before);
        if (merge.conflict)
            return tl::unexpected(conflictError(before->title));
        wanted = std::move(merge.merged);
        if (wanted == *before)
            return EKSaveResult{identifier, std::nullopt};
        if (auto error = reasonNotToChange(before->calendarIdentifier))
            return tl::unexpected(std::move(*error));
    }
    if (auto error = reasonNotToChange(wanted.calendarIdentifier))
        return tl::unexpected(std::move(*error));
    if (auto error = invalidReason(before, wanted))
        return tl::unexpected(std::move(*error));
    if (identifier.isEmpty())
        identifier = newIdentifier();
    const ZoneCalendar local = calendar_.calendar();
    EKReminderData prepared = preparedForSave(before, std::move(wanted), clock_.now(), local);
    EKSaveResult result{identifier, std::nullopt};
    const auto change = std::make_shared<Change>();
    change->items.push_back({identifier, before, std::nullopt});
    if (before && !before->isCompleted && prepared.isCompleted) {
        CompletedOccurrence step = completeOccurrence(std::move(prepared), {}, clock_.now(), local);
        if (step.copy) {
            result.completedCopyIdentifier = newIdentifier();
            store(*result.completedCopyIdentifier, std::move(*step.copy));
            change->items.push_back({*result.completedCopyIdentifier, std::nullopt,
                                     *entries_.at(*result.completedCopyIdentifier)});
        }
        prepared = std::move(step.series);
    }
    store(identifier, std::move(prepared));
    change->items.front().after = *entries_.at(identifier);
    result.change = change;
    return result;
}

void InMemoryEventStore::save(const EKReminderRef& reminder, SaveCompletion completion) {
    saveAll({reminder},
            [completion = std::move(completion)](auto results) { completion(std::move(results.front())); });
}

void InMemoryEventStore::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    std::vector<SaveRequest> requests;
    for (const EKReminderRef& reminder : reminders)
        requests.push_back({reminder, reminder->data, reminder->stored()});
    later([this, requests = std::move(requests), completion = std::move(completion)] {
        std::vector<tl::expected<EKSaveResult, EKError>> results;
        for (const SaveRequest& request : requests) {
            results.push_back(attempt(request.reminder->calendarItemIdentifier(), [this, request] {
                auto result = carryOut(request);
                if (result)
                    request.reminder->setStored(entries_.at(result->calendarItemIdentifier));
                return result;
            }));
        }
        completion(std::move(results));
    });
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::attempt(const QString& identifier, Operate change) {
    if (isAnswering_)
        return change();
    const auto present = reminder(identifier);
    undecided_.emplace_back(identifier, std::move(change));
    return tl::unexpected(outcomeUnknownError(present ? present->title : identifier, {}));
}

void InMemoryEventStore::setAnswering(bool answers) {
    isAnswering_ = answers;
    if (!answers)
        return;
    later([this] {
        for (const auto& [identifier, change] : std::exchange(undecided_, {})) {
            const auto result = change();
            for (const auto& [awaited, completion] : outcomeWaiters_) {
                if (awaited == identifier)
                    completion(result);
            }
            std::erase_if(outcomeWaiters_,
                          [&awaited = identifier](const auto& waiter) { return waiter.first == awaited; });
        }
    });
}

void InMemoryEventStore::awaitOutcome(const QString& identifier, SaveCompletion completion) {
    outcomeWaiters_.emplace_back(identifier, std::move(completion));
}

void InMemoryEventStore::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    later([this, identifier = reminder->calendarItemIdentifier(), completion = std::move(completion)] {
        completion(attempt(identifier, [this, identifier] { return takeOut(identifier); }));
    });
}

tl::expected<EKSaveResult, EKError> InMemoryEventStore::takeOut(const QString& identifier) {
    if (auto error = failure(Operation::remove))
        return tl::unexpected(std::move(*error));
    if (!hasAccess())
        return tl::unexpected(accessDeniedError());
    const auto found = entries_.find(identifier);
    if (found == entries_.end())
        return tl::unexpected(itemNotFoundError());
    if (auto error = reasonNotToChange(found->second->calendarIdentifier))
        return tl::unexpected(std::move(*error));
    const auto change = std::make_shared<Change>();
    change->items.push_back({identifier, *found->second, std::nullopt});
    entries_.erase(found);
    announceChange();
    return EKSaveResult{identifier, std::nullopt, change};
}

void InMemoryEventStore::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    later([this, wanted = calendar, completion = std::move(completion)]() mutable {
        if (auto error = failure(Operation::saveCalendar)) {
            completion(tl::unexpected(std::move(*error)));
            return;
        }
        if (!wanted.calendarIdentifier.isEmpty()) {
            if (auto error = reasonNotToChange(wanted.calendarIdentifier)) {
                completion(tl::unexpected(std::move(*error)));
                return;
            }
        } else if (!hasAccess()) {
            completion(tl::unexpected(accessDeniedError()));
            return;
        }
        wanted.calendarIdentifier = putCalendar(wanted);
        completion(std::move(wanted));
    });
}

Subscription InMemoryEventStore::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

void InMemoryEventStore::setAuthorizationStatus(EKAuthorizationStatus status) {
    status_ = status;
    announceChange();
}

void InMemoryEventStore::setFailure(Operation operation, std::optional<EKError> error) {
    if (error)
        failures_.insert_or_assign(operation, std::move(*error));
    else
        failures_.erase(operation);
}

QString InMemoryEventStore::putCalendar(EKCalendar calendar) {
    if (calendar.calendarIdentifier.isEmpty())
        calendar.calendarIdentifier = QStringLiteral("list-%1").arg(nextIdentifier_++);
    const QString identifier = calendar.calendarIdentifier;
    const auto found = std::find_if(calendars_.begin(), calendars_.end(), [&](const EKCalendar& existing) {
        return existing.calendarIdentifier == identifier;
    });
    if (found == calendars_.end())
        calendars_.push_back(std::move(calendar));
    else
        *found = std::move(calendar);
    announceChange();
    return identifier;
}

void InMemoryEventStore::dropCalendar(const QString& identifier) {
    std::erase_if(calendars_,
                  [&](const EKCalendar& calendar) { return calendar.calendarIdentifier == identifier; });
    std::erase_if(entries_,
                  [&](const auto& entry) { return entry.second->calendarIdentifier == identifier; });
    std::erase_if(series_,
                  [&](const auto& entry) { return entry.second.front()->calendarIdentifier == identifier; });
    announceChange();
}

QString InMemoryEventStore::newIdentifier() {
    return QStringLiteral("memory-%1").arg(nextIdentifier_++);
}

QString InMemoryEventStore::putReminder(EKReminderData data) {
    QString identifier = data.calendarItemIdentifier;
    if (identifier.isEmpty())
        identifier = newIdentifier();
    store(identifier, std::move(data));
    return identifier;
}

void InMemoryEventStore::dropReminder(const QString& identifier) {
    if (entries_.erase(identifier) > 0)
        announceChange();
}

std::shared_ptr<const EKReminderData> InMemoryEventStore::reminder(const QString& identifier) const {
    const auto found = entries_.find(identifier);
    return found == entries_.end() ? nullptr : found->second;
}

std::vector<EKReminderData> InMemoryEventStore::reminders() const {
    std::vector<EKReminderData> result;
    for (const auto& [identifier, entry] : entries_)
        result.push_back(*entry);
    return result;
}

}  // namespace kestrant
