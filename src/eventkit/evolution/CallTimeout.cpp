#include "eventkit/evolution/CallTimeout.h"

#include <algorithm>
#include <utility>

namespace kestrant::evolution {

namespace {

using std::chrono::steady_clock;

/// A call is slow after this part of the time that it may take.
constexpr int slowPart = 5;

}  // namespace

CallTimeout::CallTimeout(std::chrono::milliseconds longest, Observer observer)
    : longest_(longest)
    , observer_(std::move(observer))
    , thread_([this] { loop(); }) {}

CallTimeout::~CallTimeout() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::chrono::milliseconds CallTimeout::longest() const {
    const std::lock_guard lock(mutex_);
    return longest_;
}

void CallTimeout::prepareToClose(std::chrono::milliseconds longest) {
    {
        const std::lock_guard lock(mutex_);
        longest_ = longest;
        isHurrying_ = true;
        for (Call* const call : calls_) {
            call->isCutOff_ = true;
            // Those that were only told about until now are cancelled too.
            call->isOverdue_ = false;
            call->deadline_ = std::min(call->deadline_, steady_clock::now() + longest);
        }
    }
    changed_.notify_all();
}

bool CallTimeout::pause(std::chrono::milliseconds time) {
    const SourceQueues::Away away;
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, time, [this] { return isHurrying_; });
}

void CallTimeout::noteWrite() {
    if (auto* const work = SourceQueues::current())
        work->hasBegunToWrite = true;
}

void CallTimeout::tellSlow() {
    std::set<QString> slow;
    for (const Call* const call : calls_) {
        if (call->isSlow_)
            slow.insert(call->list_);
    }
    if (slow != slow_) {
        slow_ = std::move(slow);
        observer_.slow(slow_);
    }
}

void CallTimeout::look(Call& call, Time now) {
    if (now >= call.slowAt_)
        call.isSlow_ = true;
    if (now < call.deadline_ || std::exchange(call.isOverdue_, true))
        return;
    if (!call.isCutOff_)
        return observer_.overdue(call.queue_, call.list_);
    if (isHurrying_)
        silent_.insert(call.queue_);
    // The handler only notes it for the waiting thread.
    g_cancellable_cancel(call.cancellable_.get());
}

void CallTimeout::loop() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        const Time now = steady_clock::now();
        Time next = Time::max();
        for (Call* const call : calls_) {
            look(*call, now);
            if (!call->isSlow_)
                next = std::min(next, call->slowAt_);
            if (!call->isOverdue_)
                next = std::min(next, call->deadline_);
        }
        tellSlow();
        if (next == Time::max())
            changed_.wait(lock);
        else
            changed_.wait_until(lock, next);
    }
}

CallTimeout::Call::Call(CallTimeout& limit, const QString& list)
    : limit_(limit)
    , list_(list)
    , cancellable_(g_cancellable_new()) {
    const auto* const work = SourceQueues::current();
    {
        const std::lock_guard lock(limit_.mutex_);
        const Time now = steady_clock::now();
        if (work) {
            queue_ = work->queue;
            isCutOff_ = limit_.isHurrying_ || !work->hasBegunToWrite;
        }
        const Time begun = work && isCutOff_ && !limit_.isHurrying_ ? work->begun : now;
        deadline_ = limit_.silent_.contains(queue_) ? now : begun + limit_.longest_;
        slowAt_ = now + limit_.longest_ / slowPart;
        limit_.calls_.push_back(this);
    }
    limit_.changed_.notify_all();
}

CallTimeout::Call::~Call() {
    const std::lock_guard lock(limit_.mutex_);
    limit_.calls_.remove(this);
    limit_.tellSlow();
}

}  // namespace kestrant::evolution
