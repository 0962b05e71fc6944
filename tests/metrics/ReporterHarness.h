#pragma once

#include "foundation/InformationDictionary.h"
#include "metrics/AggregateCompletionReporter.h"
#include "metrics/MetricsDatabase.h"
#include "metrics/Sqlite.h"
#include "network/HttpTestServer.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"

#include <QTemporaryDir>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrant {

/// The service that adds up reports: it keeps each once, by its identifier, whatever it answers.
class CountingService {
  public:
    CountingService();

    /// What it stored, by report identifier.
    std::map<QString, qint64> stored;
    /// Answers instead of the service, which has stored the report by then unless this says otherwise.
    struct Mood {
        Answer answer;
        enum class Storing { before, never } storing = Storing::never;
    };
    /// Asked for each request; absent: it works as it should.
    std::function<std::optional<Mood>()> mood;
    HttpTestServer server;

    [[nodiscard]] qint64 total() const;
    [[nodiscard]] InformationDictionary information() const;

  private:
    [[nodiscard]] Answer answer(const RecordedRequest& request);
};

/// How many completions are somewhere: stored by the service, or in a report that it has not stored, or still
/// waiting in the database at `path` to be put in one.
[[nodiscard]] qint64 accountedFor(const QString& path, const CountingService& service);

/// A reporter on the test's own thread, with a clock that stands still until told and real files and
/// connections.
class ReporterHarness {
  public:
    ReporterHarness();

    /// As when the application starts, and ends.
    void start();
    void stop();
    /// Counts, and lets the reporter do what follows from that at once.
    void count(qint64 completions);
    void check();
    void setEnabled(bool enabled);
    /// Lets work and uploads end, without moving time.
    void settle();
    /// Lets time pass as it does: uploads take next to none of it.
    void pass(Duration duration);
    /// Until the next report is cut.
    void passADay() { pass(std::chrono::hours(25)); }

    std::vector<std::string> look(const char* sql) const { return Sqlite(path)(sql); }
    /// "pending_count"
    [[nodiscard]] std::string counted() const {
        return look("SELECT pending_count FROM aggregate_state").at(0);
    }
    /// "count|attempts|status|rejection_code" of each report.
    [[nodiscard]] std::vector<std::string> reports() const {
        return look("SELECT count, attempts, status, rejection_code FROM reports ORDER BY created_day_epoch");
    }
    [[nodiscard]] double now() const { return secondsSince1970(scheduler.now()); }

    QTemporaryDir root{scratchTemplate()};
    QString folder = root.filePath(AggregateCompletionReporter::folderName);
    QString path = metrics::MetricsDatabase::pathIn(folder);
    CountingService service;
    ManualScheduler scheduler{*parseIso8601(u"2026-03-27T13:30:00Z")};
    MemoryUserDefaults defaults;
    /// What every draw gives.
    double random = 0.5;
    InformationDictionary information = service.information();
    std::optional<AggregateCompletionReporter> reporter;
};

}  // namespace kestrant
