#include "eventkit/items/ItemEventStore.h"

#include "foundation/CurrentTimeZone.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant::items {
namespace {

using namespace std::chrono_literals;

/// Changes within this time are read in together.
constexpr Duration gatheringTime = 200ms;

}  // namespace

ItemEventStore::ItemEventStore(
    Scheduler& scheduler, const Clock& clock, const CurrentTimeZone& currentZone,
    const std::function<std::unique_ptr<ItemStorage>(StorageObserver observer)>& makeStorage,
    std::unique_ptr<WorkQueues> queues)
    : scheduler_(scheduler)
    , clock_(clock)
    , currentZone_(currentZone)
    , storage_(makeStorage(
          {.changed = [this](const Changes& changes) { onMain([this, changes] { itemsChanged(changes); }); },
           .waits =
               [this](std::optional<TextPair> reason) {
                   onMain([this, reason = std::move(reason)] { storageTells(waiting_, reason); });
               },
           .unsent =
               [this](std::optional<TextPair> reason) {
                   onMain([this, reason = std::move(reason)] { storageTells(unsent_, reason); });
               },
           .overdue =
               [this](const QByteArray& queue, const QString& list) {
                   onMain([this, queue, list] { operationsOverdue(queue, list); });
               }}))
    , database_(*storage_)
    , queues_(std::move(queues)) {}

ItemEventStore::~ItemEventStore() {
    storage_->prepareToClose();
    queues_->finish([this] { storage_->close(); });
}

void ItemEventStore::onMain(std::function<void()> work) {
    scheduler_.post([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (!weak.expired())
            work();
    });
}

void ItemEventStore::publish(bool announce) {
    onMain([this, snapshot = database_.snapshot(), recheck = database_.recheck(), announce] {
        // The old snapshot is freed where that delays nothing.
        queues_->run({}, [old = std::exchange(snapshot_, snapshot)] {});
        if (!recheck)
            recheckTask_.cancel();
        else if (!recheckTask_.isPending())
            recheckTask_ =
                scheduler_.after(recheck->after, [this, what = recheck->what] { itemsChanged(what); });
        if (announce)
            observers_.notify();
    });
}

void ItemEventStore::itemsChanged(const Changes& changes) {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return;
    pendingChanges_.add(changes);
    if (!readTask_.isPending())
        readTask_ = scheduler_.after(gatheringTime, [this] { readChanges(); });
}

void ItemEventStore::storageTells(std::optional<TextPair>& problem, const std::optional<TextPair>& reason) {
    problem = reason;
    observers_.notify();
}

void ItemEventStore::readChanges() {
    const auto read = [this, local = currentZone_.zone()](const QByteArray& queue, Changes changes) {
        queues_->run(queue, [this, changes = std::move(changes), local] {
            const bool changed = database_.refresh(changes, local);
            if (changed || database_.recheck())
                publish(changed);
        });
    };
    Changes changes = std::exchange(pendingChanges_, {});
    if (queues_->areSeveral()) {
        for (auto& [collection, files] : std::exchange(changes.files, {}))
            read(collection, {.files = {{collection, std::move(files)}}});
        if (!changes.everything && !changes.collections)
            return;
    }
    read({}, std::move(changes));
}

void ItemEventStore::openNow() {
    if (database_.open(currentZone_.zone()))
        return;
    snapshot_ = database_.snapshot();
    status_ = EKAuthorizationStatus::fullAccess;
}

void ItemEventStore::readNow(const Changes& changes) {
    if (!database_.refresh(changes, currentZone_.zone()))
        return;
    snapshot_ = database_.snapshot();
    onMain([this] { observers_.notify(); });
}

void ItemEventStore::setAuthorizationStatus(EKAuthorizationStatus status) {
    status_ = status;
    onMain([this] { observers_.notify(); });
}

EKAuthorizationStatus ItemEventStore::authorizationStatus(EKEntityType) const {
    return status_;
}

