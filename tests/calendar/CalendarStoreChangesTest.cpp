#include "CalendarStoreFixture.h"

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Code = CalendarError::Code;
using Operation = InMemoryEventStore::Operation;

/// What a completion was told, and how often.
struct Outcome {
    int calls = 0;
    std::optional<CalendarError> error;

    [[nodiscard]] CalendarStore::Completion completion() {
        return [this](const tl::expected<void, CalendarError>& result) {
            ++calls;
            error = result ? std::nullopt : std::optional(result.error());
        };
    }
};

class CalendarStoreChanges : public CalendarStoreTest {
  protected:
    CalendarStoreChanges() {
        observers.push_back(
            notifications.observe(QStringLiteral("kestrantCalendarEventCreated"), [this] { ++created; }));
        observers.push_back(
            notifications.observe(QStringLiteral("kestrantCalendarEventChanged"), [this] { ++changed; }));
    }
    /// Lunch every day at 12:30 for four days from today.
    void putLunches() {
        database.putEvent(
            anEvent("lunch").lasting(paris({2026, 3, 27}, {12, 30}), 1h).repeating("FREQ=DAILY;COUNT=4"));
    }
    /// Carries out one change and returns its failure.
    template <typename Change>
    std::optional<CalendarError> after(Change change) {
        Outcome outcome;
        change(outcome.completion());
        EXPECT_EQ(outcome.calls, 0) << "never from within the call";
        scheduler.advance(1s);
        EXPECT_EQ(outcome.calls, 1);
        return outcome.error;
    }
    [[nodiscard]] std::optional<CalendarError> creating(const NewCalendarEvent& event) {
        return after([&](auto completion) { store->createEvent(event, completion); });
    }
    [[nodiscard]] std::optional<CalendarError> updating(const CalendarEventItem& item,
                                                        const CalendarEventEditDetails& details) {
        return after([&](auto completion) { store->updateEvent(item, details, completion); });
    }
    [[nodiscard]] std::optional<CalendarError> deleting(const CalendarEventItem& item) {
        return after([&](auto completion) { store->deleteItem(item, completion); });
    }
    [[nodiscard]] tl::expected<CalendarEventEditDetails, CalendarError>
    details(const CalendarEventItem& item) {
        std::optional<tl::expected<CalendarEventEditDetails, CalendarError>> result;
        store->loadEditDetails(item, [&](const auto& loaded) { result = loaded; });
        EXPECT_FALSE(result) << "never from within the call";
        scheduler.advance(1s);
        return result.value_or(tl::unexpected(CalendarError{}));
    }
    [[nodiscard]] std::vector<std::string> storedEvents() const {
        std::vector<std::string> result;
        for (const EKEventData& event : database.allEvents())
            result.push_back(event.calendarIdentifier.toStdString() + " " + event.title.toStdString() + " " +
                             toIso8601(event.startDate).toStdString());
        return result;
    }
    static NewCalendarEvent newEvent(std::optional<QString> calendarID = {}) {
        return {.title = QStringLiteral(" Call\n"),
                .startDate = now() + 1h,
                .endDate = now() + 2h,
                .calendarID = std::move(calendarID)};
    }

    int created = 0;
    int changed = 0;
    std::vector<Subscription> observers;
};

TEST_F(CalendarStoreChanges, ANewEventGoesIntoTheChosenCalendarOrTheFirstThatTakesIt) {
    putCalendar("calendar", false);
    loadedStore();
    for (const auto& calendarID :
         {std::optional<QString>(), std::optional(QStringLiteral("gone")),
          std::optional(QStringLiteral("list")), std::optional(QStringLiteral("other"))})
        EXPECT_EQ(creating(newEvent(calendarID)), std::nullopt);
    EXPECT_THAT(storedEvents(), testing::Each("other Call 2026-03-27T12:00:00Z"));
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: Call Call Call Call"));
    EXPECT_EQ(created, 4);
    EXPECT_EQ(changed, 0);
    ASSERT_EQ(store->writableCalendars().size(), 1U);
    EXPECT_EQ(store->writableCalendars().front().calendarIdentifier, QStringLiteral("other"));
}

