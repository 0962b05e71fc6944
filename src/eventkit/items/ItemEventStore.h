#pragma once

#include "eventkit/items/ItemDatabase.h"
#include "eventkit/items/WorkQueues.h"
#include "eventkit/model/EKEventStore.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/ObserverList.h"

#include <functional>
#include <memory>

namespace kestrant::items {

/// A database of iCalendar texts in some storage, shared with whatever other
/// programs use it. All work with the storage happens away from the main thread,
/// in the queue of the list that it is about; questions are answered from
/// memory. Changes by others are noticed and read in.
class ItemEventStore : public EKEventStore {
  public:
    /// Nothing is read before access is requested. `makeStorage` is called at
    /// once; what it makes calls its observer at most until it is destroyed.
    ItemEventStore(Scheduler& scheduler, const Clock& clock, const CurrentTimeZone& currentZone,
                   const std::function<std::unique_ptr<ItemStorage>(StorageObserver observer)>& makeStorage,
                   std::unique_ptr<WorkQueues> queues);
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
    void revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                SaveCompletion completion) override;
    void awaitOutcome(const EKError& unknown, SaveCompletion completion) override;
    void events(const EKEventPredicate& matching, EventsCompletion completion) override;
    [[nodiscard]] EKEventRef event(const QString& withIdentifier) override;
    void save(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override;
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override;
    [[nodiscard]] std::vector<TextPair> problems() const override;

  protected:
    // For a storage that never blocks, whose queue is the main thread.

    [[nodiscard]] ItemStorage& storage() { return *storage_; }
    [[nodiscard]] const std::shared_ptr<const Snapshot>& snapshot() const { return snapshot_; }
    /// Opens the storage at once, with full access.
    void openNow();
    /// Reads what others changed at once; observers are told later.
    void readNow(const Changes& changes);
    void setAuthorizationStatus(EKAuthorizationStatus status);
    /// Runs work on the main thread, unless the store is gone by then. Thread:
    /// any.
    void onMain(std::function<void()> work);

  private:
    [[nodiscard]] std::shared_ptr<const EKReminderData>
    storedReminder(const QString& identifier) const override;
    void requestAccess(AccessCompletion completion);
    /// A change on its way, and whom it is about.
    struct Operation;
    struct Subject {
        QString identifier;
        QString title;
        /// The number of the change.
        std::uint64_t change = 0;
    };
    /// The queue for changes that concern these lists.
    [[nodiscard]] QByteArray queueFor(const std::vector<Subject>& subjects, const QString& from,
                                      const QString& to) const;
    /// Runs `change(now, local)` in a queue, shows what came of it, gives it to
    /// `adopt` (the caller's items in hand) and calls `completion(result)`.
    template <typename Change, typename Adopt, typename Completion>
    void execute(const QByteArray& queue, std::vector<Subject> subjects, Change change, Adopt adopt,
                 Completion completion);
    /// Work of this queue that is under way may or may not come to a good end;
    /// what waits behind it is refused.
    void operationsOverdue(const QByteArray& queue, const QString& list);
    /// Makes what the database knows now what the main thread sees. Thread: that
    /// of a queue.
    void publish(bool announce);
    void itemsChanged(const Changes& changes);
    void storageTells(std::optional<TextPair>& problem, const std::optional<TextPair>& reason);
    void readChanges();

    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    std::shared_ptr<ItemEventStore*> self_ = std::make_shared<ItemEventStore*>(this);

    EKAuthorizationStatus status_ = EKAuthorizationStatus::notDetermined;
    std::shared_ptr<const Snapshot> snapshot_ = std::make_shared<const Snapshot>();
    ObserverList<> observers_;
    /// The reason why the storage is waiting.
    std::optional<TextPair> waiting_;
    /// The reason why changes have not reached a server yet.
    std::optional<TextPair> unsent_;
    std::vector<std::shared_ptr<Operation>> operations_;
    std::uint64_t lastChange_ = 0;
    Changes pendingChanges_;
    ScheduledTask readTask_;
    ScheduledTask recheckTask_;

    // Used in the queues alone, and destroyed after those have ended.
    std::unique_ptr<ItemStorage> storage_;
    ItemDatabase database_;
    std::unique_ptr<WorkQueues> queues_;
};

}  // namespace kestrant::items
