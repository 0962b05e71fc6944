#pragma once

#include "eventkit/EKEventStore.h"
#include "foundation/ObserverList.h"

#include <map>
#include <memory>

namespace kestrant {

/// A database that lives in memory, with everything the real ones do: for pictures, for demonstrations and
/// for tests. Every result arrives on a later turn of the scheduler. Besides the database's own operations it
/// can be changed "by another program" and told to fail. Thread: main only.
class InMemoryEventStore final : public EKEventStore {
  public:
    enum class Operation { requestAccess, save, remove, revert, saveCalendar };

    /// Full access is granted from the start.
    InMemoryEventStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar);
    ~InMemoryEventStore() override;

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
    void awaitOutcome(const QString& identifier, SaveCompletion completion) override;
    void events(const EKEventPredicate& matching, EventsCompletion completion) override;
    [[nodiscard]] EKEventRef event(const QString& withIdentifier) override;
    void save(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) override;
    void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override;
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override;
    [[nodiscard]] std::vector<TextPair> problems() const override { return problems_; }

    // What the person or another program does. Each change of the contents is announced like any other.

    /// Sets the status of both entity types; a request then answers with it (notDetermined is granted on
    /// request).
    void setAuthorizationStatus(EKAuthorizationStatus status);
    /// Every later operation of this kind fails with the error, until it is set to nothing.
    void setFailure(Operation operation, std::optional<EKError> error);
    /// While the database does not answer, changes of reminders end with outcomeUnknown; they are carried out
    /// when it answers again.
    void setAnswering(bool answers);
    void setProblems(std::vector<TextPair> problems) { problems_ = std::move(problems); }
    /// Adds or replaces a list; an empty identifier is filled in. Returns the identifier. Lists keep the
    /// order in which they were added; the default list is the first one that may be changed.
    QString putCalendar(EKCalendar calendar);
    /// The calendar for new events, in place of the first one that may be changed.
    void setDefaultForNewEvents(const QString& identifier) { defaultForNewEvents_ = identifier; }
    /// Removes a list with everything in it.
    void dropCalendar(const QString& identifier);
    /// Adds or replaces a reminder as it is given; an empty identifier is filled in. Returns the identifier.
    QString putReminder(EKReminderData data);
    void dropReminder(const QString& identifier);
    /// Adds or replaces an event that does not recur; empty identifiers are filled in. Returns the
    /// identifier.
    QString putEvent(EKEventData data);
    /// Adds or replaces a series, given by its occurrences: rules are kept, not followed (as they are for
    /// five years when a new event is saved). The occurrences get the first one's identifiers and rules; an
    /// absent occurrenceDate is the start. Returns the identifier.
    QString putSeries(std::vector<EKEventData> occurrences);
    void dropEvent(const QString& identifier);

    /// The present values; null when there is no such reminder.
    [[nodiscard]] std::shared_ptr<const EKReminderData> reminder(const QString& identifier) const;
    [[nodiscard]] std::vector<EKReminderData> reminders() const;
    /// Every occurrence, the series in the order of their identifiers.
    [[nodiscard]] std::vector<EKEventData> allEvents() const;

  private:
    struct SaveRequest;
    struct Change;
    struct EventChange;
    using Occurrences = std::vector<std::shared_ptr<const EKEventData>>;

    [[nodiscard]] std::shared_ptr<const EKReminderData>
    storedReminder(const QString& identifier) const override;
    [[nodiscard]] bool hasAccess() const;
    [[nodiscard]] std::optional<EKError> failure(Operation operation) const;
    [[nodiscard]] tl::expected<EKSaveResult, EKError> carryOut(const SaveRequest& request);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> takeBack(const Change& change,
                                                               const QString& identifier);
    [[nodiscard]] std::optional<EKError> reasonNotToTakeBack(const Change& change, const QString& identifier);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> takeBack(const EventChange& change);
    QString putOccurrences(std::vector<EKEventData> occurrences);
    [[nodiscard]] tl::expected<EKSaveResult, EKError>
    carryOut(const EKEventRef& event, EKEventData edited, const std::shared_ptr<const EKEventData>& base);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> addEvent(const EKEventRef& event, EKEventData edited);
    /// What a save did that made the event and took `former`, if there is one, out of its series.
    [[nodiscard]] EKSaveResult storedAs(const EKEventRef& event, const QString& identifier,
                                        const std::shared_ptr<const EKEventData>& former) const;
    /// The occurrence that is now what it was before, or after, a change; absent when it is gone.
    [[nodiscard]] std::shared_ptr<const EKEventData> present(const EKEventData& occurrence) const;
    void putBack(EKEventData occurrence);
    void takeOut(const EKEventData& occurrence);
    [[nodiscard]] std::optional<EKError>
    reasonNotToRemove(const std::shared_ptr<const EKEventData>& base) const;
    /// The position of the occurrence that was read as `base`; absent when it is gone.
    [[nodiscard]] std::optional<std::size_t> positionOf(const EKEventData& base) const;
    [[nodiscard]] std::optional<EKError> reasonNotToChange(const QString& calendarIdentifier) const;
    void requestAccess(AccessCompletion completion);
    using Operate = std::function<tl::expected<EKSaveResult, EKError>()>;
    /// Carries a change of a reminder out, unless the database does not answer.
    [[nodiscard]] tl::expected<EKSaveResult, EKError> attempt(const QString& identifier, Operate change);
    [[nodiscard]] tl::expected<EKSaveResult, EKError> takeOut(const QString& identifier);
    [[nodiscard]] QString newIdentifier();
    void store(const QString& identifier, EKReminderData data);
    void announceChange();
    /// Runs work on a later turn, unless the store is gone by then.
    void later(std::function<void()> work);

    Scheduler& scheduler_;
    const Clock& clock_;
    const CurrentCalendar& calendar_;
    EKAuthorizationStatus status_ = EKAuthorizationStatus::fullAccess;
    std::map<Operation, EKError> failures_;
    std::vector<EKCalendar> calendars_;
    std::optional<QString> defaultForNewEvents_;
    std::map<QString, std::shared_ptr<const EKReminderData>> entries_;
    std::map<QString, Occurrences> series_;
    std::vector<TextPair> problems_;
    bool isAnswering_ = true;
    /// By the identifiers of their reminders: changes that nobody knows the outcome of, and who waits for it.
    std::vector<std::pair<QString, Operate>> undecided_;
    std::vector<std::pair<QString, SaveCompletion>> outcomeWaiters_;
    ObserverList<> observers_;
    bool changeAnnounced_ = false;
    int nextIdentifier_ = 1;
    std::shared_ptr<InMemoryEventStore*> self_ = std::make_shared<InMemoryEventStore*>(this);
};

}  // namespace kestrant
