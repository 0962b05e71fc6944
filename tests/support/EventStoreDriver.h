#pragma once

#include "eventkit/model/EKEventStore.h"
#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <tuple>
#include <vector>

namespace kestrant {

/// Asks a store and waits for the answer.
class EventStoreDriver {
  public:
    using SaveAnswer = tl::expected<EKSaveResult, EKError>;

    EventStoreDriver(EKEventStore& store, ManualScheduler& scheduler)
        : store_(store)
        , scheduler_(scheduler) {}

    std::optional<EKError> requestAccess() {
        std::optional<std::optional<EKError>> answer;
        store_.requestFullAccessToReminders(
            [&](bool, std::optional<EKError> error) { answer = std::move(error); });
        wait(answer);
        return answer.value_or(std::nullopt);
    }
    SaveAnswer save(const EKReminderRef& reminder) {
        return ask<SaveAnswer>([&](auto done) { store_.save(reminder, done); });
    }
    std::vector<SaveAnswer> saveAll(const std::vector<EKReminderRef>& reminders) {
        return ask<std::vector<SaveAnswer>>([&](auto done) { store_.saveAll(reminders, done); });
    }
    SaveAnswer remove(const EKReminderRef& reminder) {
        return ask<SaveAnswer>([&](auto done) { store_.remove(reminder, done); });
    }
    /// Takes back what this answer tells of.
    SaveAnswer revert(const EKSaveResult& done) {
        return ask<SaveAnswer>(
            [&](auto answer) { store_.revert(done.change, done.calendarItemIdentifier, answer); });
    }
    tl::expected<EKCalendar, EKError> saveCalendar(const EKCalendar& calendar) {
        return ask<tl::expected<EKCalendar, EKError>>(
            [&](auto done) { store_.saveCalendar(calendar, done); });
    }
    /// A new list; returns its identifier.
    QString addList(const QString& title) {
        const auto saved = saveCalendar({.title = title});
        EXPECT_TRUE(saved.has_value());
        return saved ? saved->calendarIdentifier : QString();
    }
    std::vector<EKReminderRef> fetch(const EKPredicate& predicate) {
        std::vector<EKReminderRef> result;
        for (auto& reminder : ask<EKReminders>([&](auto done) { store_.fetchReminders(predicate, done); }))
            result.push_back(std::make_shared<EKReminder>(store_, std::move(reminder)));
        return result;
    }
    /// Titles, sorted.
    std::vector<QString> titles(const EKPredicate& predicate) {
        std::vector<QString> result;
        for (const EKReminderRef& reminder : fetch(predicate))
            result.push_back(reminder->data.title);
        std::sort(result.begin(), result.end());
        return result;
    }
    std::vector<QString> openTitles() {
        return titles(EKEventStore::predicateForIncompleteReminders({}, {}, {}));
    }
    /// Saves a new reminder with these values.
    EKReminderRef add(const EKReminderData& data) {
        auto reminder = std::make_shared<EKReminder>(store_);
        reminder->data = data;
        reminder->data.calendarItemIdentifier.clear();
        const auto answer = save(reminder);
        EXPECT_TRUE(answer.has_value()) << (answer ? "" : qPrintable(answer.error().message.english));
        return reminder;
    }

    SaveAnswer save(const EKEventRef& event) {
        return ask<SaveAnswer>([&](auto done) { store_.save(event, EKSpan::thisEvent, done); });
    }
    SaveAnswer remove(const EKEventRef& event) {
        return ask<SaveAnswer>([&](auto done) { store_.remove(event, EKSpan::thisEvent, done); });
    }
    /// In the order of their starts.
    std::vector<EKEventRef> events(Instant from, Instant to,
                                   std::optional<std::vector<QString>> calendars = {}) {
        const auto found = ask<EKEvents>([&](auto done) {
            store_.events(EKEventStore::predicateForEvents(from, to, std::move(calendars)), done);
        });
        std::vector<EKEventRef> result;
        for (const auto& data : found.events)
            result.push_back(std::make_shared<EKEvent>(data));
        std::sort(result.begin(), result.end(), [](const EKEventRef& a, const EKEventRef& b) {
            return std::tie(a->data.startDate, a->data.title) < std::tie(b->data.startDate, b->data.title);
        });
        return result;
    }
    /// Saves a new event with these values.
    EKEventRef add(const EKEventData& data) {
        auto event = std::make_shared<EKEvent>();
        event->data = data;
        const auto answer = save(event);
        EXPECT_TRUE(answer.has_value()) << (answer ? "" : qPrintable(answer.error().message.english));
        return event;
    }

  private:
    template <typename Answer, typename Ask>
    Answer ask(Ask question) {
        std::optional<Answer> answer;
        question([&](Answer given) { answer = std::move(given); });
        EXPECT_FALSE(answer.has_value()) << "answered from within the call";
        wait(answer);
        return std::move(answer).value();
    }
    template <typename Answer>
    void wait(const std::optional<Answer>& answer) {
        EXPECT_TRUE(scheduler_.runUntil([&] { return answer.has_value(); }));
    }

    EKEventStore& store_;
    ManualScheduler& scheduler_;
};

}  // namespace kestrant
