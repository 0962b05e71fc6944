#pragma once

#include "eventkit/evolution/Glib.h"
#include "foundation/BackgroundExecutor.h"

#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace kestrant::evolution {

/// One thread that runs what it is given in order and, between two pieces of work, delivers the signals of
/// the objects that were made on it. Its end waits until everything has been run.
class GlibWorker final : public BackgroundExecutor {
  public:
    GlibWorker();
    GlibWorker(const GlibWorker&) = delete;
    GlibWorker& operator=(const GlibWorker&) = delete;
    ~GlibWorker() override;

    void run(std::function<void()> work) override;

  private:
    void runNext();

    std::mutex mutex_;
    std::deque<std::function<void()>> queue_;
    GMainContext* context_;
    GMainLoop* loop_;
    std::thread thread_;
};

}  // namespace kestrant::evolution