TEST_F(CalendarStoreChanges, ARefusedChangeWritesNothing) {
    database.putEvent(anEvent("lunch").lasting(now() + 1h, 1h));
    loadedStore();
    const CalendarEventItem lunch = row("lunch");
    const CalendarEventEditDetails unchanged = *details(lunch);
    const auto before = storedEvents();

    NewCalendarEvent blank = newEvent();
    blank.title = QStringLiteral("  ");
    EXPECT_EQ(creating(blank)->code, Code::emptyTitle);
    CalendarEventEditDetails edited = unchanged;
    edited.endDate = edited.startDate;
    EXPECT_EQ(updating(lunch, edited)->code, Code::invalidDateRange);
    edited = unchanged;
    edited.calendarID = QStringLiteral("list");
    EXPECT_EQ(updating(lunch, edited)->code, Code::calendarUnavailable);

    for (const Operation operation : {Operation::save, Operation::remove})
        database.setFailure(operation, diskFull());
    edited = unchanged;
    edited.title = QStringLiteral("dinner");
    EXPECT_EQ(creating(newEvent()), CalendarError::from(diskFull()));
    EXPECT_EQ(updating(lunch, edited), CalendarError::from(diskFull()));
    EXPECT_EQ(deleting(lunch)->message(), diskFull().message);

    makeStore();
    EXPECT_EQ(creating(newEvent())->code, Code::notAuthorized);
    EXPECT_EQ(updating(lunch, edited)->code, Code::notAuthorized);
    EXPECT_EQ(deleting(lunch)->code, Code::notAuthorized);
    EXPECT_EQ(storedEvents(), before);
    EXPECT_EQ(created + changed, 0);
}

TEST_F(CalendarStoreChanges, AnEditReachesOnlyTheOccurrenceShown) {
    putLunches();
    loadedStore();
    const CalendarEventItem sunday = store->dayGroups()[2].events.front();
    auto edited = *details(sunday);
    EXPECT_EQ(edited.startDate, paris({2026, 3, 29}, {12, 30}));
    edited.title = QStringLiteral("brunch");
    edited.startDate -= 2h;
    EXPECT_EQ(updating(sunday, edited), std::nullopt);
    EXPECT_THAT(storedEvents(),
                ElementsAre("calendar lunch 2026-03-27T11:30:00Z", "calendar lunch 2026-03-28T11:30:00Z",
                            "calendar brunch 2026-03-29T08:30:00Z", "calendar lunch 2026-03-30T10:30:00Z"));
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch", "TOMORROW · SAT 28: lunch", "SUN 29: brunch",
                                     "MON 30: lunch"));
    EXPECT_EQ(changed, 1);

    edited.title = QStringLiteral("late brunch");
    EXPECT_EQ(updating(row("brunch"), edited), std::nullopt) << "a moved occurrence is found again";
    EXPECT_EQ(deleting(row("late brunch")), std::nullopt);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch", "TOMORROW · SAT 28: lunch", "MON 30: lunch"));
}

TEST_F(CalendarStoreChanges, AnEventThatMovedElsewhereIsFoundWithinFiveMinutesOrIfItIsTheOnlyOne) {
    struct Case {
        Duration moved;
        bool isSeries;
        bool isFound;
    };
    for (const Case& param : {Case{4min, true, true}, Case{6min, true, false}, Case{6min, false, true}}) {
        const Instant start = now() + 1h;
        const auto put = [&](Instant first) {
            if (param.isSeries)
                database.putEvent(anEvent("e").lasting(first - 24h, 1h).repeating("FREQ=DAILY;COUNT=2"));
            else
                database.putEvent(anEvent("e").lasting(first, 1h));
        };
        put(start);
        loadedStore();
        const CalendarEventItem shownRow = row("e");
        put(start + param.moved);
        const auto found = details(shownRow);
        ASSERT_EQ(found.has_value(), param.isFound);
        if (found)
            EXPECT_EQ(found->startDate, start + param.moved);
        else
            EXPECT_EQ(found.error().code, Code::itemNotFound);
    }
}

