#include "ReminderStoreFixture.h"

#include <QJsonArray>

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = ReminderAccessState::Kind;

class ReminderStoreLoading : public ReminderStoreTest {
  protected:
    /// Counts the signal from now on.
    template <typename Signal>
    [[nodiscard]] std::shared_ptr<int> count(Signal signal) {
        auto counter = std::make_shared<int>(0);
        QObject::connect(&*store, signal, &*store, [counter] { ++*counter; });
        return counter;
    }
};

TEST_F(ReminderStoreLoading, NothingIsReadBeforeAccessIsGranted) {
    database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
    put(aReminder("a"));
    makeStore();
    store->reloadTasks();
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, Kind::notDetermined);
    EXPECT_FALSE(store->hasLoaded());

    std::vector<Kind> states;
    QObject::connect(&*store, &ReminderStore::accessStateChanged, &*store,
                     [&] { states.push_back(store->accessState().kind); });
    store->requestAccess();
    store->requestAccess();
    scheduler.advance(1s);
    EXPECT_THAT(states, ElementsAre(Kind::requesting, Kind::authorized));
    EXPECT_THAT(visibleIDs(), ElementsAre("a"));
    EXPECT_EQ(store->lists().size(), 2U);
    EXPECT_FALSE(store->isLoading());
}

TEST_F(ReminderStoreLoading, RefusedAccessIsToldApartFromADatabaseThatDoesNotOpen) {
    const auto stateAfterRequest = [&] {
        makeStore().requestAccess();
        scheduler.advance(1s);
        return store->accessState();
    };
    database.setAuthorizationStatus(EKAuthorizationStatus::denied);
    EXPECT_EQ(stateAfterRequest().kind, Kind::denied);
    database.setAuthorizationStatus(EKAuthorizationStatus::restricted);
    EXPECT_EQ(stateAfterRequest().kind, Kind::restricted);
    database.setFailure(InMemoryEventStore::Operation::requestAccess, diskFull());
    EXPECT_EQ(stateAfterRequest(), ReminderAccessState::failed(diskFull().message));

    database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
    store->scheduleReload();
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, Kind::failed) << "tried again in vain";
    put(aReminder("a"));
    database.setFailure(InMemoryEventStore::Operation::requestAccess, std::nullopt);
    store->scheduleReload();
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, Kind::authorized);
    EXPECT_THAT(visibleIDs(), ElementsAre("a"));
}

TEST_F(ReminderStoreLoading, ABurstOfChangesIsReadOnceThreeTenthsOfASecondAfterTheLast) {
    loadedStore();
    const auto loads = count(&ReminderStore::isLoadingChanged);
    put(aReminder("a"));
    scheduler.advance(200ms);
    put(aReminder("b"));
    scheduler.advance(299ms);
    EXPECT_EQ(*loads, 0);
    scheduler.advance(1ms);
    EXPECT_EQ(*loads, 2) << "once true, once false";
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b"));
}

TEST_F(ReminderStoreLoading, WhatTheCalendarHasChangedIsReadAnew) {
    loadedStore();
    const auto loads = count(&ReminderStore::isLoadingChanged);
    notifications.post(QStringLiteral("kestrantCalendarEventChanged"));
    scheduler.advance(1s);
    EXPECT_EQ(*loads, 2) << "once true, once false";
}

TEST_F(ReminderStoreLoading, ALateResultOfAnEarlierFetchIsDropped) {
    loadedStore();
    put(aReminder("a"));
    store->reloadTasks();
    put(aReminder("b"));
    store->reloadTasks();
    const auto changes = count(&ReminderStore::tasksChanged);
    scheduler.runPosted();
    EXPECT_EQ(*changes, 1);
    EXPECT_THAT(visibleIDs(), ElementsAre("a", "b"));
    EXPECT_FALSE(store->isLoading());
}

TEST_F(ReminderStoreLoading, AResultThatArrivesAfterTheStoreIsGoneHarmsNobody) {
    makeStore().requestAccess();
    store.reset();
    scheduler.runPosted();
    loadedStore().reloadTasks();
    store.reset();
    scheduler.advance(1s);
}

TEST_F(ReminderStoreLoading, TheSelectedListIsReadAloneUntilItVanishes) {
    put(aReminder("a"));
    put(aReminder("b").in(QStringLiteral("other")));
    loadedStore().setSelectedListID(QStringLiteral("other"));
    scheduler.runPosted();
    EXPECT_THAT(visibleIDs(), ElementsAre("b"));
    database.dropCalendar(QStringLiteral("other"));
    scheduler.advance(1s);
    EXPECT_THAT(visibleIDs(), ElementsAre("a"));
    EXPECT_EQ(store->lists().size(), 1U);
}

TEST_F(ReminderStoreLoading, FiltersAndSearchNarrowWhatIsVisibleAndCountsDoNot) {
    put(aReminder("today").due({2026, 3, 27}));
    put(aReminder("late today").due({2026, 3, 27}, {9, 0}));
    put(aReminder("later").due({2026, 4, 2}));
    loadedStore();
    const ReminderFilterCounts counts{.today = 2, .overdue = 1, .flagged = 0};
    EXPECT_EQ(store->filterCounts(), counts);
    store->setShowsTodayOnly(true);
    EXPECT_THAT(visibleIDs(), ElementsAre("today", "late today"));
    store->setSearchQuery(QStringLiteral(" LATE "));
    EXPECT_THAT(visibleIDs(), ElementsAre("late today"));
    EXPECT_THAT(ids(store->tasks()), ElementsAre("today", "late today"));
    store->setShowsTodayOnly(false);
    EXPECT_THAT(visibleIDs(), ElementsAre("late today", "later"));
    store->setSearchQuery({});
    store->setShowsOverdueOnly(true);
    EXPECT_THAT(visibleIDs(), ElementsAre("late today"));
    store->setShowsOverdueOnly(false);
    store->setShowsFlaggedOnly(true);
    EXPECT_THAT(visibleIDs(), IsEmpty());
    EXPECT_EQ(store->filterCounts(), counts);
}

