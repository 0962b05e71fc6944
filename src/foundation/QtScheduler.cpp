#include "foundation/QtScheduler.h"

#include <QTimerEvent>

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant {

namespace {

constexpr std::chrono::milliseconds longestTimer(std::numeric_limits<int>::max());

}  // namespace

std::chrono::milliseconds untilNext(std::chrono::steady_clock::time_point& due, Duration interval,
                                    std::chrono::steady_clock::time_point now) {
    due += interval;
    if (due < now)
        due = now + interval;
    return std::max(std::chrono::round<std::chrono::milliseconds>(due - now), std::chrono::milliseconds(1));
}

ScheduledTask QtScheduler::after(Duration delay, std::function<void()> work) {
    auto task = std::make_shared<ScheduledTask::State>();
    task->work = std::move(work);
    start(std::chrono::ceil<std::chrono::milliseconds>(std::max(delay, Duration::zero())),
          {.task = task, .interval = Duration::zero()});
    return ScheduledTask(std::move(task));
}

ScheduledTask QtScheduler::every(Duration interval, std::function<void()> work) {
    auto task = std::make_shared<ScheduledTask::State>();
    task->work = std::move(work);
    const auto now = std::chrono::steady_clock::now();
    Timer timer{
        .task = task, .interval = std::max<Duration>(interval, std::chrono::milliseconds(1)), .due = now};
    const auto wait = untilNext(timer.due, timer.interval, now);
    start(wait, timer);
    return ScheduledTask(std::move(task));
}

void QtScheduler::post(std::function<void()> work) {
    QMetaObject::invokeMethod(static_cast<QObject*>(this), std::move(work), Qt::QueuedConnection);
}

void QtScheduler::start(std::chrono::milliseconds delay, Timer timer) {
    const auto first = std::min(delay, longestTimer);
    timer.remaining = delay - first;
    timers_.emplace(startTimer(first, Qt::PreciseTimer), std::move(timer));
}

void QtScheduler::timerEvent(QTimerEvent* event) {
    const auto found = timers_.find(event->timerId());
    if (found == timers_.end())
        return;
    Timer timer = std::move(found->second);
    killTimer(event->timerId());
    timers_.erase(found);
    const auto task = timer.task.lock();
    if (!task || !task->pending)
        return;
    if (timer.remaining > timer.remaining.zero()) {
        start(timer.remaining, timer);
        return;
    }
    if (timer.interval > timer.interval.zero()) {
        const auto wait = untilNext(timer.due, timer.interval, std::chrono::steady_clock::now());
        start(wait, timer);
        const auto work = task->work;
        work();
        return;
    }
    task->pending = false;
    const auto work = std::exchange(task->work, nullptr);
    work();
}

}  // namespace kestrant
