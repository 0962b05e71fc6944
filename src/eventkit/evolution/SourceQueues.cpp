#include "eventkit/evolution/SourceQueues.h"

#include <utility>

namespace kestrant::evolution {

namespace {

thread_local SourceQueues::Work* currentWork = nullptr;

}  // namespace

SourceQueues::Work* SourceQueues::current() {
    return currentWork;
}

SourceQueues::Away::Away() : work_(currentWork && !currentWork->isAway ? currentWork : nullptr) {
    if (!work_)
        return;
    work_->isAway = true;
    work_->queues->turn_.unlock();
}

SourceQueues::Away::~Away() {
    if (!work_)
        return;
    work_->queues->turn_.lock();
    work_->isAway = false;
}

SourceQueues::~SourceQueues() {
    std::unique_ptr<GlibWorker> first;
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = workers_.find({}); found != workers_.end())
            first = std::move(found->second);
    }
    first.reset();
    endAllButTheFirst();
}

void SourceQueues::run(const QByteArray& queue, std::function<void()> work) {
    const std::lock_guard lock(mutex_);
    auto& worker = workers_[queue];
    if (!worker)
        worker = std::make_unique<GlibWorker>();
    worker->run([this, queue, work = std::move(work)]() mutable {
        const std::lock_guard turn(turn_);
        Work present{queue, std::chrono::steady_clock::now(), false, false, this};
        currentWork = &present;
        work();
        // Its content is freed while nothing else can reach it.
        work = nullptr;
        currentWork = nullptr;
    });
}

void SourceQueues::finish(std::function<void()> last) {
    endAllButTheFirst();
    run({}, std::move(last));
}

void SourceQueues::endAllButTheFirst() {
    std::map<QByteArray, std::unique_ptr<GlibWorker>> ending;
    {
        const std::lock_guard lock(mutex_);
        // Work in the first one may wait for work in others, so that one goes on.
        for (auto& [queue, worker] : workers_) {
            if (!queue.isEmpty())
                ending[queue] = std::move(worker);
        }
        for (const auto& [queue, worker] : ending)
            workers_.erase(queue);
    }
}

}  // namespace kestrant::evolution
