#pragma once

#include "eventkit/evolution/GlibWorker.h"
#include "eventkit/items/WorkQueues.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace kestrant::evolution {

/// A thread for each list of the service, so that one that does not answer holds up no other. All of them
/// take turns at the database; a thread gives its turn up while it waits for the service (see Away).
class SourceQueues final : public items::WorkQueues {
  public:
    SourceQueues() = default;
    ~SourceQueues() override;

    void run(const QByteArray& queue, std::function<void()> work) override;
    [[nodiscard]] bool areSeveral() const override { return true; }
    void finish(std::function<void()> last) override;

    /// The piece of work that a thread is at.
    struct Work {
        QByteArray queue;
        std::chrono::steady_clock::time_point begun;
        /// From here on it matters to the person what becomes of it.
        bool hasBegunToWrite = false;
        bool isAway = false;
        SourceQueues* queues = nullptr;
    };
    /// Of the calling thread; null where that is none of a queue.
    [[nodiscard]] static Work* current();

    /// Lets others have their turn as long as this exists. What is known of the database's state does not
    /// hold afterwards. Does nothing on a thread that is none of a queue.
    class Away {
      public:
        Away();
        Away(const Away&) = delete;
        Away& operator=(const Away&) = delete;
        ~Away();

      private:
        /// Null where there is no turn to give up.
        Work* work_;
    };

  private:
    void endAllButTheFirst();

    std::mutex turn_;
    std::mutex mutex_;
    std::map<QByteArray, std::unique_ptr<GlibWorker>> workers_;
};

}  // namespace kestrant::evolution
