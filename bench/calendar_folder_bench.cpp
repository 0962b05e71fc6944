// How long a folder of events that has been read in takes to answer with the days of the coming week and of
// two years, from the question to the days with their rows, for 10,000 events over four years and for
// 100,000.

#include "calendar/CalendarFetch.h"
#include "calendar/CalendarGrouping.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/Clocks.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/QtScheduler.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <random>

namespace kestrant {
namespace {

const QDate today(2026, 3, 27);

/// A folder of events with the variety of a real one, read in.
class LoadedFolder {
  public:
    explicit LoadedFolder(int events) {
        QDir(folder_.path()).mkdir(QStringLiteral("calendar"));
        for (int n = 0; n < events; ++n)
            write(n);
        store_.requestFullAccessToEvents([](bool, const auto&) { QCoreApplication::exit(); });
        QCoreApplication::exec();
    }

    /// The days as the panel asks for them.
    QList<CalendarDayGroup> days(const DayRange& fetched, const DayRange& shown, CalendarMode mode) {
        QList<CalendarDayGroup> result;
        const CalendarPresent present{clock_.now(), zone_, Language::english, QLocale::c()};
        fetchCalendarItems(zone_.startOfDay(fetched.first), zone_.startOfDay(fetched.end), store_, nullptr,
                           zone_, [&](const CalendarItems& items) {
                               result = groupByDay(items, shown, mode, present);
                               QCoreApplication::exit();
                           });
        QCoreApplication::exec();
        return result;
    }

  private:
    int oneOf(int count) { return std::uniform_int_distribution(0, count - 1)(random_); }

    /// One in ten takes whole days, one in twenty a few days, one in thirty recurs.
    void write(int number) {
        const QByteArray uid = QByteArray::number(number).rightJustified(32, '0');
        const QDateTime start(today.addDays(oneOf(4 * 365) - 2 * 365), QTime(oneOf(24), 15 * oneOf(4)),
                              QTimeZone::utc());
        const auto time = [](const char* name, const QDateTime& value) {
            return QByteArray(name) + value.toString(QStringLiteral(":yyyyMMddTHHmmssZ\r\n")).toLatin1();
        };
        const auto day = [](const char* name, QDate value) {
            return QByteArray(name) + value.toString(QStringLiteral(";'VALUE=DATE:'yyyyMMdd\r\n")).toLatin1();
        };
        QByteArray lines;
        const int kind = oneOf(20);
        if (kind < 2)
            lines = day("DTSTART", start.date()) + day("DTEND", start.date().addDays(1 + oneOf(3)));
        else
            lines = time("DTSTART", start) +
                    time("DTEND", start.addSecs(kind == 2 ? 3600 * (25 + oneOf(65)) : 900 * (1 + oneOf(6))));
        if (oneOf(30) == 0)
            lines += "RRULE:FREQ=WEEKLY;COUNT=" + QByteArray::number(4 + oneOf(56)) + "\r\n";
        QFile file(folder_.filePath(QStringLiteral("calendar/%1.ics").arg(QLatin1String(uid))));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s", qUtf8Printable(file.errorString()));
        file.write(
            "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Kestrant//Benchmarks//EN\r\nBEGIN:VEVENT\r\nUID:" +
            uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Event " + QByteArray::number(oneOf(1000)) +
            "\r\n" + lines + "END:VEVENT\r\nEND:VCALENDAR\r\n");
    }

    std::mt19937 random_{11};
    QTemporaryDir folder_;
    TimeZone zone_{*TimeZone::named("Europe/Paris")};
    QtScheduler scheduler_;
    FixedClock clock_{zone_.instantAt(today, {12, 0})};
    FixedTimeZone currentZone_{zone_};
    VdirEventStore store_{folder_.path(), scheduler_, clock_, currentZone_};
};

LoadedFolder& folderOf(int events) {
    static std::map<int, LoadedFolder> folders;
    return folders.try_emplace(events, events).first->second;
}

void showDays(benchmark::State& state, const DayRange& fetched, const DayRange& shown, CalendarMode mode) {
    LoadedFolder& folder = folderOf(static_cast<int>(state.range(0)));
    qsizetype rows = 0;
    for ([[maybe_unused]] const auto& iteration : state) {
        rows = 0;
        for (const CalendarDayGroup& group : folder.days(fetched, shown, mode))
            rows += group.events.size();
    }
    if (rows == 0)
        state.SkipWithError("no rows");
    state.counters["rows"] = static_cast<double>(rows);
}

void week(benchmark::State& state) {
    const DayRange days{today, today.addDays(7)};
    showDays(state, {today.addDays(-1), days.end}, days, CalendarMode::compact);
}
BENCHMARK(week)->Arg(10'000)->Arg(100'000)->UseRealTime()->Unit(benchmark::kMillisecond);

void twoYears(benchmark::State& state) {
    const DayRange days{today.addYears(-1), today.addYears(1)};
    showDays(state, days, days, CalendarMode::full);
}
BENCHMARK(twoYears)->Arg(10'000)->Arg(100'000)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrant

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
