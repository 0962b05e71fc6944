// How long it takes to make days and rows of a calendar: the coming week, two years at once, one crowded day,
// and how long the main thread is held up by a page of the full calendar.

#include "calendar/CalendarFetch.h"
#include "calendar/CalendarGrouping.h"
#include "calendar/CalendarStore.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/NotificationCenter.h"
#include "preferences/Preferences.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"
#include "ui/calendar/CalendarRowModel.h"

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <random>
#include <thread>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

const TimeZone zone(*TimeZone::named("Europe/Paris"));
const QDate today(2026, 3, 27);

CalendarPresent present() {
    return {zone.instantAt(today, {12, 0}), zone, Language::english,
            QLocale(QLocale::English, QLocale::UnitedStates)};
}

/// Events over the four years around today: one in five takes whole days, most others begin on the half hour.
std::vector<EKEventData> someEvents(int count) {
    std::mt19937 random(11);
    const auto pick = [&](int below) { return std::uniform_int_distribution(0, below - 1)(random); };
    constexpr std::array titles{"Call",     "stand-up", "Déjeuner", "Review",
                                "planning", "École",    "Train",    "Gym"};
    std::vector<EKEventData> result;
    for (int n = 0; n < count; ++n) {
        EKEventData event;
        event.calendarItemIdentifier = QStringLiteral("%1").arg(n, 32, 16, QLatin1Char('0'));
        event.eventIdentifier = event.calendarItemIdentifier;
        event.calendarIdentifier = QStringLiteral("calendar");
        event.title = QString::fromUtf8(titles.at(pick(titles.size()))) + QString::number(pick(100));
        const QDate day = today.addDays(pick(4 * 365) - 2 * 365);
        event.isAllDay = pick(5) == 0;
        if (event.isAllDay) {
            event.startDate = zone.startOfDay(day);
            event.endDate = zone.startOfDay(day.addDays(1 + (pick(10) == 0 ? pick(14) : 0)));
        } else {
            event.startDate = zone.instantAt(day, QTime(7 + pick(14), 30 * pick(2)));
            event.endDate = event.startDate + std::chrono::minutes(30 * (1 + pick(4)));
        }
        result.push_back(std::move(event));
    }
    return result;
}

CalendarItems asItems(std::vector<EKEventData> events) {
    CalendarItems items;
    for (EKEventData& event : events)
        items.events.push_back(std::make_shared<const EKEventData>(std::move(event)));
    items.calendars.insert(QStringLiteral("calendar"), {QStringLiteral("Work"), Color{10, 132, 255}});
    return items;
}

void compactWeek(benchmark::State& state) {
    const CalendarItems items = asItems(someEvents(static_cast<int>(state.range(0))));
    for ([[maybe_unused]] const auto& iteration : state)
        benchmark::DoNotOptimize(groupByDay(items, compactDays(present()), CalendarMode::compact, present()));
}
BENCHMARK(compactWeek)->Arg(10'000)->Unit(benchmark::kMillisecond);

void fourYears(benchmark::State& state) {
    const CalendarItems items = asItems(someEvents(static_cast<int>(state.range(0))));
    const DayRange days{today.addYears(-2), today.addYears(2)};
    for ([[maybe_unused]] const auto& iteration : state)
        benchmark::DoNotOptimize(groupByDay(items, days, CalendarMode::full, present()));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(fourYears)->RangeMultiplier(10)->Range(1'000, 100'000)->Unit(benchmark::kMillisecond)->Complexity();

void twoYears(benchmark::State& state) {
    const CalendarItems items = asItems(someEvents(static_cast<int>(state.range(0))));
    const DayRange days{today.addYears(-1), today.addYears(1)};
    for ([[maybe_unused]] const auto& iteration : state)
        benchmark::DoNotOptimize(groupByDay(items, days, CalendarMode::full, present()));
}
BENCHMARK(twoYears)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// 5,000 events at the same minute, so that every title counts, and one that lasts 400 days.
void crowdedDay(benchmark::State& state) {
    auto events = someEvents(5'001);
    for (EKEventData& event : events) {
        event.isAllDay = false;
        event.startDate = zone.instantAt(today, {14, 0});
        event.endDate = event.startDate + 1h;
    }
    events.back().endDate = zone.startOfDay(today.addDays(400));
    const CalendarItems items = asItems(std::move(events));
    const DayRange days{today.addYears(-1), today.addYears(1)};
    for ([[maybe_unused]] const auto& iteration : state)
        benchmark::DoNotOptimize(groupByDay(items, days, CalendarMode::full, present()));
}
BENCHMARK(crowdedDay)->Unit(benchmark::kMillisecond);

/// What the main thread does when a page of three years arrives beside the rows it shows: the store publishes
/// the days, and with a second argument the panel's list takes them over.
void showPage(benchmark::State& state) {
    ManualScheduler scheduler(present().now);
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    const Preferences preferences(defaults, [] { return QLocale::c(); });
    NotificationCenter notifications;
    ManualExecutor executor;
    InMemoryEventStore database(scheduler, scheduler, currentZone);
    database.putCalendar({.calendarIdentifier = QStringLiteral("calendar"), .allowsEvents = true});
    for (EKEventData& event : someEvents(static_cast<int>(state.range(0))))
        database.putEvent(std::move(event));
    OpenReminders openReminders(database, scheduler);
    CalendarStore store({.eventStore = database,
                         .openReminders = openReminders,
                         .scheduler = scheduler,
                         .clock = scheduler,
                         .currentZone = currentZone,
                         .preferences = preferences,
                         .notifications = notifications,
                         .executor = executor,
                         .locale = [] { return QLocale::c(); },
                         .clearReminderDueDate = {}});
    CalendarRowModel rows([](const CalendarDayGroup&, int) { return CalendarRow{}; });
    if (state.range(1) != 0)
        QObject::connect(&store, &CalendarStore::dayGroupsChanged, &rows,
                         [&] { rows.setGroups(store.dayGroups()); });
    store.requestAccess();
    scheduler.advance(1s);
    for ([[maybe_unused]] const auto& iteration : state) {
        store.setShowsAllEvents(true);
        scheduler.runPosted();
        executor.hold();
        store.loadMore(false);
        scheduler.runPosted();
        std::thread([&] { executor.release(); }).join();
        executor.hold();
        const auto start = std::chrono::steady_clock::now();
        scheduler.runPosted();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        executor.release();
        store.setShowsAllEvents(false);
        scheduler.runPosted();
    }
}
BENCHMARK(showPage)
    ->ArgNames({"events", "list"})
    ->ArgsProduct({{10'000, 100'000}, {0, 1}})
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrant

BENCHMARK_MAIN();
