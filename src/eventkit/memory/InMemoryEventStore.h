#pragma once

#include "eventkit/items/ItemEventStore.h"
#include "foundation/CurrentTimeZone.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

namespace items {
class MemoryStorage;
}

/// A database whose files live in memory: for trying things out, for pictures and for tests. Every result
/// arrives on a later turn of the scheduler. Besides the database's own operations it can be changed "by
/// another program" and told to fail. Thread: main only.
class InMemoryEventStore : public items::ItemEventStore {
  public:
    enum class Operation { requestAccess, save, remove, revert, saveCalendar };

    /// Full access is granted from the start.
    InMemoryEventStore(Scheduler& scheduler, const Clock& clock, const CurrentTimeZone& currentZone);
    ~InMemoryEventStore() override;

    void requestFullAccessToReminders(AccessCompletion completion) override;
    void requestFullAccessToEvents(AccessCompletion completion) override;
    void fetchReminders(const EKPredicate& matching, FetchCompletion completion) override;
    void saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) override;
    void remove(const EKReminderRef& reminder, SaveCompletion completion) override;
    void revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                SaveCompletion completion) override;
    void awaitOutcome(const EKError& unknown, SaveCompletion completion) override;
    void events(const EKEventPredicate& matching, EventsCompletion completion) override;
    void save(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    using ItemEventStore::save;
    void remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override;
    [[nodiscard]] std::vector<TextPair> problems() const override;

    // Actions of the person or another program. Each change is announced like any other.

    /// Sets the status of both entity types; a request then answers with it (notDetermined is granted on
    /// request).
    void setAuthorizationStatus(EKAuthorizationStatus status);
    /// Every later operation of this kind fails with the error, until it is set to nothing.
    void setFailure(Operation operation, std::optional<EKError> error);
    /// While the database does not answer, changes of items end with outcomeUnknown; they are carried out
    /// when it answers again.
    void setAnswering(bool answers);
    /// Whether items that come back keep their identifiers, as files do; some services give new ones.
    void setKeepsIdentifiers(bool keeps);
    void setProblems(std::vector<TextPair> problems) { problems_ = std::move(problems); }
    /// Adds or replaces a list; an empty identifier is filled in. Returns the identifier. Lists keep the
    /// order in which they were added; the default list is the first one that may be changed.
    QString putCalendar(const EKCalendar& calendar);
    /// The calendar for new events, in place of the first one that may be changed.
    void setDefaultForNewEvents(const QString& identifier);
    /// Removes a list with everything in it.
    void dropCalendar(const QString& identifier);
    /// Adds or replaces a reminder; an empty identifier is filled in. Returns the identifier.
    QString putReminder(const EKReminderData& data);
    void dropReminder(const QString& identifier);
    /// Adds or replaces an event, or a series by its first occurrence; an empty identifier is filled in, and
    /// eventIdentifier follows it. Returns the identifier.
    QString putEvent(const EKEventData& data);
    void dropEvent(const QString& identifier);

    /// The present values; null when there is no such reminder.
    [[nodiscard]] std::shared_ptr<const EKReminderData> reminder(const QString& identifier) const;
    /// In the order of their identifiers.
    [[nodiscard]] std::vector<EKReminderData> reminders() const;
    /// Every occurrence within five years of the present, in the order of their identifiers and starts.
    [[nodiscard]] std::vector<EKEventData> allEvents() const;

  private:
    using Operate = std::function<void(const SaveCompletion& completion)>;
    [[nodiscard]] std::optional<EKError> failure(Operation operation) const;
    /// Carries a change out, unless it is to fail or the database does not answer.
    void attempt(Operation operation, const QString& title, const SaveCompletion& completion,
                 const Operate& change);
    void requestAccess(AccessCompletion completion);
    [[nodiscard]] items::MemoryStorage& files();
    /// Puts a file into a list, instead of the one that the item was in.
    void put(const std::optional<items::FileLocation>& former, const QString& calendar,
             const QString& identifier, const icalendar::Document& document);
    void drop(const items::FileLocation& location);

    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    std::map<Operation, EKError> failures_;
    std::vector<TextPair> problems_;
    bool isAnswering_ = true;
    struct Undecided {
        Operate change;
        std::vector<SaveCompletion> waiters;
    };
    /// Changes that nobody knows the outcome of, by their numbers.
    std::map<std::uint64_t, Undecided> undecided_;
    std::uint64_t lastChange_ = 0;
};

}  // namespace kestrant
