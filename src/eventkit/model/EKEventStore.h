#pragma once

#include "eventkit/model/EKEvent.h"
#include "eventkit/model/EKReminder.h"
#include "eventkit/model/EKTypes.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// Which items a fetch returns. Made by EKEventStore's predicate functions.
struct EKPredicate {
    enum class Kind { incompleteReminders, completedReminders };
    Kind kind = Kind::incompleteReminders;
    /// Bounds on the due date (incomplete) or the completion date (completed): start included, end excluded.
    /// With any bound set, items without that date do not match. A date-only due date counts as the start of
    /// its day.
    std::optional<Instant> start;
    std::optional<Instant> end;
    /// Identifiers of the lists to search; absent means all of them.
    std::optional<std::vector<QString>> calendars;
};

/// Which events a fetch returns. Made by EKEventStore::predicateForEvents().
struct EKEventPredicate {
    /// Events that touch this span match: they start before `end` and end after `start`. One without length
    /// matches where it lies from `start` (included) to `end` (excluded).
    Instant start;
    Instant end;
    /// Identifiers of the calendars to search; absent means all of them.
    std::optional<std::vector<QString>> calendars;
};

/// The reminders that a fetch has found, as they were read. One that has not changed since an earlier fetch
/// is the same object. To change one, make an EKReminder of it.
using EKReminders = std::vector<std::shared_ptr<const EKReminderData>>;

/// The occurrences that a fetch has found.
struct EKEvents {
    std::vector<std::shared_ptr<const EKEventData>> events;
    /// Whether occurrences were left out: those farthest from the present are.
    bool isCut = false;
};

/// A change of a reminder or an event as the database remembers it, so that it can be taken back. What is in
/// it is the database's own affair. Thread: any; it never changes.
class EKItemChange {
  public:
    EKItemChange() = default;
    EKItemChange(const EKItemChange&) = delete;
    EKItemChange& operator=(const EKItemChange&) = delete;
    virtual ~EKItemChange() = default;
};

/// The effect of a save or removal.
struct EKSaveResult {
    /// The item's identifier in the database.
    QString calendarItemIdentifier;
    /// When completing a recurring reminder advanced it: the identifier of the completed copy that was left
    /// behind.
    std::optional<QString> completedCopyIdentifier;
    /// The change for revert(). Null when there was nothing to write.
    std::shared_ptr<const EKItemChange> change;
};

/// The reminders-and-calendar database. One object is shared by everything in the process.
///
/// Thread: main only. No call blocks for the disk or a service: questions are answered from memory, changes
/// are carried out elsewhere, those of one item, and at least those of one list, one after the other in the
/// order they were asked for, and each completion is called exactly once, on the main thread, on a later
/// turn. A completion may be called after whoever asked is gone: let it check. A store that is destroyed
/// first finishes the changes it has accepted; their completions are then not called.
///
/// Before access is granted (or when it is refused) there are no calendars and every change fails with
/// accessDenied.
class EKEventStore {
  public:
    using AccessCompletion = std::function<void(bool granted, std::optional<EKError> error)>;
    using FetchCompletion = std::function<void(EKReminders reminders)>;
    using EventsCompletion = std::function<void(EKEvents events)>;
    using SaveCompletion = std::function<void(tl::expected<EKSaveResult, EKError> result)>;
    /// The results are in the order of what was to be saved.
    using SaveAllCompletion = std::function<void(std::vector<tl::expected<EKSaveResult, EKError>> results)>;
    using CalendarCompletion = std::function<void(tl::expected<EKCalendar, EKError> result)>;

    virtual ~EKEventStore() = default;

    [[nodiscard]] virtual EKAuthorizationStatus authorizationStatus(EKEntityType type) const = 0;
    /// Opens the database; the first request loads it. A database that cannot be opened is not granted, with
    /// the reason; its status then is as if it had never been asked for.
    virtual void requestFullAccessToReminders(AccessCompletion completion) = 0;
    virtual void requestFullAccessToEvents(AccessCompletion completion) = 0;

    /// The lists (or calendars) in a stable order: by their own order where they have one, then by title.
    [[nodiscard]] virtual std::vector<EKCalendar> calendars(EKEntityType type) const = 0;
    [[nodiscard]] virtual std::optional<EKCalendar>
    calendarWithIdentifier(const QString& identifier) const = 0;
    /// The first list (or calendar) that may be changed.
    [[nodiscard]] virtual std::optional<EKCalendar> defaultCalendarForNewReminders() const = 0;
    [[nodiscard]] virtual std::optional<EKCalendar> defaultCalendarForNewEvents() const = 0;

