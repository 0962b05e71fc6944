#include "eventkit/evolution/CallLimit.h"

#include <algorithm>
#include <utility>

namespace kestrant::evolution {

namespace {

/// A call is slow after this part of the time that it may take.
constexpr int slowPart = 5;

}  // namespace

CallLimit::CallLimit(std::chrono::milliseconds longest, std::function<void(bool isSlow)> slow)
    : longest_(longest)
    , slow_(std::move(slow))
    , thread_([this] { loop(); }) {}

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
            continue;
        }
        const auto next = isSlow_ ? deadline_ : std::min(slowAt_, deadline_);
        if (changed_.wait_until(lock, next) != std::cv_status::timeout || !current_)
            continue;
        const auto now = std::chrono::steady_clock::now();
        if (now >= slowAt_ && !std::exchange(isSlow_, true))
            slow_(true);
        if (now >= deadline_) {
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
        const auto now = std::chrono::steady_clock::now();
        limit_.current_ = cancellable_.get();
        limit_.deadline_ = now + limit_.longest_;
        limit_.slowAt_ = now + limit_.longest_ / slowPart;
    }
    limit_.changed_.notify_one();
}

CallLimit::Call::~Call() {
    const std::lock_guard lock(limit_.mutex_);
    limit_.current_ = nullptr;
    if (std::exchange(limit_.isSlow_, false))
        limit_.slow_(false);
}

}  // namespace kestrant::evolution