void ItemEventStore::requestFullAccessToReminders(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void ItemEventStore::requestFullAccessToEvents(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void ItemEventStore::requestAccess(AccessCompletion completion) {
    queues_->run({}, [this, completion = std::move(completion), local = currentZone_.zone()]() mutable {
        std::optional<EKError> error;
        if (!database_.isOpen())
            error = database_.open(local);
        publish(false);
        onMain([this, completion = std::move(completion), error = std::move(error)] {
            const bool opened = !error && status_ != EKAuthorizationStatus::fullAccess;
            // Access was not refused: the next request tries again.
            status_ = error ? EKAuthorizationStatus::notDetermined : EKAuthorizationStatus::fullAccess;
            // Later fetches see this result, too.
            if (opened)
                observers_.notify();
            completion(!error, error);
        });
    });
}

std::vector<EKCalendar> ItemEventStore::calendars(EKEntityType type) const {
    std::vector<EKCalendar> result;
    if (status_ != EKAuthorizationStatus::fullAccess)
        return result;
    std::copy_if(snapshot_->calendars.begin(), snapshot_->calendars.end(), std::back_inserter(result),
                 [&](const EKCalendar& calendar) {
                     return type == EKEntityType::reminder ? calendar.allowsReminders : calendar.allowsEvents;
                 });
    return result;
}

std::optional<EKCalendar> ItemEventStore::calendarWithIdentifier(const QString& identifier) const {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return std::nullopt;
    return snapshot_->calendar(identifier);
}

std::optional<EKCalendar> ItemEventStore::defaultCalendarForNewReminders() const {
    return calendarWithIdentifier(snapshot_->defaultForReminders);
}

std::optional<EKCalendar> ItemEventStore::defaultCalendarForNewEvents() const {
    return calendarWithIdentifier(snapshot_->defaultForEvents);
}

void ItemEventStore::fetchReminders(const EKPredicate& matching, FetchCompletion completion) {
    queues_->run({},
                 [this, matching, completion = std::move(completion), local = currentZone_.zone()]() mutable {
                     EKReminders result;
                     // The record of completions is made of all of them.
                     if (matching.kind == EKPredicate::Kind::completedReminders && storage_->isPartlyRead()) {
                         database_.refresh({.everything = true}, local);
                         publish(true);
                     }
                     if (database_.isOpen())
                         result = database_.reminders(matching, local);
                     onMain([completion = std::move(completion), result = std::move(result)]() mutable {
                         completion(std::move(result));
                     });
                 });
}

EKReminderRef ItemEventStore::calendarItem(const QString& withIdentifier) {
    auto stored = storedReminder(withIdentifier);
    return stored ? std::make_shared<EKReminder>(*this, std::move(stored)) : nullptr;
}

std::shared_ptr<const EKReminderData> ItemEventStore::storedReminder(const QString& identifier) const {
    const Entry* const found = snapshot_->reminders.find(identifier);
    return status_ == EKAuthorizationStatus::fullAccess && found ? found->data : nullptr;
}

void ItemEventStore::events(const EKEventPredicate& matching, EventsCompletion completion) {
    queues_->run({}, [this, matching, completion = std::move(completion), now = clock_.now(),
                      local = currentZone_.zone()]() mutable {
        EKEvents result;
        if (database_.isOpen()) {
            if (database_.adopt(local))
                publish(false);
            const auto before = database_.snapshot();
            result = database_.events(matching, now);
            // A new problem is to be reported.
            if (database_.snapshot() != before)
                publish(true);
        }
        onMain([completion = std::move(completion), result = std::move(result)]() mutable {
            completion(std::move(result));
        });
    });
}

EKEventRef ItemEventStore::event(const QString& withIdentifier) {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return nullptr;
    auto shown = snapshot_->firstEvent(withIdentifier);
    return shown ? std::make_shared<EKEvent>(std::move(shown)) : nullptr;
}

Subscription ItemEventStore::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

}  // namespace kestrant::items
