// How long it takes to count 100,000 completed reminders of ten years by days, and to tell of all four
// periods.

#include "recap/Recap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

namespace kestrant {
namespace {

void countRecaps(benchmark::State& state) {
    constexpr int count = 100'000;
    constexpr unsigned tenYears = 315'360'000;
    const Instant now{std::chrono::seconds(1'795'000'000)};
    std::mt19937 random(1);
    std::vector<CompletionRecord> records;
    for (int number = 0; number < count; ++number) {
        const Instant at = now - std::chrono::seconds(random() % tenYears);
        records.push_back({QString::number(number), at, at, 1});
    }
    std::ranges::sort(records, {}, &CompletionRecord::completedAt);
    const TimeZone zone(*TimeZone::named("Europe/Paris"));
    const QDate today = zone.dayOf(now);
    for (auto round : state) {
        const std::vector<CompletedDay> days = completedDays(records, zone, now);
        for (const RecapKind kind : {RecapKind::day, RecapKind::week, RecapKind::month, RecapKind::year})
            benchmark::DoNotOptimize(recapOf(periodContaining(kind, today, Qt::Monday), days, today));
    }
}
BENCHMARK(countRecaps)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrant

BENCHMARK_MAIN();
