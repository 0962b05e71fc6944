#pragma once

#include "eventkit/icalendar/EventSeries.h"

#include <memory>
#include <optional>

namespace kestrant::items {

/// An event of a file as it is kept in memory. Of nearly every event all there is to know is when it takes
/// place and what it says; the others are kept as a series. A value that never changes; cheap to copy.
/// Thread: any.
class CompactEvent {
  public:
    CompactEvent() = default;
    CompactEvent(icalendar::EventItem item, const QString& identifier, const QString& calendarIdentifier,
                 const TimeZone& local);

    [[nodiscard]] const QString& identifier() const;
    [[nodiscard]] const QString& calendarIdentifier() const;
    /// The same event under another identifier.
    [[nodiscard]] CompactEvent called(const QString& identifier, const TimeZone& local) const;
    /// The same event as it falls for somebody who was in `before` and is in `after`.
    [[nodiscard]] CompactEvent placedIn(const TimeZone& after, const TimeZone& before) const;
    /// Whether both show the same.
    [[nodiscard]] bool isSame(const CompactEvent& other) const;

    /// Calls `visit` for each occurrence that no rule gives.
    template <typename Visit>
    void forEachSingle(Visit visit) const {
        if (only_)
            visit(only_);
        else
            for (const EventSeries::Occurrence& single : series_->singles())
                visit(single.data);
    }
    /// The series that gives occurrences by rules; null for an event that is one occurrence.
    [[nodiscard]] const std::shared_ptr<const EventSeries>& series() const { return series_; }

    /// Null when there is no such occurrence.
    [[nodiscard]] std::shared_ptr<const EKEventData>
    occurrence(const std::optional<Instant>& occurrenceDate) const;
    /// The earliest one.
    [[nodiscard]] std::shared_ptr<const EKEventData> first() const;

  private:
    // One of the two.
    std::shared_ptr<const EKEventData> only_;
    std::shared_ptr<const EventSeries> series_;
};

}  // namespace kestrant::items
