// A process that runs one check of the reporter and ends with it: metrics_process FOLDER URL KILL-AT. With
// KILL-AT above 0 it kills itself before that change to the disk.

#include "foundation/QtScheduler.h"
#include "metrics/AggregateCompletionReporter.h"
#include "metrics/FaultyDisk.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <QCoreApplication>

#include <sqlite3.h>

#include <csignal>

int main(int argc, char** argv) {
    using namespace kestrant;
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    const int killAt = arguments[3].toInt();
    int step = 0;
    const FaultyDisk disk([&] {
        if (++step == killAt)
            std::raise(SIGKILL);
        return SQLITE_OK;
    });
    QtScheduler scheduler;
    ManualScheduler clock(*parseIso8601(u"2026-03-27T13:30:00Z"));
    MemoryUserDefaults defaults({{QStringLiteral("kestrantAggregateMetricsCollectionEpoch"),
                                  QStringLiteral("0F0E0D0C-0B0A-4908-8706-050403020100")}});
    AggregateCompletionReporter reporter(
        {.context = scheduler,
         .clock = clock,
         .defaults = defaults,
         .information =
             InformationDictionary({{InformationDictionary::aggregateMetricsBaseUrlKey, arguments[2]},
                                    {InformationDictionary::aggregateMetricsPrivacyReadyKey, true},
                                    {InformationDictionary::aggregateMetricsUploadEnabledKey, true}}),
         .folder = arguments[1]});
    reporter.runDueCheck([&] { QCoreApplication::exit(reporter.latestDiagnostic() ? 1 : 0); });
    return QCoreApplication::exec();
}
