#pragma once

#include "foundation/Clocks.h"
#include "foundation/JsonFileUserDefaults.h"
#include "foundation/QtScheduler.h"
#include "foundation/Scheduler.h"
#include "metrics/AggregateCompletionReporter.h"
#include "metrics/EventLoopThread.h"

#include <QString>

#include <functional>
#include <utility>

namespace kestrant {

/// Counts what a command completes, in the store and under the switch that the panel uses; sends nothing. The
/// end of the object waits until everything is counted. Thread: main.
class CompletionCounting {
  public:
    CompletionCounting(const InformationDictionary& information, const QString& preferencesFile,
                       const QString& supportFolder);

    void record(int count) { reporter_.recordCompletions(count); }

  private:
    /// Carries out what is asked for now and nothing that is to happen later, uploads among it.
    class PresentOnly final : public Scheduler {
      public:
        [[nodiscard]] ScheduledTask after(Duration, std::function<void()>) override { return {}; }
        [[nodiscard]] ScheduledTask every(Duration, std::function<void()>) override { return {}; }
        void post(std::function<void()> work) override { thread_.post(std::move(work)); }

      private:
        EventLoopThread thread_;
    };

    SystemClock clock_;
    QtScheduler scheduler_;
    JsonFileUserDefaults defaults_;
    PresentOnly context_;
    AggregateCompletionReporter reporter_;
};

}  // namespace kestrant
