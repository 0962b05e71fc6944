#include "support/ManualScheduler.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

namespace kestrant {

ManualScheduler::ManualScheduler(Instant start) : wall_(start) {}

Instant ManualScheduler::now() const {
    const std::lock_guard lock(mutex_);
    return wall_;
}

ScheduledTask ManualScheduler::after(Duration delay, std::function<void()> work) {
    return add(delay, Duration::zero(), std::move(work));
}

ScheduledTask ManualScheduler::every(Duration interval, std::function<void()> work) {
    return add(interval, interval, std::move(work));
}

ScheduledTask ManualScheduler::add(Duration delay, Duration interval, std::function<void()> work) {
    auto state = std::make_shared<ScheduledTask::State>();
    state->work = std::move(work);
    timers_.push_back({elapsed_ + std::max(delay, Duration::zero()), nextSequence_++, interval, state});
    return ScheduledTask(state);
}

void ManualScheduler::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(work));
    }
    posted_.notify_all();
}

std::function<void()> ManualScheduler::takePosted() {
    const std::lock_guard lock(mutex_);
    if (queue_.empty())
        return nullptr;
    auto work = std::move(queue_.front());
    queue_.pop_front();
    return work;
}

void ManualScheduler::runPosted() {
    while (const auto work = takePosted())
        work();
}

std::vector<ManualScheduler::Timer>::iterator ManualScheduler::earliest() {
    std::erase_if(timers_, [](const Timer& timer) {
        const auto state = timer.state.lock();
        return !state || !state->pending;
    });
    return std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
        return std::tie(a.due, a.sequence) < std::tie(b.due, b.sequence);
    });
}

void ManualScheduler::advance(Duration duration) {
    runPosted();
    const Duration end = elapsed_ + duration;
    for (auto next = earliest(); next != timers_.end() && next->due <= end; next = earliest()) {
        {
            const std::lock_guard lock(mutex_);
            wall_ += next->due - elapsed_;
        }
        elapsed_ = next->due;
        const auto state = next->state.lock();
        if (next->interval > Duration::zero()) {
            next->due += next->interval;
            const auto work = state->work;
            work();
        } else {
            timers_.erase(next);
            state->pending = false;
            const auto work = std::exchange(state->work, nullptr);
            work();
        }
        runPosted();
    }
    {
        const std::lock_guard lock(mutex_);
        wall_ += end - elapsed_;
    }
    elapsed_ = end;
}

void ManualScheduler::jumpWall(Duration duration) {
    const std::lock_guard lock(mutex_);
    wall_ += duration;
}

bool ManualScheduler::runUntil(const std::function<bool()>& done) {
    while (true) {
        runPosted();
        if (done())
            return true;
        std::unique_lock lock(mutex_);
        if (!posted_.wait_for(lock, std::chrono::seconds(60), [this] { return !queue_.empty(); }))
            return false;
    }
}

std::size_t ManualScheduler::pendingCount() const {
    return static_cast<std::size_t>(std::count_if(timers_.begin(), timers_.end(), [](const Timer& timer) {
        const auto state = timer.state.lock();
        return state && state->pending;
    }));
}

}  // namespace kestrant
