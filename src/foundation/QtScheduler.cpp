#include "foundation/QtScheduler.h"

#include <QTimerEvent>

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant {

namespace {

constexpr std::chrono::milliseconds longestTimer(std::numeric_limits<int>::max());

}  // namespace

ScheduledTask QtScheduler::after(Duration delay, std::function<void()> work) {
    auto task = std::make_shared<ScheduledTask::State>();
    task->work = std::move(work);
    start(std::chrono::ceil<std::chrono::milliseconds>(std::max(delay, Duration::zero())), task, false);
    return ScheduledTask(std::move(task));
}

ScheduledTask QtScheduler::every(Duration interval, std::function<void()> work) {
    auto task = std::make_shared<ScheduledTask::State>();
    task->work = std::move(work);
    const auto rounded = std::chrono::round<std::chrono::milliseconds>(interval);
    start(std::clamp(rounded, std::chrono::milliseconds(1), longestTimer), task, true);
    return ScheduledTask(std::move(task));
}

void QtScheduler::post(std::function<void()> work) {
    QMetaObject::invokeMethod(static_cast<QObject*>(this), std::move(work), Qt::QueuedConnection);
}

void QtScheduler::start(std::chrono::milliseconds delay, const std::weak_ptr<ScheduledTask::State>& task,
                        bool repeats) {
    const auto first = std::min(delay, longestTimer);
    timers_.emplace(startTimer(first, Qt::PreciseTimer), Timer{task, delay - first, repeats});
}

void QtScheduler::timerEvent(QTimerEvent* event) {
    const auto found = timers_.find(event->timerId());
    if (found == timers_.end())
        return;
    const Timer timer = found->second;
    const auto task = timer.task.lock();
    const bool isPending = task && task->pending;
    if (isPending && timer.repeats) {
        const auto work = task->work;
        work();
        return;
    }
    killTimer(event->timerId());
    timers_.erase(found);
    if (!isPending)
        return;
    if (timer.remaining > timer.remaining.zero()) {
        start(timer.remaining, timer.task, false);
        return;
    }
    task->pending = false;
    const auto work = std::exchange(task->work, nullptr);
    work();
}

}  // namespace kestrant
