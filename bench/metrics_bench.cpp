// How many completions a second can be counted, each in a transaction of its own that is on the disk before
// the next begins, beside a bare SQLite loop doing the same update with the same settings in the same place;
// and how long recording one holds up the thread that records it. Mind that the folder for temporary files
// must be on a real disk (set TMPDIR otherwise): in memory synchronising costs nothing.

#include "foundation/Clocks.h"
#include "metrics/AggregateCompletionReporter.h"
#include "metrics/EventLoopThread.h"
#include "metrics/MetricsDatabase.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

namespace kestrant {
namespace {

void require(int result, int expected) {
    if (result != expected)
        throw std::runtime_error(sqlite3_errstr(result));
}

AggregateCompletionReporter::Services servicesIn(const QString& folder, Scheduler& context, Clock& clock,
                                                 UserDefaults& defaults) {
    using D = InformationDictionary;
    return {.context = context,
            .clock = clock,
            .defaults = defaults,
            .information = D({{D::aggregateMetricsBaseUrlKey, QStringLiteral("http://localhost:9")},
                              {D::aggregateMetricsPrivacyReadyKey, true},
                              {D::aggregateMetricsUploadEnabledKey, true}}),
            .folder = folder};
}

/// The bare loop: one prepared statement, run again and again.
class BareCounter {
  public:
    explicit BareCounter(const QString& folder) {
        if (!metrics::MetricsDatabase::open(folder))
            throw std::runtime_error("no database");
        require(sqlite3_open(metrics::MetricsDatabase::pathIn(folder).toUtf8().constData(), &database_),
                SQLITE_OK);
        require(
            sqlite3_exec(database_,
                         "PRAGMA journal_mode = DELETE; PRAGMA synchronous = FULL; PRAGMA fullfsync = ON; "
                         "PRAGMA secure_delete = ON; UPDATE aggregate_state SET collection_epoch = 'E'",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
        require(sqlite3_prepare_v2(
                    database_,
                    "UPDATE aggregate_state SET pending_count = pending_count + ?, next_report_at = "
                    "COALESCE(next_report_at, ?) WHERE singleton = 1 AND pending_count <= ? AND "
                    "collection_epoch = ?",
                    -1, &update_, nullptr),
                SQLITE_OK);
    }
    BareCounter(const BareCounter&) = delete;
    BareCounter& operator=(const BareCounter&) = delete;
    ~BareCounter() {
        sqlite3_finalize(update_);
        sqlite3_close(database_);
    }

    void count() {
        sqlite3_bind_int64(update_, 1, 1);
        sqlite3_bind_double(update_, 2, 1774000000.0);
        sqlite3_bind_int64(update_, 3, std::numeric_limits<sqlite3_int64>::max() - 1);
        sqlite3_bind_text(update_, 4, "E", -1, SQLITE_STATIC);
        require(sqlite3_step(update_), SQLITE_DONE);
        sqlite3_reset(update_);
    }

  private:
    sqlite3* database_ = nullptr;
    sqlite3_stmt* update_ = nullptr;
};

double secondsFor(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// One count of each by turns, so that whatever else the machine does slows both down alike.
void countingBesideBareLoop(benchmark::State& state) {
    const QTemporaryDir folder;
    const QTemporaryDir bareFolder;
    BareCounter bare(bareFolder.path());
    ManualScheduler scheduler(*parseIso8601(u"2026-03-27T13:30:00Z"));
    MemoryUserDefaults defaults;
    AggregateCompletionReporter reporter(servicesIn(folder.path(), scheduler, scheduler, defaults));
    reporter.recordCompletions(1);
    scheduler.runPosted();
    std::vector<double> bareTimes;
    std::vector<double> times;
    for (auto _ : state) {
        bareTimes.push_back(secondsFor([&] { bare.count(); }));
        times.push_back(secondsFor([&] {
            reporter.recordCompletions(1);
            scheduler.runPosted();
        }));
    }
    if (reporter.latestDiagnostic())
        state.SkipWithError("the store was unavailable");
    state.counters["bare_per_second"] = 1 / median(bareTimes);
    state.counters["counts_per_second"] = 1 / median(times);
    state.counters["times_bare"] = median(times) / median(bareTimes);
}

void recordingThreadWaits(benchmark::State& state) {
    const QTemporaryDir folder;
    SystemClock clock;
    MemoryUserDefaults defaults;
    {
        // An epoch, so that both threads only read the preferences from here on.
        ManualScheduler scheduler(clock.now());
        AggregateCompletionReporter first(servicesIn(folder.path(), scheduler, clock, defaults));
        first.runDueCheck();
        scheduler.runPosted();
    }
    EventLoopThread thread;
    AggregateCompletionReporter reporter(servicesIn(folder.path(), thread, clock, defaults));
    for (auto _ : state)
        reporter.recordCompletions(1);
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(countingBesideBareLoop)->Iterations(500)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(recordingThreadWaits)->Iterations(200)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kestrant

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
