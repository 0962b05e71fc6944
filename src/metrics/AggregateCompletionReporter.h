#pragma once

#include "foundation/InformationDictionary.h"
#include "foundation/Scheduler.h"
#include "foundation/Text.h"
#include "metrics/CollectionPreferences.h"

#include <QSslConfiguration>
#include <QString>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

class UserDefaults;

namespace metrics {
class ReporterActor;
}

/// A problem with counting, for logs and for those who look after the program. The person is not bothered
/// with it.
enum class LocalDiagnostic {
    /// Counts are kept in memory; the store is tried again in a few minutes.
    storageUnavailable,
    /// The server accepted a report but did not confirm it; it is sent again.
    invalidAcknowledgement,
    /// The server refused a report for good; its count is lost.
    reportRejected,
    /// A report could not be sent for 90 days; its count is lost.
    expiredPendingReport,
};

/// Counts, anonymously, how many reminders are completed, and twice a day at most sends one number: how many
/// since the last time, with the UTC day. Nothing else leaves the machine: no title, no identifier, no
/// cookie.
///
/// All its work is done one piece at a time in an execution context of its own; no call waits for it. Thread:
/// any.
class AggregateCompletionReporter {
  public:
    struct Randomness {
        /// Even over [0, 1). Called in the context only.
        std::function<double()> unit;
        /// Thread: any.
        std::function<QUuid()> uuid;

        [[nodiscard]] static Randomness system();
    };

    /// The surroundings of a reporter; everything referred to must outlive it.
    struct Services {
        /// Where all work is done. Its thread runs a Qt event loop and is not the one of the interface.
        Scheduler& context;
        Clock& clock;
        UserDefaults& defaults;
        InformationDictionary information;
        /// Where the store lies, folderName in the application's own folder; absent: nothing can be stored.
        std::optional<QString> folder;
        Randomness random = Randomness::system();
        /// Names the trusted certificates; absent: those of the machine, which are only looked up for an
        /// upload, since that loads what encrypts.
        std::optional<QSslConfiguration> tls;
    };

    static constexpr auto folderName = "AggregateMetrics";

    /// Does nothing before the first call.
    explicit AggregateCompletionReporter(Services services);
    /// What was recorded before is still stored, or where the store cannot be used left in the user defaults
    /// for the next process; an upload under way ends and is repeated some other time.
    ~AggregateCompletionReporter();
    AggregateCompletionReporter(const AggregateCompletionReporter&) = delete;
    AggregateCompletionReporter& operator=(const AggregateCompletionReporter&) = delete;

    /// Counts completed reminders; ignored while counting is off, or when `count` is not positive.
    void recordCompletions(qint64 count);

    /// Sends what is due, and arranges for the next check. To be called at start, when the application
    /// becomes active and on wake. `finished` is called in the context once the check and any upload under
    /// way have ended.
    void runDueCheck(std::function<void()> finished = {});

    /// The person's switch. Off: an upload under way ends, and everything counted is deleted.
    void setEnabled(bool enabled);
    [[nodiscard]] metrics::Configuration configuration() const;
    /// The explanation to show beside the switch.
    [[nodiscard]] static TextPair helpText();

    [[nodiscard]] bool isUploading() const;
    [[nodiscard]] std::optional<LocalDiagnostic> latestDiagnostic() const;

  private:
    Scheduler& context_;
    std::shared_ptr<metrics::ReporterActor> actor_;
};

}  // namespace kestrant
