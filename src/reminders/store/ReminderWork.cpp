#include "reminders/store/ReminderWork.h"

#include "foundation/Scheduler.h"

#include <utility>

namespace kestrant {

ReminderWork::ReminderWork(Scheduler& scheduler, std::function<bool()> hasOther)
    : scheduler_(scheduler)
    , hasOther_(std::move(hasOther)) {}

void ReminderWork::end() {
    --count_;
    check();
}

void ReminderWork::whenIdle(std::function<void()> done) {
    waiters_.push_back(std::move(done));
    check();
}

void ReminderWork::check() {
    if (waiters_.empty() || !isIdle())
        return;
    scheduler_.post([this, weak = std::weak_ptr(isAlive_)] {
        if (weak.expired() || !isIdle())
            return;
        for (const auto& waiter : std::exchange(waiters_, {}))
            waiter();
    });
}

void ReminderWork::answer(const ReminderCompletion& completion,
                          tl::expected<void, ReminderStoreError> result) {
    if (!completion)
        return;
    scheduler_.post([weak = std::weak_ptr(isAlive_), completion, result = std::move(result)] {
        if (!weak.expired())
            completion(result);
    });
}

}  // namespace kestrant