TEST_F(CalendarStoreChanges, WhatIsGoneCannotBeEditedButItsDeletionSucceeds) {
    database.putEvent(anEvent("lunch").lasting(now() + 1h, 1h));
    database.putReminder(aReminder("milk").due({2026, 3, 27}));
    loadedStore();
    const CalendarEventItem lunch = row("lunch");
    const CalendarEventItem milk = row("milk");
    const auto edited = *details(lunch);
    database.dropEvent(QStringLiteral("lunch"));
    database.dropReminder(QStringLiteral("milk"));
    EXPECT_EQ(updating(lunch, edited)->code, Code::itemNotFound);
    EXPECT_EQ(deleting(lunch), std::nullopt);
    EXPECT_EQ(deleting(milk), std::nullopt);
    EXPECT_EQ(changed, 2);
    EXPECT_EQ(details(milk).error().code, Code::itemNotFound) << "a reminder is no event";
}

TEST_F(CalendarStoreChanges, ACalendarDeletedDuringAnEditIsUnavailable) {
    database.putEvent(anEvent("lunch").lasting(now() + 1h, 1h));
    loadedStore();
    const CalendarEventItem lunch = row("lunch");
    auto edited = *details(lunch);
    database.dropCalendar(QStringLiteral("calendar"));
    EXPECT_EQ(updating(lunch, edited)->code, Code::calendarUnavailable);
    edited.calendarID = QStringLiteral("other");
    EXPECT_EQ(updating(lunch, edited)->code, Code::itemNotFound);
}

TEST_F(CalendarStoreChanges, ADeletedRowGoesBeforeTheLoadThatFollows) {
    database.putEvent(anEvent("trip").allDay({2026, 3, 27}, {2026, 3, 29}));
    database.putEvent(anEvent("call").lasting(paris({2026, 3, 29}, {9, 0}), 1h));
    database.putReminder(aReminder("milk").due({2026, 3, 29}));
    loadedStore();
    const std::vector<CalendarEventItem> rows{row("trip"), row("milk")};
    executor.hold();
    EXPECT_EQ(deleting(rows[0]), std::nullopt);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27:", "SUN 29: milk call"));
    EXPECT_EQ(deleting(rows[1]), std::nullopt);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27:", "SUN 29: call"));
    EXPECT_TRUE(store->isLoading());
    EXPECT_THAT(database.reminders(), IsEmpty());
    EXPECT_EQ(changed, 2);
    executor.release();
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27:", "SUN 29: call"));
}

TEST_F(CalendarStoreChanges, AReminderLeavesTheCalendarByLosingItsDueDate) {
    database.putReminder(aReminder("milk").due({2026, 3, 27}));
    database.putEvent(anEvent("lunch").lasting(now() + 1h, 1h));
    loadedStore();
    const auto removing = [&](const CalendarEventItem& item) {
        return after([&](auto completion) { store->removeReminderFromCalendar(item, completion); });
    };
    clearingResult = tl::unexpected(text("No.", "Non."));
    EXPECT_EQ(removing(row("milk"))->message(), text("No.", "Non."));
    EXPECT_EQ(changed, 0);
    clearingResult = {};
    executor.hold();
    EXPECT_EQ(removing(row("milk")), std::nullopt);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch"));
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(removing(row("lunch"))->code, Code::itemNotFound);
    EXPECT_THAT(cleared, ElementsAre("milk", "milk"));
}

}  // namespace
}  // namespace kestrant
