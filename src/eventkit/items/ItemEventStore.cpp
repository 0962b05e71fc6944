#include "eventkit/items/ItemEventStore.h"

#include "eventkit/EKErrors.h"
#include "eventkit/ReminderChanges.h"

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
    Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar,
    const std::function<std::unique_ptr<ItemStorage>(StorageObserver observer)>& makeStorage,
    std::unique_ptr<BackgroundExecutor> worker)
    : scheduler_(scheduler)
    , clock_(clock)
    , calendar_(calendar)
    , storage_(makeStorage(
          {.changed = [this](const Changes& changes) { onMain([this, changes] { itemsChanged(changes); }); },
           .waits =
               [this](std::optional<TextPair> reason) {
                   onMain([this, reason = std::move(reason)] { storageWaits(reason); });
               }}))
    , database_(*storage_)
    , worker_(std::move(worker)) {}

ItemEventStore::~ItemEventStore() {
    storage_->hurry();
    worker_->run([this] { storage_->close(); });
}

void ItemEventStore::onMain(std::function<void()> work) {
    scheduler_.post([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (!weak.expired())
            work();
    });
}

void ItemEventStore::publish(bool announce) {
    onMain([this, snapshot = database_.snapshot(), recheck = database_.recheck(), announce] {
        // What the old one held is freed where that keeps nobody waiting.
        worker_->run([old = std::exchange(snapshot_, snapshot)] {});
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

void ItemEventStore::storageWaits(std::optional<TextPair> reason) {
    waiting_ = std::move(reason);
    observers_.notify();
}

void ItemEventStore::readChanges() {
    worker_->run([this, changes = std::exchange(pendingChanges_, {}), local = calendar_.calendar()] {
        const bool changed = database_.refresh(changes, local);
        if (changed || database_.recheck())
            publish(changed);
    });
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
    worker_->run([this, completion = std::move(completion), local = calendar_.calendar()]() mutable {
        std::optional<EKError> error;
        if (!database_.isOpen())
            error = database_.open(local);
        publish(false);
        onMain([this, completion = std::move(completion), error = std::move(error)] {
            const bool opened = !error && status_ != EKAuthorizationStatus::fullAccess;
            status_ = error ? EKAuthorizationStatus::denied : EKAuthorizationStatus::fullAccess;
            completion(!error, error);
            if (opened)
                observers_.notify();
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
    worker_->run(
        [this, matching, completion = std::move(completion), local = calendar_.calendar()]() mutable {
            std::vector<EKReminderRef> result;
            if (database_.isOpen()) {
                for (const Entry& entry : database_.snapshot()->reminders) {
                    if (matches(matching, *entry.data, local))
                        result.push_back(std::make_shared<EKReminder>(*this, entry.data));
                }
            }
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
    const auto found = snapshot_->reminders.constFind(identifier);
    if (status_ != EKAuthorizationStatus::fullAccess || found == snapshot_->reminders.cend())
        return nullptr;
    return found->data;
}

template <typename Change, typename Completion>
void ItemEventStore::carryOut(Change change, Completion completion) {
    worker_->run([this, change = std::move(change), now = clock_.now(), local = calendar_.calendar(),
                  completion = std::move(completion)]() mutable {
        const auto before = database_.snapshot();
        auto result = change(now, local);
        publish(database_.snapshot() != before);
        onMain([completion = std::move(completion), result = std::move(result)]() mutable {
            completion(std::move(result));
        });
    });
}

void ItemEventStore::save(const EKReminderRef& reminder, SaveCompletion completion) {
    carryOut([this, edited = reminder->data, base = reminder->stored()](
                 Instant now, const ZoneCalendar& local) { return database_.save(base, edited, now, local); },
             [this, reminder, completion = std::move(completion)](auto result) {
                 if (result) {
                     if (auto stored = storedReminder(result->calendarItemIdentifier))
                         reminder->setStored(std::move(stored));
                 }
                 completion(std::move(result));
             });
}

void ItemEventStore::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    std::vector<ReminderEdit> edits;
    for (const EKReminderRef& reminder : reminders)
        edits.push_back({reminder->stored(), reminder->data});
    carryOut([this, edits = std::move(edits)](
                 Instant now, const ZoneCalendar& local) { return database_.saveAll(edits, now, local); },
             [this, reminders, completion = std::move(completion)](auto results) {
                 for (std::size_t i = 0; i < reminders.size(); ++i) {
                     if (!results[i])
                         continue;
                     if (auto stored = storedReminder(results[i]->calendarItemIdentifier))
                         reminders[i]->setStored(std::move(stored));
                 }
                 completion(std::move(results));
             });
}

void ItemEventStore::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    carryOut([this, identifier = reminder->calendarItemIdentifier()](
                 Instant, const ZoneCalendar& local) { return database_.remove(identifier, local); },
             std::move(completion));
}

void ItemEventStore::revert(const std::shared_ptr<const EKReminderChange>& change, const QString& identifier,
                            SaveCompletion completion) {
    carryOut(
        [this, change = std::dynamic_pointer_cast<const ReminderChange>(change),
         identifier](Instant now, const ZoneCalendar& local) -> tl::expected<EKSaveResult, EKError> {
            if (!change)
                return tl::unexpected(itemNotFoundError());
            return database_.revert(*change, identifier, now, local);
        },
        std::move(completion));
}

void ItemEventStore::events(const EKEventPredicate& matching, EventsCompletion completion) {
    worker_->run(
        [this, matching, completion = std::move(completion), local = calendar_.calendar()]() mutable {
            std::vector<EKEventRef> result;
            if (database_.isOpen()) {
                if (database_.adopt(local))
                    publish(false);
                for (auto& shown : database_.snapshot()->eventsMatching(matching))
                    result.push_back(std::make_shared<EKEvent>(std::move(shown)));
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

void ItemEventStore::save(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    carryOut(
        [this, edited = event->data, base = event->stored()](Instant now, const ZoneCalendar& local) {
            return database_.saveEvent(base, edited, now, local);
        },
        [this, event, completion = std::move(completion)](auto result) {
            if (result) {
                const QString& identifier = result->calendarItemIdentifier;
                auto shown = snapshot_->event(identifier, event->data.occurrenceDate);
                if (!shown)
                    shown = snapshot_->firstEvent(identifier);
                if (shown)
                    event->setStored(std::move(shown));
            }
            completion(std::move(result));
        });
}

void ItemEventStore::remove(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    carryOut(
        [this, base = event->stored()](Instant now,
                                       const ZoneCalendar& local) -> tl::expected<EKSaveResult, EKError> {
            if (!base)
                return tl::unexpected(itemNotFoundError());
            return database_.removeEvent(*base, now, local);
        },
        std::move(completion));
}

void ItemEventStore::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    carryOut([this, calendar](Instant,
                              const ZoneCalendar& local) { return database_.saveCalendar(calendar, local); },
             std::move(completion));
}

Subscription ItemEventStore::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

std::vector<TextPair> ItemEventStore::problems() const {
    std::vector<TextPair> problems = snapshot_->problems;
    if (waiting_)
        problems.insert(problems.begin(), *waiting_);
    return problems;
}

}  // namespace kestrant::items
