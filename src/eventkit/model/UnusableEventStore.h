#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Scheduler.h"

#include <utility>

namespace kestrant {

/// The database where there is none: it holds nothing, and every request fails with the reason. Thread: main
/// only.
class UnusableEventStore final : public EKEventStore {
  public:
    /// The scheduler outlives the store.
    UnusableEventStore(Scheduler& scheduler, EKError reason)
        : scheduler_(scheduler)
        , reason_(std::move(reason)) {}

    [[nodiscard]] EKAuthorizationStatus authorizationStatus(EKEntityType) const override {
        return EKAuthorizationStatus::notDetermined;
    }
    void requestFullAccessToReminders(AccessCompletion completion) override;
    void requestFullAccessToEvents(AccessCompletion completion) override;
    [[nodiscard]] std::vector<EKCalendar> calendars(EKEntityType) const override { return {}; }
    [[nodiscard]] std::optional<EKCalendar> calendarWithIdentifier(const QString&) const override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<EKCalendar> defaultCalendarForNewReminders() const override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<EKCalendar> defaultCalendarForNewEvents() const override {
        return std::nullopt;
    }
    void fetchReminders(const EKPredicate& matching, FetchCompletion completion) override;
    [[nodiscard]] EKReminderRef calendarItem(const QString&) override { return nullptr; }
    void saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) override;
    void save(const EKReminderRef&, SaveCompletion completion) override { refuse(std::move(completion)); }
    void remove(const EKReminderRef&, SaveCompletion completion) override { refuse(std::move(completion)); }
    void revert(const std::shared_ptr<const EKItemChange>&, const QString&,
                SaveCompletion completion) override {
        refuse(std::move(completion));
    }
    void awaitOutcome(const EKError&, SaveCompletion completion) override { refuse(std::move(completion)); }
    void events(const EKEventPredicate& matching, EventsCompletion completion) override;
    [[nodiscard]] EKEventRef event(const QString&) override { return nullptr; }
    void save(const EKEventRef&, EKSpan, SaveCompletion completion) override {
        refuse(std::move(completion));
    }
    void remove(const EKEventRef&, EKSpan, SaveCompletion completion) override {
        refuse(std::move(completion));
    }
    void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override;
    [[nodiscard]] Subscription observeChanges(std::function<void()>) override { return {}; }

  private:
    [[nodiscard]] std::shared_ptr<const EKReminderData> storedReminder(const QString&) const override {
        return nullptr;
    }
    void refuse(SaveCompletion completion);

    Scheduler& scheduler_;
    EKError reason_;
};

}  // namespace kestrant
