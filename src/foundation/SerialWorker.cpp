#include "foundation/SerialWorker.h"

#include <utility>

namespace kestrant {

SerialWorker::SerialWorker() : thread_([this] { loop(); }) {}

SerialWorker::~SerialWorker() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void SerialWorker::run(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(work));
    }
    changed_.notify_all();
}

void SerialWorker::loop() {
    while (true) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return ending_ || !queue_.empty(); });
        if (queue_.empty())
            return;
        const auto work = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        work();
    }
}

}  // namespace kestrant
