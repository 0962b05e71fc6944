#pragma once

#include "reminders/store/ReminderStoreServices.h"

#include <memory>
#include <vector>

namespace kestrant {

/// The work of a ReminderStore that is under way, so that a program can end when there is none.
/// Thread: main.
class ReminderWork {
  public:
    /// `hasOther` tells of work that is not counted here. The scheduler outlives this object.
    ReminderWork(Scheduler& scheduler, std::function<bool()> hasOther);

    void begin() { ++count_; }
    void end();
    /// Calls back once, on a later turn, when nothing is under way.
    void whenIdle(std::function<void()> done);
    /// To be called when other work has ended.
    void check();

    /// Hands a result over on a later turn, unless this object is gone by then.
    void answer(const ReminderCompletion& completion, tl::expected<void, ReminderStoreError> result);

  private:
    [[nodiscard]] bool isIdle() const { return count_ == 0 && !hasOther_(); }

    Scheduler& scheduler_;
    std::function<bool()> hasOther_;
    int count_ = 0;
    std::vector<std::function<void()>> waiters_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace kestrant
