#include "eventkit/evolution/CallLimit.h"

#include <algorithm>

namespace kestrant::evolution {

CallLimit::CallLimit(std::chrono::milliseconds longest) : longest_(longest), thread_([this] { loop(); }) {}

CallLimit::~CallLimit() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void CallLimit::setLongest(std::chrono::milliseconds longest) {
    {
        const std::lock_guard lock(mutex_);
        longest_ = longest;
        deadline_ = std::min(deadline_, std::chrono::steady_clock::now() + longest);
    }
    changed_.notify_one();
}

void CallLimit::loop() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        if (!current_) {
            changed_.wait(lock);
        } else if (changed_.wait_until(lock, deadline_) == std::cv_status::timeout && current_ &&
                   std::chrono::steady_clock::now() >= deadline_) {
            const Ref<GCancellable> overdue(G_CANCELLABLE(g_object_ref(current_)));
            current_ = nullptr;
            lock.unlock();
            g_cancellable_cancel(overdue.get());
            lock.lock();
        }
    }
}

CallLimit::Call::Call(CallLimit& limit) : limit_(limit), cancellable_(g_cancellable_new()) {
    {
        const std::lock_guard lock(limit_.mutex_);
        limit_.current_ = cancellable_.get();
        limit_.deadline_ = std::chrono::steady_clock::now() + limit_.longest_;
    }
    limit_.changed_.notify_one();
}

CallLimit::Call::~Call() {
    const std::lock_guard lock(limit_.mutex_);
    limit_.current_ = nullptr;
}

}  // namespace kestrant::evolution