TEST_F(ReminderStoreLoading, SignalsComeOnlyWithAChange) {
    put(aReminder("a"));
    loadedStore();
    const auto tasks = count(&ReminderStore::tasksChanged);
    const auto lists = count(&ReminderStore::listsChanged);
    const auto counts = count(&ReminderStore::filterCountsChanged);
    const auto records = count(&ReminderStore::completionRecordsChanged);
    store->reloadLists();
    store->reloadTasks();
    store->setSearchQuery(store->searchQuery());
    store->setSortMode(store->sortMode());
    store->setShowsTodayOnly(false);
    scheduler.advance(1s);
    EXPECT_EQ(*tasks + *lists + *counts + *records, 0);
}

TEST_F(ReminderStoreLoading, AtMidnightTodayIsAnotherDay) {
    put(aReminder("27th").due({2026, 3, 27}));
    put(aReminder("28th").due({2026, 3, 28}));
    loadedStore().setShowsTodayOnly(true);
    EXPECT_THAT(visibleIDs(), ElementsAre("27th"));
    scheduler.advance(12h - 1s - 1us);
    EXPECT_THAT(visibleIDs(), ElementsAre("27th"));
    scheduler.advance(1us);
    EXPECT_THAT(visibleIDs(), ElementsAre("28th"));
    EXPECT_EQ(store->filterCounts(), (ReminderFilterCounts{.today = 1, .overdue = 1}));
    scheduler.advance(24h);
    EXPECT_THAT(visibleIDs(), IsEmpty());
    EXPECT_EQ(store->filterCounts().overdue, 2);
}

TEST_F(ReminderStoreLoading, AfterSleepTheDayIsTakenAnew) {
    put(aReminder("28th").due({2026, 3, 28}));
    loadedStore().setShowsTodayOnly(true);
    scheduler.jumpWall(20h);
    store->systemDidWake();
    EXPECT_THAT(visibleIDs(), ElementsAre("28th"));
    scheduler.advance(paris({2026, 3, 29}) - scheduler.now());
    EXPECT_THAT(visibleIDs(), IsEmpty());
}

TEST_F(ReminderStoreLoading, AnotherTimeZoneMovesWholeDaysAndFloatingTimesWithIt) {
    put(aReminder("27th").due({2026, 3, 27}));
    put(aReminder("28th").due({2026, 3, 28}));
    put(aReminder("floating").due({2026, 3, 28}, {1, 0}));
    put(aReminder("in Paris").due({2026, 3, 27}, {18, 0}, "Europe/Paris"));
    loadedStore().setShowsTodayOnly(true);
    EXPECT_THAT(visibleIDs(), ElementsAre("27th", "in Paris"));
    currentZone.moveTo("Pacific/Kiritimati");
    scheduler.runPosted();
    EXPECT_THAT(visibleIDs(), ElementsAre("28th", "floating", "in Paris"));
    const ReminderTask* day = store->task(QStringLiteral("28th"));
    ASSERT_NE(day, nullptr);
    EXPECT_EQ(day->dueDate, at("Pacific/Kiritimati", {2026, 3, 28}));
    scheduler.advance(at("Pacific/Kiritimati", {2026, 3, 29}) - scheduler.now());
    EXPECT_THAT(visibleIDs(), IsEmpty());
}

TEST_F(ReminderStoreLoading, ATaskBecomesOverdueWhileItIsLookedAt) {
    put(aReminder("soon").due({2026, 3, 27}, {12, 5}));
    loadedStore().setShowsOverdueOnly(true);
    const auto present = count(&ReminderStore::presentChanged);
    scheduler.advance(5min - 1s);
    EXPECT_THAT(visibleIDs(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_THAT(visibleIDs(), ElementsAre("soon"));
    EXPECT_EQ(*present, 1);
}

TEST_F(ReminderStoreLoading, SelectionAndOrderAreRestored) {
    put(aReminder("a").in(QStringLiteral("other")));
    put(aReminder("b").in(QStringLiteral("other")));
    put(aReminder("c"));
    loadedStore().setSelectedListID(QStringLiteral("other"));
    store->commitManualOrder({QStringLiteral("b"), QStringLiteral("a")});
    loadedStore();
    EXPECT_EQ(store->selectedListID(), QStringLiteral("other"));
    EXPECT_EQ(store->sortMode(), ReminderSortMode::manual);
    EXPECT_THAT(visibleIDs(), ElementsAre("b", "a"));
    store->setSelectedListID(std::nullopt);
    EXPECT_TRUE(defaults.object(QStringLiteral("selectedReminderListID")).isUndefined());
}

TEST_F(ReminderStoreLoading, PreferencesThatMakeNoSenseAreAsGoodAsNone) {
    put(aReminder("a"));
    defaults.set(QStringLiteral("selectedReminderListID"), 7);
    defaults.set(QStringLiteral("reminderSortMode"), QStringLiteral("byColour"));
    defaults.set(QStringLiteral("reminderManualOrder"), QJsonArray{QStringLiteral("a"), 1});
    loadedStore();
    EXPECT_EQ(store->selectedListID(), std::nullopt);
    EXPECT_EQ(store->sortMode(), ReminderSortMode::dueDate);
    EXPECT_THAT(visibleIDs(), ElementsAre("a"));
    EXPECT_EQ(defaults.string(QStringLiteral("reminderSortMode")), QStringLiteral("byColour"));
}

}  // namespace
}  // namespace kestrant
