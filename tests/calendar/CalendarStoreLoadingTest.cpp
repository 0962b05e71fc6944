#include "CalendarStoreFixture.h"
#include "foundation/SerialWorker.h"
#include "foundation/TimeZone.h"

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = CalendarAccessState::Kind;

class CalendarStoreLoading : public CalendarStoreTest {
  protected:
    void put(const char* title, Instant start, Duration length = 1h) {
        database.putEvent(anEvent(title).lasting(start, length));
    }
    /// Loaded, in the full calendar.
    CalendarStore& fullStore() {
        loadedStore().setShowsAllEvents(true);
        scheduler.advance(1s);
        return *store;
    }
};

TEST_F(CalendarStoreLoading, NothingIsReadBeforeAccessIsGranted) {
    put("lunch", now());
    database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
    makeStore().reload();
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, Kind::notDetermined);
    EXPECT_FALSE(store->hasLoaded());

    std::vector<Kind> states;
    QObject::connect(store.get(), &CalendarStore::accessStateChanged, store.get(),
                     [&] { states.push_back(store->accessState().kind); });
    store->requestAccess();
    store->requestAccess();
    scheduler.advance(1s);
    EXPECT_THAT(states, ElementsAre(Kind::requesting, Kind::authorized));
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch!"));
    EXPECT_FALSE(store->isLoading());
}

TEST_F(CalendarStoreLoading, RefusedAccessIsToldApartFromADatabaseThatDoesNotOpen) {
    const auto stateAfterRequest = [&](EKAuthorizationStatus status) {
        database.setAuthorizationStatus(status);
        makeStore().requestAccess();
        scheduler.advance(1s);
        return store->accessState();
    };
    EXPECT_EQ(stateAfterRequest(EKAuthorizationStatus::denied).kind, Kind::denied);
    EXPECT_EQ(stateAfterRequest(EKAuthorizationStatus::restricted).kind, Kind::restricted);
    database.setFailure(InMemoryEventStore::Operation::requestAccess, diskFull());
    EXPECT_EQ(stateAfterRequest(EKAuthorizationStatus::notDetermined),
              CalendarAccessState::failed(diskFull().message));
    EXPECT_FALSE(store->hasLoaded());

    database.setFailure(InMemoryEventStore::Operation::requestAccess, std::nullopt);
    store->requestAccess();
    scheduler.advance(1s);
    EXPECT_TRUE(store->hasLoaded());
}

TEST_F(CalendarStoreLoading, ABurstOfChangesIsOneLoadThreeTenthsAfterTheLast) {
    loadedStore();
    const auto loads = count(&CalendarStore::isLoadingChanged);
    for (int change = 0; change < 10; ++change) {
        put("lunch", now());
        scheduler.advance(30ms);
    }
    scheduler.advance(269ms);
    EXPECT_EQ(*loads, 0);
    scheduler.advance(1ms);
    EXPECT_EQ(*loads, 2) << "begun and ended";
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch!"));
}

TEST_F(CalendarStoreLoading, WhatDoesNotChangeIsNotAnnounced) {
    put("lunch", now());
    loadedStore();
    const auto announced = count(&CalendarStore::dayGroupsChanged);
    store->reload();
    scheduler.advance(1s);
    EXPECT_EQ(*announced, 0);
}

TEST_F(CalendarStoreLoading, OnlyTheLastOfSeveralLoadsIsShown) {
    put("lunch", now());
    put("far", paris({2026, 9, 1}));
    loadedStore();
    std::vector<std::vector<std::string>> seen;
    QObject::connect(store.get(), &CalendarStore::dayGroupsChanged, store.get(),
                     [&] { seen.push_back(shown()); });
    executor.hold();
    database.dropEvent(QStringLiteral("lunch"));
    store->reload();
    scheduler.advance(10ms);
    store->setShowsAllEvents(true);
    scheduler.advance(10ms);
    EXPECT_TRUE(store->isLoading());
    executor.release();
    scheduler.advance(10ms);
    EXPECT_THAT(seen, ElementsAre(ElementsAre("TUE 1: far")));
    EXPECT_FALSE(store->isLoading());
}

TEST_F(CalendarStoreLoading, RowsMadeOnAnotherThreadArriveOnThisOne) {
    for (int event = 0; event < 500; ++event)
        database.putEvent(anEvent(qPrintable(QString::number(event))).lasting(now() + 24h, 1h));
    SerialWorker thread;
    makeStore(thread).requestAccess();
    store->reload();
    EXPECT_TRUE(scheduler.runUntil([&] { return store->hasLoaded(); }));
    EXPECT_EQ(store->upcomingEvents().size(), 500);
    store->setShowsAllEvents(true);
    scheduler.runPosted();
    store.reset();
}

