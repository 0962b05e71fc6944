// How long it takes to bring 100,000 reminders into order, beside the bare sorting of numbers that stand for
// the same order, to answer a keystroke in the search over 10,000, and to read a
// line of quick add.

#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/NotificationCenter.h"
#include "preferences/Localization.h"
#include "reminders/quickadd/QuickAddParser.h"
#include "reminders/store/ReminderStore.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// A store that has loaded `count` reminders with the variety of a real database.
class LoadedStore {
  public:
    explicit LoadedStore(int count) {
        std::mt19937 random(7);
        const auto pick = [&](int below) { return std::uniform_int_distribution(0, below - 1)(random); };
        constexpr std::array verbs{"Call", "buy", "Écrire", "Review", "plan", "Pay", "ranger", "Fix"};
        constexpr std::array things{"the plumber", "oat milk", "dossier", "slides", "holiday", "rent"};
        EKCalendar list;
        list.calendarIdentifier = QStringLiteral("list");
        database.putCalendar(list);
        QStringList placed;
        for (int n = 0; n < count; ++n) {
            EKReminderData reminder;
            reminder.calendarItemIdentifier = QStringLiteral("%1").arg(n, 32, 16, QLatin1Char('0'));
            reminder.calendarIdentifier = list.calendarIdentifier;
            reminder.title = QStringLiteral("%1 %2 %3")
                                 .arg(QString::fromUtf8(verbs.at(pick(verbs.size()))),
                                      QString::fromUtf8(things.at(pick(things.size()))))
                                 .arg(pick(count));
            reminder.priority = pick(3) == 0 ? 1 + pick(9) : 0;
            const QDate day = QDate(2026, 1, 1).addDays(pick(500));
            if (const int kind = pick(3); kind == 1)
                reminder.dueDateComponents = DateComponents::fromDate(day);
            else if (kind == 2)
                reminder.dueDateComponents = DateComponents::fromDateTime(day, QTime(pick(24), 5 * pick(12)));
            reminder.creationDate = scheduler.now() - std::chrono::minutes(pick(1000000));
            if (pick(2) == 0)
                placed.append(reminder.calendarItemIdentifier);
            database.putReminder(std::move(reminder));
        }
        std::shuffle(placed.begin(), placed.end(), random);
        defaults.setStringList(QStringLiteral("reminderManualOrder"), placed);
        store.emplace(ReminderStoreServices{.eventStore = database,
                                            .openReminders = openReminders,
                                            .scheduler = scheduler,
                                            .clock = scheduler,
                                            .currentZone = currentZone,
                                            .defaults = defaults,
                                            .localization = localization,
                                            .notifications = notifications,
                                            .ledger = ledger});
        store->requestAccess();
        scheduler.runPosted();
    }

    QTemporaryDir folder;
    ManualScheduler scheduler{Instant(std::chrono::hours(24 * 20500))};
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
    Localization localization{preferences};
    NotificationCenter notifications;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    InMemoryEventStore database{scheduler, scheduler, currentZone};
    OpenReminders openReminders{database, scheduler};
    std::optional<ReminderStore> store;
};

LoadedStore& hundredThousand() {
    static LoadedStore loaded(100000);
    return loaded;
}

ReminderSortMode modeOf(const benchmark::State& state) {
    return choicesOf<ReminderSortMode>.at(static_cast<std::size_t>(state.range(0))).value;
}

void recomputeVisibleList(benchmark::State& state) {
    ReminderStore& store = *hundredThousand().store;
    const ReminderSortMode mode = modeOf(state);
    const ReminderSortMode other =
        mode == ReminderSortMode::title ? ReminderSortMode::priority : ReminderSortMode::title;
    for (auto _ : state) {
        state.PauseTiming();
        store.setSortMode(other);
        state.ResumeTiming();
        store.setSortMode(mode);
        benchmark::DoNotOptimize(store.visibleTasks().size());
    }
    state.SetLabel(rawValue(mode).toStdString());
}

