#pragma once

#include "eventkit/icalendar/EventSeries.h"
#include "eventkit/recurrence/OccurrenceIterator.h"

#include <QDate>

#include <cstddef>
#include <optional>
#include <vector>

namespace kestrant {

/// The dates of all rules of a series and the extra ones in one order, each once, without those that are left
/// out. The series must live as long.
class EventSeries::Walk {
  public:
    enum class Way { forward, back };

    /// On the way back `from` is not included. Days outside `first` and `last` (either may be invalid for
    /// none) are passed over; no more than `steps` are made.
    Walk(const EventSeries& series, Way way, const icalendar::LocalTime& from, QDate first, QDate last,
         qint64 steps);

    /// Absent at the end, and when the steps are used up.
    [[nodiscard]] std::optional<icalendar::LocalTime> next();
    /// How many were made.
    [[nodiscard]] qint64 steps() const;
    /// Whether the steps were used up.
    [[nodiscard]] bool ranOut() const;

  private:
    [[nodiscard]] bool isLeftOut(const icalendar::LocalTime& date);
    [[nodiscard]] std::optional<icalendar::LocalTime> advanced(icalendar::OccurrenceIterator& dates) const;
    /// The next extra date; null where there is none.
    [[nodiscard]] const Extra* extra() const;
    [[nodiscard]] std::optional<icalendar::LocalTime> nearest() const;

    const EventSeries& series_;
    Way way_;
    qint64 steps_;
    qint64 comparisons_ = 0;
    std::vector<icalendar::OccurrenceIterator> rules_;
    std::vector<icalendar::OccurrenceIterator> exceptions_;
    std::vector<std::optional<icalendar::LocalTime>> heads_;
    std::ptrdiff_t extra_ = 0;
    QDate first_;
    QDate last_;
};

}  // namespace kestrant
