#pragma once

#include "eventkit/evolution/Glib.h"
#include "foundation/BackgroundExecutor.h"

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
    GMainContext* context_;
    GMainLoop* loop_;
    std::thread thread_;
};

}  // namespace kestrant::evolution