/// The bare minimum: numbers that give this order, made ready beforehand, in the order the database has them.
void sortPreparedKeys(benchmark::State& state) {
    ReminderStore& store = *hundredThousand().store;
    store.setSortMode(ReminderSortMode::title);
    std::vector<ReminderTask> tasks = store.tasks();
    std::vector<std::pair<QString, std::uint32_t>> byID;
    for (std::uint32_t rank = 0; rank < tasks.size(); ++rank)
        byID.emplace_back(tasks[rank].id, rank);
    std::sort(byID.begin(), byID.end());
    const QStringList order = store.manualOrderIDs();
    QHash<QString, std::int64_t> places;
    for (qsizetype place = 0; place < order.size(); ++place)
        places.insert(order[place], place);
    using Key = std::array<std::int64_t, 3>;
    std::vector<Key> prepared;
    const ReminderSortMode mode = modeOf(state);
    for (const auto& [id, rank] : byID) {
        const ReminderTask& task = tasks[rank];
        const std::int64_t due = task.dueDate ? task.dueDate->time_since_epoch().count() : INT64_MAX;
        const std::int64_t created =
            task.creationDate ? task.creationDate->time_since_epoch().count() : INT64_MAX;
        const std::int64_t priority = task.priority == 0 ? 10 : task.priority;
        const std::int64_t rest =
            (task.dueDateIncludesTime ? std::int64_t{1} << 62 : 0) | priority << 32 | rank;
        switch (mode) {
        case ReminderSortMode::manual:
            prepared.push_back({places.value(id, INT64_MAX), due, rest});
            break;
        case ReminderSortMode::dueDate:
            prepared.push_back({due, rest, 0});
            break;
        case ReminderSortMode::priority:
            prepared.push_back({priority, due, rest});
            break;
        case ReminderSortMode::title:
            prepared.push_back({rank, 0, 0});
            break;
        case ReminderSortMode::creationOldestFirst:
            prepared.push_back({created, rank, 0});
            break;
        case ReminderSortMode::creationNewestFirst:
            prepared.push_back({-created, rank, 0});
            break;
        }
    }
    std::vector<Key> keys;
    for (auto _ : state) {
        state.PauseTiming();
        keys = prepared;
        state.ResumeTiming();
        std::sort(keys.begin(), keys.end());
        benchmark::DoNotOptimize(keys.data());
    }
    state.SetLabel(rawValue(mode).toStdString());
}

void searchKeystroke(benchmark::State& state) {
    LoadedStore loaded(10000);
    const QString query = QStringLiteral("écrire oat mi");
    int length = 0;
    for (auto _ : state) {
        length = length % static_cast<int>(query.size()) + 1;
        loaded.store->setSearchQuery(query.left(length));
        benchmark::DoNotOptimize(loaded.store->visibleTasks().size());
    }
}

void applyFetch(benchmark::State& state) {
    LoadedStore loaded(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        loaded.store->reloadTasks();
        loaded.scheduler.runPosted();
    }
}

QuickAddContext quickAddContext() {
    return {.now = Instant(std::chrono::hours(24 * 20500)), .zone = *TimeZone::named("Europe/Paris")};
}

/// A line of quick add as it is typed, one reading for each letter.
void quickAddKeystroke(benchmark::State& state) {
    QString line = QStringLiteral(
        "Call the plumber about the kitchen tap tomorrow morning at 9 or monday evening #home ");
    while (line.size() < 200)
        line += QStringLiteral("and then every 2 weeks on mon and thu until june ");
    line.truncate(200);
    const QuickAddContext context = quickAddContext();
    int length = 0;
    for (auto _ : state) {
        length = length % static_cast<int>(line.size()) + 1;
        benchmark::DoNotOptimize(parseQuickAdd(line.left(length), context).title.size());
    }
}

void quickAddPhrase(benchmark::State& state) {
    const std::array lines{
        QStringLiteral("Gym at 7 tomorrow morning"), QStringLiteral("loyer le 5 de chaque mois"),
        QStringLiteral("Dinner with Maren friday 7pm-9pm"), QStringLiteral("buy mars bars")};
    const QuickAddContext context = quickAddContext();
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(parseQuickAdd(lines.at(next++ % lines.size()), context).title.size());
}

/// Time grows with the length of the line, whatever stands in it.
void quickAddNumbers(benchmark::State& state) {
    const QString line = QStringLiteral("12 5 2026 ").repeated(state.range(0) / 10);
    const QuickAddContext context = quickAddContext();
    for (auto _ : state)
        benchmark::DoNotOptimize(parseQuickAdd(line, context).title.size());
}

BENCHMARK(quickAddPhrase)->Unit(benchmark::kMicrosecond);
BENCHMARK(quickAddKeystroke)->Unit(benchmark::kMicrosecond);
BENCHMARK(quickAddNumbers)->Arg(1000)->Arg(32000)->Unit(benchmark::kMillisecond);
BENCHMARK(sortPreparedKeys)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(recomputeVisibleList)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(searchKeystroke)->Unit(benchmark::kMillisecond);
BENCHMARK(applyFetch)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrant

BENCHMARK_MAIN();
