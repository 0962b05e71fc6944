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

#include <limits>
#include <stdexcept>

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

void bareLoop(benchmark::State& state) {
    const QTemporaryDir folder;
    if (!metrics::MetricsDatabase::open(folder.path()))
        throw std::runtime_error("no database");
    sqlite3* database = nullptr;
    require(sqlite3_open(metrics::MetricsDatabase::pathIn(folder.path()).toUtf8().constData(), &database),
            SQLITE_OK);
    require(sqlite3_exec(database,
                         "PRAGMA journal_mode = DELETE; PRAGMA synchronous = FULL; PRAGMA fullfsync = ON; "
                         "PRAGMA secure_delete = ON; UPDATE aggregate_state SET collection_epoch = 'E'",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
    sqlite3_stmt* update = nullptr;
    require(
        sqlite3_prepare_v2(database,
                           "UPDATE aggregate_state SET pending_count = pending_count + ?, next_report_at = "
                           "COALESCE(next_report_at, ?) WHERE singleton = 1 AND pending_count <= ? AND "
                           "collection_epoch = ?",
                           -1, &update, nullptr),
        SQLITE_OK);
    for (auto _ : state) {
        sqlite3_bind_int64(update, 1, 1);
        sqlite3_bind_double(update, 2, 1774000000.0);
        sqlite3_bind_int64(update, 3, std::numeric_limits<sqlite3_int64>::max() - 1);
        sqlite3_bind_text(update, 4, "E", -1, SQLITE_STATIC);
        require(sqlite3_step(update), SQLITE_DONE);
        sqlite3_reset(update);
    }
    sqlite3_finalize(update);
    sqlite3_close(database);
    state.SetItemsProcessed(state.iterations());
}

void reporterCounts(benchmark::State& state) {
    const QTemporaryDir folder;
    ManualScheduler scheduler(*parseIso8601(u"2026-03-27T13:30:00Z"));
    MemoryUserDefaults defaults;
    AggregateCompletionReporter reporter(servicesIn(folder.path(), scheduler, scheduler, defaults));
    reporter.runDueCheck();
    scheduler.runPosted();
    for (auto _ : state) {
        reporter.recordCompletions(1);
        scheduler.runPosted();
    }
    if (reporter.latestDiagnostic())
        state.SkipWithError("the store was unavailable");
    state.SetItemsProcessed(state.iterations());
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

BENCHMARK(bareLoop)->Iterations(100)->Repetitions(7)->ReportAggregatesOnly()->UseRealTime()->Unit(
    benchmark::kMicrosecond);
BENCHMARK(reporterCounts)
    ->Iterations(100)
    ->Repetitions(7)
    ->ReportAggregatesOnly()
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(recordingThreadWaits)->Iterations(200)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kestrant

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
