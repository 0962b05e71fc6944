#pragma once

#include "calendar/CalendarActionRecorder.h"

namespace kestrant {

class ReminderActionHistory;

/// Puts changes of the calendar among those of reminders, so that the last one is taken back first, whatever
/// it was. Thread: main.
class CalendarActionHistory final : public CalendarActionRecorder {
  public:
    /// The history must outlive it.
    explicit CalendarActionHistory(ReminderActionHistory& history) : history_(history) {}

    [[nodiscard]] int begin() override;
    void record(CalendarAction action) override;
    void end(int action, bool succeeded) override;

  private:
    ReminderActionHistory& history_;
};

}  // namespace kestrant
