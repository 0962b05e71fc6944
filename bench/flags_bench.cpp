// How long it takes to read the flags of 10,000 reminders by script, from the asking to the answer, and how
// long of that the main thread is busy.

#include "eventkit/model/OpenReminders.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/SerialWorker.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/flags/EventStoreScriptHost.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>

namespace kestrant {
namespace {

/// Counts the time spent in what is posted: that of the main thread.
class MeasuredScheduler : public ManualScheduler {
  public:
    using ManualScheduler::ManualScheduler;
    void post(std::function<void()> work) override {
        ManualScheduler::post([this, work = std::move(work)] {
            const auto begin = std::chrono::steady_clock::now();
            work();
            const auto taken = std::chrono::steady_clock::now() - begin;
            busy += taken;
            longest = std::max<std::chrono::nanoseconds>(longest, taken);
        });
    }
    std::chrono::nanoseconds busy{0};
    std::chrono::nanoseconds longest{0};
};

/// A folder of files, every third of which is flagged.
class Folder {
  public:
    explicit Folder(int count) {
        QDir(folder_.path()).mkpath(QStringLiteral("list"));
        for (int n = 0; n < count; ++n) {
            const QByteArray uid = QByteArray::number(n).rightJustified(32, '0');
            QFile file(folder_.filePath(QStringLiteral("list/%1.ics").arg(QString::fromLatin1(uid))));
            if (!file.open(QIODevice::WriteOnly))
                qFatal("cannot write");
            file.write("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:" + uid +
                       "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Reminder " + uid +
                       "\r\nDUE;VALUE=DATE:20260401\r\n" + (n % 3 == 0 ? "X-PINNED:true\r\n" : "") +
                       "END:VTODO\r\nEND:VCALENDAR\r\n");
        }
    }
    [[nodiscard]] QString path() const { return folder_.path(); }

  private:
    QTemporaryDir folder_;
};

void syncFlags(benchmark::State& state) {
    const Folder folder(static_cast<int>(state.range(0)));
    MeasuredScheduler scheduler{Instant(std::chrono::hours(24 * 20500))};
    MovableTimeZone currentZone;
    VdirEventStore store(folder.path(), scheduler, scheduler, currentZone);
    bool opened = false;
    store.requestFullAccessToReminders([&](bool, const auto&) { opened = true; });
    if (!scheduler.runUntil([&] { return opened; }))
        state.SkipWithError("not opened");
    OpenReminders openReminders(store, scheduler);
    EventStoreScriptHost host(store, openReminders, scheduler);
    SerialWorker queue;
    FlaggedReminderAutomation automation(host, queue, scheduler);
    MemoryUserDefaults defaults;
    qsizetype found = 0;
    scheduler.busy = scheduler.longest = {};
    for (auto _ : state) {
        state.PauseTiming();
        defaults.remove(preferenceKeys::reminderFlagNativeIDs);
        ReminderFlagSync sync(scheduler, defaults, &automation);
        state.ResumeTiming();
        sync.load();
        if (!scheduler.runUntil([&] { return !sync.isBusy(); }))
            state.SkipWithError("no answer");
        found = sync.index().nativeIDs.size();
    }
    const auto milliseconds = [](std::chrono::nanoseconds time) { return double(time.count()) / 1e6; };
    state.counters["flagged"] = double(found);
    state.counters["main_ms"] = milliseconds(scheduler.busy) / double(state.iterations());
    state.counters["main_longest_ms"] = milliseconds(scheduler.longest);
}

BENCHMARK(syncFlags)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace kestrant

BENCHMARK_MAIN();
