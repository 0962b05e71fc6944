#pragma once

#include "calendar/CalendarEditing.h"
#include "speech/Line.h"

#include <QString>

#include <optional>
#include <vector>

namespace kestrant {

/// A new event that a line of plain speech describes.
struct SpokenEvent {
    /// Absent while the line says no day and no time.
    std::optional<NewCalendarEvent> event;
    /// What was understood of it.
    speech::Line line;
    /// A calendar that it names and that is not among those known; empty for none.
    QString unknownCalendar;
};

/// Reads a line for an event; see speech::readLine(). A time without an end gives an hour, days without a
/// time an event of whole days. `calendars` can be named with "#"; one that does not exist stays in the
/// title.
[[nodiscard]] SpokenEvent readEvent(const QString& line, const speech::Present& present,
                                    const std::vector<EKCalendar>& calendars,
                                    const std::vector<speech::TextRange>& refused = {},
                                    const std::vector<speech::TextRange>& accepted = {});

}  // namespace kestrant
