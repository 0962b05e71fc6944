#pragma once

#include "eventkit/EKReminder.h"
#include "eventkit/EKTypes.h"
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

/// What a save or removal did.
struct EKSaveResult {
    /// The item's identifier in the database.
    QString calendarItemIdentifier;
    /// When completing a recurring reminder advanced it: the identifier of the completed copy that was left
    /// behind.
    std::optional<QString> completedCopyIdentifier;
};

/// The reminders-and-calendar database. One object is shared by everything in the process.
///
/// Thread: main only. No call blocks for the disk or a service: questions are answered from memory, changes
/// are carried out elsewhere, one after the other in the order they were asked for, and each completion is
/// called exactly once, on the main thread, on a later turn. A completion may be called after whoever asked
/// is gone: let it check. A store that is destroyed first finishes the changes it has accepted; their
/// completions are then not called.
///
/// Before access is granted (or when it is refused) there are no calendars and every change fails with
/// accessDenied.
class EKEventStore {
  public:
    using AccessCompletion = std::function<void(bool granted, std::optional<EKError> error)>;
    using FetchCompletion = std::function<void(std::vector<EKReminderRef> reminders)>;
    using SaveCompletion = std::function<void(tl::expected<EKSaveResult, EKError> result)>;
    using CalendarCompletion = std::function<void(tl::expected<EKCalendar, EKError> result)>;

    virtual ~EKEventStore() = default;

    [[nodiscard]] virtual EKAuthorizationStatus authorizationStatus(EKEntityType type) const = 0;
    /// Opens the database; the first request loads it. A database that cannot be opened is not granted, with
    /// the reason.
    virtual void requestFullAccessToReminders(AccessCompletion completion) = 0;
    virtual void requestFullAccessToEvents(AccessCompletion completion) = 0;

    /// The lists (or calendars) in a stable order: by their own order where they have one, then by title.
    [[nodiscard]] virtual std::vector<EKCalendar> calendars(EKEntityType type) const = 0;
    [[nodiscard]] virtual std::optional<EKCalendar>
    calendarWithIdentifier(const QString& identifier) const = 0;
    [[nodiscard]] virtual std::optional<EKCalendar> defaultCalendarForNewReminders() const = 0;

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
    /// Removes a reminder. Fails with itemNotFound when it is gone already.
    virtual void remove(const EKReminderRef& reminder, SaveCompletion completion) = 0;

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
    struct StoredReminder {
        std::shared_ptr<const EKReminderData> data;
        QByteArray version;
    };
    /// Present values by identifier, for EKReminder::refresh().
    [[nodiscard]] virtual std::optional<StoredReminder> storedReminder(const QString& identifier) const = 0;

  protected:
    using Stored = StoredReminder;
};

}  // namespace kestrant
