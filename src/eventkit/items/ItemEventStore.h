#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/items/ItemDatabase.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/ObserverList.h"

#include <functional>
#include <memory>

namespace kestrant::items {

/// A database of iCalendar texts in some storage, shared with whatever other
/// programs use it. All work with the storage happens on one worker thread;
/// questions are answered from memory. Changes by others are noticed and read
/// in.
class ItemEventStore : public EKEventStore {
  public:
    /// Nothing is read before access is requested. `makeStorage` is called at
    /// once; what it makes calls its observer at most until it is destroyed. The
    /// worker runs one piece of work after the other, in order, and its end waits
    /// for all of it.
    ItemEventStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar,
                   const std::function<std::unique_ptr<ItemStorage>(StorageObserver observer)>& makeStorage,
                   std::unique_ptr<BackgroundExecutor> worker);
    ~ItemEventStore() override;

    [[nodiscard]] EKAuthorizationStatus authorizationStatus(EKEntityType type) const override;
    void requestFullAccessToReminders(AccessCompletion completion) override;
    void requestFullAccessToEvents(AccessCompletion completion) override;
    [[nodiscard]] std::vector<EKCalendar> calendars(EKEntityType type) const override;
    [[nodiscard]] std::optional<EKCalendar> calendarWithIdentifier(const QString& identifier) const override;
    [[nodiscard]] std::optional<EKCalendar> defaultCalendarForNewReminders() const override;
    [[nodiscard]] std::optional<EKCalendar> defaultCalendarForNewEvents() const override;
    void fetchReminders(const EKPredicate& matching, FetchCompletion completion) override;
    [[nodiscard]] EKReminderRef calendarItem(const QString& withIdentifier) override;
    void save(const EKReminderRef& reminder, SaveCompletion completion) override;
    void saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) override;
    void remove(const EKReminderRef& reminder, SaveCompletion completion) override;
    void revert(const std::shared_ptr<const EKReminderChange>& change, const QString& identifier,
                SaveCompletion completion) override;
    void events(const EKEventPredicate& matching, EventsCompletion completion) override;
    [[nodiscard]] EKEventRef event(const QString& withIdentifier) override;
    void save(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override;
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override;
    [[nodiscard]] std::vector<TextPair> problems() const override;

  private:
    [[nodiscard]] std::shared_ptr<const EKReminderData>
    storedReminder(const QString& identifier) const override;
    void requestAccess(AccessCompletion completion);
    /// Runs `change(now, local)` on the worker, shows what came of it and calls
    /// `completion(result)`.
    template <typename Change, typename Completion>
    void carryOut(Change change, Completion completion);
    /// Runs work on the main thread, unless the store is gone by then. Thread:
    /// any.
    void onMain(std::function<void()> work);
    /// Makes what the worker knows now what the main thread sees. Thread: the
    /// worker.
    void publish(bool announce);
    void itemsChanged(const Changes& changes);
    void storageWaits(std::optional<TextPair> reason);
    void readChanges();

    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentCalendar& calendar_;
    std::shared_ptr<ItemEventStore*> self_ = std::make_shared<ItemEventStore*>(this);

    EKAuthorizationStatus status_ = EKAuthorizationStatus::notDetermined;
    std::shared_ptr<const Snapshot> snapshot_ = std::make_shared<const Snapshot>();
    ObserverList<> observers_;
    /// What the storage is waiting for.
    std::optional<TextPair> waiting_;
    Changes pendingChanges_;
    ScheduledTask readTask_;
    ScheduledTask recheckTask_;

    // Used by the worker alone, and destroyed after it has ended.
    std::unique_ptr<ItemStorage> storage_;
    ItemDatabase database_;
    std::unique_ptr<BackgroundExecutor> worker_;
};

}  // namespace kestrant::items
