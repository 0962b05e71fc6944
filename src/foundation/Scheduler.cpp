#include "foundation/Scheduler.h"

#include <utility>

namespace kestrant {

ScheduledTask& ScheduledTask::operator=(ScheduledTask&& other) noexcept {
    if (this != &other) {
        cancel();
        state_ = std::move(other.state_);
    }
    return *this;
}

void ScheduledTask::cancel() {
    if (!state_)
        return;
    const std::shared_ptr<State> state = std::exchange(state_, nullptr);
    state->pending = false;
    // The work may be what is running now, and may own this handle: let it end before its captures go.
    const std::function<void()> work = std::exchange(state->work, nullptr);
}

}  // namespace kestrant