TEST_F(CalendarStoreLoading, AStoreMayGoWhileItLoads) {
    loadedStore();
    executor.hold();
    store->reload();
    scheduler.advance(10ms);
    store->reload();
    store.reset();
    executor.release();
    scheduler.advance(1s);
    EXPECT_EQ(scheduler.pendingCount(), 0U);
}

TEST_F(CalendarStoreLoading, TheWeekReachesSixDaysAheadAndRemindersFollowThePreference) {
    put("sixth", paris({2026, 4, 2}, {23, 0}));
    put("seventh", paris({2026, 4, 3}, {0, 0}));
    database.putReminder(aReminder("reminder").due({2026, 4, 2}));
    loadedStore();
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27:", "THU 2: reminder sixth"));
    preferences.showRemindersInCalendar.set(false);
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27:", "THU 2: sixth"));
    preferences.setLanguage(Language::french);
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("AUJOURD’HUI · VEN. 27:", "JEU. 2: sixth"));
}

TEST_F(CalendarStoreLoading, RowsFollowTheTimeOfDay) {
    put("lunch", paris({2026, 3, 27}, {12, 30}));
    put("dinner", paris({2026, 3, 27}, {20, 0}));
    loadedStore();
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch dinner"));
    EXPECT_EQ(store->nextEvent()->title, QStringLiteral("lunch"));
    const auto loads = count(&CalendarStore::isLoadingChanged);
    scheduler.advance(30min);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: lunch! dinner"));
    EXPECT_EQ(store->nextEvent()->title, QStringLiteral("dinner"));
    scheduler.advance(1h);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: dinner"));
    EXPECT_EQ(*loads, 0);
    put("tea", paris({2026, 3, 27}, {14, 0}));
    scheduler.advance(30min);
    EXPECT_THAT(shown(), ElementsAre("TODAY · FRI 27: tea! dinner")) << "it came by one load";
    scheduler.advance(8h);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(CalendarStoreLoading, TodayMovesAtMidnightOnWakingAndWithTheZone) {
    put("friday", paris({2026, 3, 27}, {23, 0}), 30min);
    put("saturday", paris({2026, 3, 28}, {9, 0}));
    put("sunday", paris({2026, 3, 29}, {9, 0}));
    EKEventData monday = anEvent("monday").lasting(paris({2026, 3, 30}, {23, 0}), 1h);
    monday.timeZone = TimeZone::named("Europe/Paris");
    database.putEvent(monday);
    loadedStore();
    scheduler.advance(paris({2026, 3, 28}) - scheduler.now());
    EXPECT_THAT(shown(),
                ElementsAre("TODAY · SAT 28: saturday", "TOMORROW · SUN 29: sunday", "MON 30: monday"));

    scheduler.jumpWall(24h);
    store->systemDidWake();
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("TODAY · SUN 29: sunday", "TOMORROW · MON 30: monday"));
    scheduler.advance(23h);
    EXPECT_THAT(shown(), ElementsAre("TODAY · MON 30: monday")) << "after a day of 23 hours";

    currentZone.moveTo("Asia/Tokyo");
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("TODAY · MON 30:", "TOMORROW · TUE 31: monday"));
}

