#pragma once

#include "foundation/BackgroundExecutor.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace kestrant {

/// One thread that runs what it is given, one piece after the other in the order in which it was given. Its
/// end waits until everything has been run, so whatever work refers to must live longer.
class SerialWorker final : public BackgroundExecutor {
  public:
    SerialWorker();
    SerialWorker(const SerialWorker&) = delete;
    SerialWorker& operator=(const SerialWorker&) = delete;
    ~SerialWorker() override;

    void run(std::function<void()> work) override;

  private:
    void loop();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> queue_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace kestrant
