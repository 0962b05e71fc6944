#pragma once

#include "calendar/CalendarFetch.h"
#include "calendar/CalendarStore.h"
#include "cli/CommandRun.h"
#include "foundation/BackgroundExecutor.h"

namespace kestrant {

/// The commands about calendars and events.
class CalendarCommands {
  public:
    explicit CalendarCommands(CommandRun& run);

    /// Begins the command; it ends in the event loop.
    void start();

  private:
    void proceed();
    void execute();
    void printAgenda();
    void addEvent();
    void deleteEvent();
    void deleteRowAmong(const CalendarItems& items);
    [[nodiscard]] bool isEventCalendar(const QString& identifier) const;

    CommandRun& run_;
    ImmediateExecutor executor_;
    CalendarStore store_;
    bool hasBegun_ = false;
};

}  // namespace kestrant