TEST_F(CalendarStoreLoading, TheFullCalendarCoversAYearEachWay) {
    put("before", paris({2025, 3, 26}, {9, 0}));
    put("first", paris({2025, 3, 27}, {9, 0}));
    put("over", paris({2026, 3, 27}, {9, 0}));
    put("last", paris({2027, 3, 26}, {9, 0}));
    put("after", paris({2027, 3, 27}, {9, 0}));
    fullStore();
    EXPECT_THAT(shown(), ElementsAre("THU 27: first", "TODAY · FRI 27: over", "FRI 26: last"));
    EXPECT_EQ(store->loadedCalendarStart(), paris({2025, 3, 27}));
    EXPECT_EQ(store->loadedCalendarEnd(), paris({2027, 3, 27}));
    const auto loads = count(&CalendarStore::isLoadingChanged);
    store->setShowsAllEvents(true);
    EXPECT_EQ(*loads, 0);
    store->setShowsAllEvents(false);
    scheduler.advance(1s);
    EXPECT_EQ(store->loadedCalendarStart(), std::nullopt);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(CalendarStoreLoading, PagingAddsThreeYearsAndTellsWhenThereWasNothing) {
    put("boundary", paris({2025, 3, 26}, {12, 0}), 24h);
    put("old", paris({2023, 1, 1}, {9, 0}));
    fullStore();
    ASSERT_THAT(shown(), ElementsAre("THU 27: boundary"));
    store->loadMore(true);
    EXPECT_TRUE(store->isLoadingMoreEvents());
    EXPECT_FALSE(store->isLoading());
    EXPECT_EQ(store->loadedCalendarStart(), paris({2022, 3, 27}));
    store->loadMore(true);
    store->loadMore(false);
    scheduler.advance(1s);
    EXPECT_THAT(shown(), ElementsAre("SUN 1: old", "WED 26: boundary", "THU 27: boundary"));
    EXPECT_FALSE(store->isLoadingMoreEvents());
    EXPECT_FALSE(store->needsManualLoadEarlier());
    EXPECT_EQ(store->loadedCalendarStart(), paris({2022, 3, 27})) << "one step at a time";
    EXPECT_EQ(store->loadedCalendarEnd(), paris({2027, 3, 27}));

    store->loadMore(true);
    scheduler.advance(1s);
    EXPECT_TRUE(store->needsManualLoadEarlier());
    EXPECT_FALSE(store->needsManualLoadLater());
    put("ancient", paris({2018, 1, 1}, {9, 0}));
    scheduler.advance(1s);
    store->loadMore(true);
    EXPECT_FALSE(store->needsManualLoadEarlier());
    scheduler.advance(1s);
    EXPECT_FALSE(store->needsManualLoadEarlier());
    store->loadMore(false);
    scheduler.advance(1s);
    EXPECT_TRUE(store->needsManualLoadLater());
    EXPECT_THAT(shown(), ElementsAre("MON 1: ancient", "SUN 1: old", "WED 26: boundary", "THU 27: boundary"));
}

TEST_F(CalendarStoreLoading, WhatIsTooMuchIsSaidAndCutFarFromToday) {
    for (int i = 0; i < 70; ++i)
        database.putEvent(
            anEvent(qPrintable(QString::number(i))).allDay({2020, 1, 1}, {2040, 1, 1}).in("calendar"));
    loadedStore();
    EXPECT_FALSE(store->shortage().has_value());
    store->setShowsAllEvents(true);
    scheduler.advance(1s);
    const auto rows = [this] { return store->upcomingEvents().size(); };
    EXPECT_TRUE(store->shortage().has_value());
    EXPECT_EQ(rows(), mostRows / 70 * 70);
    const QDate first = store->dayGroups().front().day;
    const QDate last = store->dayGroups().back().day;
    const QDate today(2026, 3, 27);
    EXPECT_LE(std::abs(first.daysTo(today) - today.daysTo(last)), 1);
    // Nothing is added beyond, and nobody goes on looking for it.
    store->loadMore(false);
    scheduler.advance(1s);
    EXPECT_EQ(store->dayGroups().back().day, last);
    EXPECT_TRUE(store->needsManualLoadLater());
    store->setShowsAllEvents(false);
    scheduler.advance(1s);
    EXPECT_FALSE(store->shortage().has_value());
}

TEST_F(CalendarStoreLoading, ALoadTakesAnOvertakenExtensionAlong) {
    put("old", paris({2023, 1, 1}, {9, 0}));
    fullStore();
    executor.hold();
    store->loadMore(true);
    scheduler.advance(10ms);
    store->reload();
    EXPECT_FALSE(store->isLoadingMoreEvents());
    scheduler.advance(10ms);
    executor.release();
    scheduler.advance(10ms);
    EXPECT_THAT(shown(), ElementsAre("SUN 1: old"));
    EXPECT_FALSE(store->needsManualLoadEarlier());
}

TEST_F(CalendarStoreLoading, PagingDoesNothingInTheWeekAndStopsWhereTheCalendarEnds) {
    loadedStore().loadMore(true);
    EXPECT_FALSE(store->isLoadingMoreEvents());
    store->setShowsAllEvents(true);
    store->loadMore(true);
    EXPECT_FALSE(store->isLoadingMoreEvents()) << "while the first load is under way";
    scheduler.advance(1s);
    for (int step = 0; step < 700; ++step) {
        store->loadMore(true);
        scheduler.advance(1ms);
    }
    EXPECT_EQ(store->loadedCalendarStart(), paris({3, 3, 27}));
    EXPECT_FALSE(store->isLoadingMoreEvents());
}

}  // namespace
}  // namespace kestrant