    [[nodiscard]] static EKPredicate
    predicateForIncompleteReminders(std::optional<Instant> dueDateStarting, std::optional<Instant> ending,
                                    std::optional<std::vector<QString>> calendars);
    [[nodiscard]] static EKPredicate
    predicateForCompletedReminders(std::optional<Instant> completionDateStarting,
                                   std::optional<Instant> ending,
                                   std::optional<std::vector<QString>> calendars);

    /// Waits for a load that is under way, so the result is never a part of the database. No order is
    /// promised.
    virtual void fetchReminders(const EKPredicate& matching, FetchCompletion completion) = 0;

    /// The reminder with this identifier as it is in memory now; null when there is none.
    [[nodiscard]] virtual EKReminderRef calendarItem(const QString& withIdentifier) = 0;

    /// Writes a new or edited reminder and commits it. Only properties that differ from what was read are
    /// written; what else the database holds of the item stays as it is. Completing a recurring reminder
    /// moves it to its next date and leaves a completed, non-recurring copy. On success the reminder in hand
    /// is what the database holds.
    virtual void save(const EKReminderRef& reminder, SaveCompletion completion) = 0;
    /// Writes several reminders, each as save() would: one that fails keeps none of the others back. A
    /// database that can write many at once does.
    virtual void saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) = 0;
    /// Removes a reminder. Fails with itemNotFound when it is gone already.
    virtual void remove(const EKReminderRef& reminder, SaveCompletion completion) = 0;

    /// Takes back what save(), remove() or revert() itself did to a reminder or an event. `identifier` is
    /// what the item is called now: a removed one may come back under a new identifier, which the result
    /// tells. Of a series, the occurrence in hand is what comes back, and the others stay. Everything that
    /// was in the item is restored, what this program does not understand included; what others changed
    /// meanwhile in other properties stays. Fails with conflict, and writes nothing, where they changed the
    /// same ones, or anything of an item that would have to be removed. An occurrence that was completed is
    /// taken back together with its copy; the result names the copy when completing it again brings one.
    virtual void revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                        SaveCompletion completion) = 0;

    /// To be asked in the completion of a change that ended with outcomeUnknown, with that error: answers as
    /// the change would have, once it is known what became of it. That takes until the source answers again.
    virtual void awaitOutcome(const EKError& unknown, SaveCompletion completion) = 0;

    [[nodiscard]] static EKEventPredicate predicateForEvents(Instant start, Instant end,
                                                             std::optional<std::vector<QString>> calendars);

    /// The occurrences that match, each of a series by itself. Waits for a load that is under way; series are
    /// expanded away from the main thread. No order is promised. There is a limit to how many are told, and
    /// to what is spent on each series, counted from the present in both directions; problems() names what
    /// has cost more.
    virtual void events(const EKEventPredicate& matching, EventsCompletion completion) = 0;

    /// The event with this event identifier as it is in memory now, of a series the earliest occurrence; null
    /// when there is none.
    [[nodiscard]] virtual EKEventRef event(const QString& withIdentifier) = 0;

    /// Writes a new or edited event and commits it; with EKSpan::thisEvent only the occurrence in hand of a
    /// series, which then is detached. Otherwise as for reminders. An occurrence that is put into another
    /// calendar leaves its series and becomes an event of its own, with identifiers of its own; the series
    /// has it no more. A new event whose calendarIdentifier is empty goes into the default calendar; where
    /// there is none, into a new one called "Calendar".
    virtual void save(const EKEventRef& event, EKSpan span, SaveCompletion completion) = 0;
    /// Removes an event; with EKSpan::thisEvent only the occurrence in hand of a series. Fails with
    /// itemNotFound when it is gone already.
    virtual void remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) = 0;

    /// Creates a list (empty calendarIdentifier) or changes title and colour of one; gives it back with its
    /// identifier.
    virtual void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) = 0;

    /// EKEventStoreChanged: told after anything in the database changed, by this process or another. Bursts
    /// may be told once.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> observer) = 0;

    /// Files or sources that could not be read, one sentence each, naming it; they hide nothing else.
    [[nodiscard]] virtual std::vector<TextPair> problems() const { return {}; }

  private:
    friend class EKReminder;
    friend class EventStoreSwitch;
    /// Present values by identifier, for EKReminder::refresh(); null when there is no such reminder.
    [[nodiscard]] virtual std::shared_ptr<const EKReminderData>
    storedReminder(const QString& identifier) const = 0;
};

}  // namespace kestrant
