#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/ItemReading.h"
#include "eventkit/model/EKEvent.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// When an event takes place, in the form in which its file says so. A start that is a day means whole days.
struct EventTimes {
    DateComponents start;
    /// Excluded. At most one of the two.
    std::optional<DateComponents> end;
    std::optional<DurationValue> duration;

    bool operator==(const EventTimes&) const = default;
};

/// How long an event lasts from any of its starts: days by the calendar, then exact time. An event of whole
/// days has days alone.
struct EventLength {
    int days = 0;
    Duration exact{};
};

/// What the times say, made sense of: never negative. Without an end it is a day for whole days, else
/// nothing; and so it is where the end does not come after the start.
[[nodiscard]] EventLength lengthOf(const EventTimes& times, const TimeZone& local);
/// Start and end in the person's time zone. Whole days begin and end where its days do.
[[nodiscard]] DateInterval intervalOf(const EventTimes& times, const TimeZone& local);
/// The same for an occurrence that starts at `start` by the clock of `times.start`.
[[nodiscard]] DateInterval intervalOf(const EventTimes& times, const LocalTime& start,
                                      const EventLength& length, const TimeZone& local);

/// One VEVENT.
struct EventComponent {
    EventTimes times;
    /// Which date of its series it stands for.
    std::optional<DateComponents> recurrenceId;
    /// Whether it applies to all later dates too (RANGE=THISANDFUTURE).
    bool isForLaterDates = false;
    bool isCancelled = false;
    /// Which of several that stand for one date is the newest: only said where there is a recurrenceId.
    int sequence = 0;
    std::optional<Instant> stamp;
    /// All else. The identifiers are left to the caller, what depends on the occurrence to EventSeries.
    EKEventData data;

    bool operator==(const EventComponent&) const = default;
};

/// One event as a file holds it, with all that concerns its series.
struct EventItem : ItemComponents {
    EventComponent event;
    /// The overrides of single dates, in the order of `changeIndexes`.
    std::vector<EventComponent> changes;
    std::vector<EventTimes> extraDates;
    std::vector<DateComponents> excludedDates;
    /// Values of EXRULE.
    std::vector<QByteArray> exceptionRules;

    /// Whether it has more dates than one, by what its file says; the rules may not be understood.
    [[nodiscard]] bool recurs() const { return !event.data.recurrenceRules.empty() || !extraDates.empty(); }
    bool operator==(const EventItem&) const = default;
};

/// Reads the events of a file. What a value does not say properly is absent; a component that does not say
/// when it takes place is passed over. `local` is the person's time zone.
[[nodiscard]] std::vector<EventItem> readEvents(const Document& document, const TimeZone& local);

/// Writes into a VEVENT that says `times` (absent: nothing yet) what leads from `before` to `after`; nothing
/// else but the marks of a revision. An end is written as it was, be it as a duration or in a zone of its
/// own. `document` is the file that holds it, `now` the time of the change.
void writeEvent(Component& event, const std::optional<EventTimes>& times, const EKEventData& before,
                const EKEventData& after, const Document& document, const TimeZone& local, Instant now);

/// A new file for a new event.
[[nodiscard]] Document makeEvent(const QByteArray& uid, const EKEventData& data, const TimeZone& local,
                                 Instant now);

/// A VEVENT for one date of a series, to be changed by itself: the series' own without its repetition, or
/// that of the change for all later dates (an index in `series.changes`) that says what the date is. It still
/// says when that starts.
[[nodiscard]] Component makeChange(const EventItem& series, const LocalTime& date,
                                   const std::optional<std::size_t>& source, const Document& document);

/// The file of an occurrence that leaves its series under a new UID, made from the series' file and the
/// occurrence's VEVENT in it.
[[nodiscard]] Document makeSeparateEvent(const QByteArray& uid, Component occurrence, Document document);

/// Leaves a date out of a series, along with what changes it (an index in `series.changes`).
void excludeDate(Document& document, const EventItem& series, const LocalTime& date,
                 const std::optional<std::size_t>& change, Instant now);

}  // namespace kestrant::icalendar
