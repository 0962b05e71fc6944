#pragma once

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarFetch.h"
#include "calendar/CalendarStore.h"
#include "cli/CommandRun.h"
#include "foundation/BackgroundExecutor.h"

#include <QStringList>

#include <functional>

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
    /// Adds the event that the next of the lines describes.
    void addNextLine();
    void save(const NewCalendarEvent& event, const std::function<void(bool isSaved)>& done);
    void deleteEvent();
    void deleteRowAmong(const CalendarItems& items);
    [[nodiscard]] bool isEventCalendar(const QString& identifier) const;

    CommandRun& run_;
    ImmediateExecutor executor_;
    CalendarStore store_;
    bool hasBegun_ = false;
    bool hasFailed_ = false;
    /// Those that are still to be added.
    QStringList lines_;
};

}  // namespace kestrant
