#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/ObserverList.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace kestrant {

/// A database that stands in for another one, which can be exchanged while the program runs: whoever holds
/// the switch never notices more than that everything has changed and that access has to be requested anew.
/// Requests to a database that is no longer in use are still answered by it. Thread: main.
class EventStoreSwitch final : public EKEventStore {
  public:
    /// Makes a database when it is first used.
    using Make = std::function<std::unique_ptr<EKEventStore>()>;

    /// `name` is what tells databases apart.
    EventStoreSwitch(const QString& name, const Make& make);
    ~EventStoreSwitch() override;

    /// Uses another database from now on; one that was in use before is used again. What is in hand of the
    /// former one can no longer be saved: it is not found.
    void switchTo(const QString& name, const Make& make);

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

  private:
    [[nodiscard]] std::shared_ptr<const EKReminderData>
    storedReminder(const QString& identifier) const override;
    void use(const QString& name, const Make& make);

    /// By name. Former ones are kept, because their answers may be under way and items of theirs in hand.
    std::map<QString, std::unique_ptr<EKEventStore>> stores_;
    /// The one in use.
    EKEventStore* store_ = nullptr;
    Subscription changes_;
    ObserverList<> observers_;
};

}  // namespace kestrant
