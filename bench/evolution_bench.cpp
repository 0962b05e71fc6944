// What it costs to show the desktop's own database: 10,000 tasks listed by Kestrant beside the bare call that
// lists them, saving one of them, flagging many, and the memory of a process that holds 10,000 tasks and
// 10,000 events. The service runs on a bus of its own with folders of its own.

#include "eventkit/evolution/EvolutionEventStore.h"
#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/items/ItemDatabase.h"
#include "foundation/Clocks.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/QtScheduler.h"
#include "support/EvolutionService.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace kestrant {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int itemCount = 10'000;
constexpr int runs = 7;

const TimeZone local{*TimeZone::named("Europe/Paris")};

double milliseconds(const std::function<void()>& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

QByteArray item(const QByteArray& component, int number) {
    const QByteArray day =
        QDate(2026, 1, 1).addDays(number % 700).toString(QStringLiteral("yyyyMMdd")).toLatin1();
    const QByteArray uid = QByteArray::number(number).rightJustified(32, '0');
    const bool isTask = component == "VTODO";
    return "BEGIN:" + component + "\r\nUID:" + uid +
           "\r\nDTSTAMP:20260101T000000Z\r\nCREATED:20260101T000000Z\r\nSUMMARY:Number " + uid +
           "\r\nDESCRIPTION:Something that is to be known about it\\, in a sentence or two.\r\n" +
           (isTask ? "DUE" : "DTSTART") + ";TZID=Europe/Paris:" + day + "T090000\r\n" +
           (isTask ? "PRIORITY:5\r\nX-APPLE-SORT-ORDER:1234\r\n" : "DURATION:PT1H\r\nLOCATION:Room 5\r\n") +
           "END:" + component + "\r\n";
}

/// A list with many items, as another program makes it; returns its identifier.
QString makeList(EKEntityType type) {
    const bool isTasks = type == EKEntityType::reminder;
    evolution::EvolutionStorage storage({}, std::chrono::minutes(5));
    items::ItemDatabase database(storage);
    (void)database.open(local);
    const auto calendar = database.saveCalendar(
        {.title = QStringLiteral("Many"), .allowsReminders = isTasks, .allowsEvents = !isTasks}, local);
    ForeignList list(calendar->calendarIdentifier,
                     isTasks ? E_CAL_CLIENT_SOURCE_TYPE_TASKS : E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
    GSList* components = nullptr;
    for (int number = 0; number < itemCount; ++number)
        components = g_slist_prepend(components, i_cal_component_new_from_string(
                                                     item(isTasks ? "VTODO" : "VEVENT", number).constData()));
    e_cal_client_create_objects_sync(list.client(), components, E_CAL_OPERATION_FLAG_NONE, nullptr, nullptr,
                                     nullptr);
    g_slist_free_full(components, g_object_unref);
    return calendar->calendarIdentifier;
}

void compareListing(const QString& list) {
    ForeignList foreign(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    evolution::EvolutionStorage storage({}, std::chrono::minutes(5));
    (void)storage.open();
    std::vector<double> bare;
    std::vector<double> ours;
    // By turns, so that whatever else the machine does meets both of them; the first one fills the caches.
    for (int run = 0; run <= runs; ++run) {
        const double call = milliseconds([&] {
            GSList* found = nullptr;
            e_cal_client_get_object_list_sync(foreign.client(), "#t", &found, nullptr, nullptr);
            g_slist_free_full(found, g_object_unref);
        });
        items::StorageContents contents;
        const double whole =
            milliseconds([&] { (void)storage.update(contents, {.everything = true}, local); });
        if (run > 0) {
            bare.push_back(call);
            ours.push_back(whole);
        }
    }
    std::printf("list %d tasks: bare call %.0f ms, Kestrant %.0f ms, %.2f times\n", itemCount, median(bare),
                median(ours), median(ours) / median(bare));
}

void measureSaving() {
    evolution::EvolutionStorage storage({}, std::chrono::minutes(5));
    items::ItemDatabase database(storage);
    (void)database.open(local);
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto base = (*database.snapshot()->reminders.begin()).data;
        EKReminderData edited = *base;
        edited.title += QStringLiteral("!");
        times.push_back(milliseconds([&] { (void)database.save(base, edited, Instant(), local); }));
    }
    std::printf("save one of them: %.0f ms\n", median(times));

    constexpr int together = 500;
    for (const bool atOnce : {false, true}) {
        std::vector<items::ReminderEdit> edits;
        for (const items::Entry& entry : database.snapshot()->reminders) {
            if (std::ssize(edits) < together)
                edits.push_back({entry.data, *entry.data});
        }
        for (items::ReminderEdit& edit : edits)
            edit.edited.isFlagged = !edit.base->isFlagged;
        const double time = milliseconds([&] {
            if (atOnce)
                (void)database.saveAll(edits, Instant(), local);
            else
                for (const items::ReminderEdit& edit : edits)
                    (void)database.save(edit.base, edit.edited, Instant(), local);
        });
        std::printf("flag %d of them %s: %.0f ms\n", together, atOnce ? "at once" : "one by one", time);
    }
}

/// Opens the whole database and tells how much memory the process then has.
int showResident() {
    QtScheduler scheduler;
    const SystemClock clock;
    const FixedTimeZone currentZone{local};
    EvolutionEventStore store(scheduler, clock, currentZone);
    store.requestFullAccessToReminders([](bool, const auto&) { QCoreApplication::exit(); });
    QCoreApplication::exec();
    std::size_t shown = 0;
    store.fetchReminders(EKEventStore::predicateForIncompleteReminders({}, {}, {}), [&](const auto& found) {
        shown = found.size();
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS") || line.startsWith("VmHWM"))
            std::printf("with %zu tasks and %d events: %s\n", shown, itemCount, line.constData());
    }
    return 0;
}

}  // namespace
}  // namespace kestrant

int main(int argc, char** argv) {
    using namespace kestrant;
    const QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--resident")))
        return showResident();
    (void)EvolutionService::emptied();
    const QString list = makeList(EKEntityType::reminder);
    compareListing(list);
    measureSaving();
    (void)makeList(EKEntityType::event);
    std::fflush(stdout);
    QProcess::execute(QCoreApplication::applicationFilePath(), {QStringLiteral("--resident")});
    EvolutionService::end();
    return 0;
}
