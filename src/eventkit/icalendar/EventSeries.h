#pragma once

#include "eventkit/icalendar/Event.h"
#include "eventkit/model/EKEvent.h"
#include "eventkit/recurrence/RecurrenceSet.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// One event with all its occurrences, as they fall in one person's time zone. Cancelled ones do not show. An
/// event whose rules are not understood shows its start alone. Of several changes of one occurrence the one
/// with the highest SEQUENCE holds, then the one with the latest DTSTAMP; a change with RANGE=THISANDFUTURE
/// holds for all later dates up to the next such change, each moved by the same distance on the clock (RFC
/// 5545, 3.2.13). Never changes, so any thread may use it.
class EventSeries {
  public:
    struct Occurrence {
        std::shared_ptr<const EKEventData> data;
        /// The start that the series gives it, by the clock of the series' own start.
        icalendar::LocalTime time;
        /// Which of the item's changes it is; absent for what the event itself, or an earlier change for all
        /// later dates, says.
        std::optional<std::size_t> change;
        /// Which of the item's changes for all later dates says what it is; absent for the event itself.
        std::optional<std::size_t> source;
    };

    /// An occurrence that is given by a rule or an extra date, not yet with its values.
    struct Date {
        icalendar::LocalTime time;
        DateInterval interval;
        std::optional<std::size_t> source;
    };

    EventSeries(icalendar::EventItem item, const QString& identifier, const QString& calendarIdentifier,
                const TimeZone& local);

    [[nodiscard]] const icalendar::EventItem& item() const { return item_; }
    [[nodiscard]] const QString& identifier() const { return item_.event.data.calendarItemIdentifier; }
    [[nodiscard]] const QString& calendarIdentifier() const { return item_.event.data.calendarIdentifier; }

    /// The occurrences that stand by themselves: an event that does not recur, and changed ones.
    [[nodiscard]] const std::vector<Occurrence>& singles() const { return singles_; }

    /// Where the occurrences that rules and extra dates give may lie; absent when there are none. The end is
    /// absent when the rules have none, or one that would take long to find out.
    struct Bounds {
        Instant start;
        std::optional<Instant> end;
    };
    [[nodiscard]] const std::optional<Bounds>& recurring() const { return recurring_; }

    /// A span of time, borders included, and the present.
    struct Span {
        Instant from;
        Instant to;
        Instant now;
    };
    /// What may be spent on a series on each side of the present: steps of the search, and occurrences, which
    /// are the fewer the more memory each takes (5 MB for all). They are counted from the present, whatever
    /// span is asked for, so that neighbouring spans agree.
    static constexpr qint64 mostSteps = 100'000;
    [[nodiscard]] std::size_t mostOccurrences() const;
    struct Cost {
        qint64 steps = 0;
        /// Neither sufficed: occurrences in the span, those farthest from the present, were left out.
        bool isExceeded = false;
    };
    /// Calls `visit` for each occurrence given by rules and extra dates that touches the span: from the
    /// present on, then from the present back, each way until `visit` returns false.
    Cost forEachRecurring(const Span& span, const std::function<bool(const Date&)>& visit,
                          qint64 steps = mostSteps) const;
    [[nodiscard]] std::shared_ptr<const EKEventData> dataOf(const Date& date) const;

    /// The occurrence with this occurrenceDate.
    [[nodiscard]] std::optional<Occurrence> occurrence(const std::optional<Instant>& occurrenceDate) const;
    /// The earliest one.
    [[nodiscard]] std::optional<Occurrence> first() const;

  private:
    /// A change for all dates from a time on.
    struct Range {
        icalendar::LocalTime from;
        std::size_t change;
    };

    void addChanges();
    void addRules();
    void addExtraDates();
    void addBounds();
    void addSingle(const icalendar::EventComponent& component, const icalendar::LocalTime& time,
                   DateInterval interval, std::optional<std::size_t> change);
    [[nodiscard]] std::optional<Instant> lastEnd() const;
    [[nodiscard]] icalendar::LocalTime firstTime() const;
    [[nodiscard]] Instant instantOf(const icalendar::LocalTime& time) const;
    /// Where a date of the series lies; absent where it is cancelled.
    [[nodiscard]] std::optional<Date> placed(const icalendar::LocalTime& time) const;
    [[nodiscard]] Occurrence occurrenceOn(const Date& date) const;

    /// With the identifiers.
    icalendar::EventItem item_;
    TimeZone local_;
    icalendar::EventLength length_;
    /// Its rules have no COUNT: it is an end.
    icalendar::RecurrenceSet set_;
    /// Of the extra dates.
    std::map<icalendar::LocalTime, icalendar::EventLength> lengths_;
    std::vector<Range> ranges_;
    std::vector<Occurrence> singles_;
    std::optional<Bounds> recurring_;
    /// How much earlier than a date begins, and later than it ends, what takes place may lie.
    Duration reachBack_{};
    Duration reachOn_{};
};

}  // namespace kestrant
