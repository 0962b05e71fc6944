#pragma once

#include "eventkit/EKEvent.h"
#include "eventkit/icalendar/Event.h"
#include "eventkit/icalendar/RecurrenceRule.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// One event with all its occurrences, as they fall in one person's calendar. Cancelled ones do not show. An
/// event whose rules are not understood shows its start alone. Never changes, so any thread may use it.
class EventSeries {
  public:
    struct Occurrence {
        std::shared_ptr<const EKEventData> data;
        /// The start that the series gives it, by the clock of the series' own start.
        icalendar::LocalTime time;
        /// Which of the item's changes it is; absent for what the event itself says.
        std::optional<std::size_t> change;
    };

    EventSeries(icalendar::EventItem item, const QString& identifier, const QString& calendarIdentifier,
                const ZoneCalendar& local);

    [[nodiscard]] const icalendar::EventItem& item() const { return item_; }
    [[nodiscard]] const QString& identifier() const { return item_.event.data.calendarItemIdentifier; }
    [[nodiscard]] const QString& calendarIdentifier() const { return item_.event.data.calendarIdentifier; }

    /// The occurrences that no rule gives: an event that does not recur, changed ones, and extra dates.
    [[nodiscard]] const std::vector<Occurrence>& singles() const { return singles_; }

    /// Where the occurrences that rules give may lie; absent when there are none. The end is absent when the
    /// rules have none, or one that would take long to find out.
    struct Bounds {
        Instant start;
        std::optional<Instant> end;
    };
    [[nodiscard]] const std::optional<Bounds>& ruled() const { return ruled_; }

    /// Calls `visit` for each occurrence given by rules that touches the span or its borders, in order for
    /// each rule, at a cost in proportion to their number; where a rule has a COUNT, to that of all before
    /// them. Stops after 20,000 in one span, which is more than hourly for two years.
    void forEachRuled(Instant from, Instant to,
                      const std::function<void(std::shared_ptr<const EKEventData>)>& visit) const;

    /// The occurrence with this occurrenceDate.
    [[nodiscard]] std::optional<Occurrence> occurrence(const std::optional<Instant>& occurrenceDate) const;
    /// The earliest one.
    [[nodiscard]] std::optional<Occurrence> first() const;

  private:
    void addRules(const std::vector<EKRecurrenceRule>& rules);
    void addChanges();
    void addExtraDates();
    void addSingle(const icalendar::EventComponent& component, const icalendar::LocalTime& time,
                   DateInterval interval, std::optional<std::size_t> change);
    [[nodiscard]] std::optional<Instant> lastEnd() const;
    [[nodiscard]] bool isExcluded(const icalendar::LocalTime& time) const;
    [[nodiscard]] Instant instantOf(const icalendar::LocalTime& time) const;
    [[nodiscard]] DateInterval intervalFrom(const icalendar::LocalTime& start) const;
    [[nodiscard]] std::vector<icalendar::LocalTime>
    ruledTimes(const icalendar::LocalTime& from, QDate last, std::size_t most,
               const std::function<bool(const icalendar::LocalTime&)>& isWanted) const;
    [[nodiscard]] Occurrence ruledOccurrence(const icalendar::LocalTime& time) const;

    /// With the identifiers.
    icalendar::EventItem item_;
    ZoneCalendar local_;
    icalendar::EventLength length_;
    ZoneCalendar zone_;
    std::vector<icalendar::RecurrenceRule> rules_;
    std::vector<icalendar::LocalTime> excludedTimes_;
    std::vector<QDate> excludedDays_;
    std::vector<Occurrence> singles_;
    std::optional<Bounds> ruled_;
};

}  // namespace kestrant
