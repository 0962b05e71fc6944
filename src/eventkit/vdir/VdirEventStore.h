#pragma once

#include "eventkit/EKEventStore.h"
#include "eventkit/vdir/FolderWatcher.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "foundation/ObserverList.h"
#include "foundation/SerialWorker.h"

#include <memory>

namespace kestrant {

/// The database in a folder of iCalendar files (vdir): one sub-folder for each list, one file for each item,
/// shared with whatever other programs and synchronisers use it. All disk work happens on one worker thread;
/// questions are answered from memory. Changes by others are noticed and read in.
class VdirEventStore final : public EKEventStore {
  public:
    /// Nothing is read before access is requested; the folder is then created where it is missing.
    VdirEventStore(const QString& root, Scheduler& scheduler, const Clock& clock,
                   const CurrentCalendar& calendar);
    ~VdirEventStore() override;

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
    [[nodiscard]] std::optional<Stored> storedReminder(const QString& identifier) const override;
    void requestAccess(AccessCompletion completion);
    [[nodiscard]] std::optional<EKCalendar> firstWritable(EKEntityType type) const;
    /// Runs `change(now, local)` on the worker, shows what came of it and calls `completion(result)`.
    template <typename Change, typename Completion>
    void carryOut(Change change, Completion completion);
    /// Runs work on the main thread, unless the store is gone by then. Thread: any.
    void onMain(std::function<void()> work);
    /// Makes what the worker knows now what the main thread sees. Thread: the worker.
    void publish(bool announce);
    void filesChanged(const vdir::Changes& changes);
    void readChanges();

    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentCalendar& calendar_;
    std::shared_ptr<VdirEventStore*> self_ = std::make_shared<VdirEventStore*>(this);

    EKAuthorizationStatus status_ = EKAuthorizationStatus::notDetermined;
    std::shared_ptr<const vdir::Snapshot> snapshot_ = std::make_shared<const vdir::Snapshot>();
    ObserverList<> observers_;
    vdir::Changes pendingChanges_;
    ScheduledTask readTask_;
    ScheduledTask comparison_;

    // Used by the worker alone, and destroyed after it has ended.
    vdir::FolderWatcher watcher_;
    bool isWatched_ = true;
    vdir::VdirDatabase database_;
    std::unique_ptr<SerialWorker> worker_;
};

}  // namespace kestrant
