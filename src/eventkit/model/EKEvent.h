#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/TimeZone.h"

#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// Everything this program sees of one occurrence of an event, as a value. An event that does not recur has
/// one.
struct EKEventData {
    /// The same for every occurrence of a series.
    QString calendarItemIdentifier;
    /// The identifier for EKEventStore::event(); the same for every occurrence of a series.
    QString eventIdentifier;
    QString calendarIdentifier;
    QString title;
    CompactOptional<QString> notes;
    CompactOptional<QString> location;
    CompactOptional<QString> url;
    bool isAllDay = false;
    /// All-day: the start of the first day in the person's time zone. Never after endDate.
    Instant startDate;
    /// Excluded. All-day: the start of the day after the last one.
    Instant endDate;
    /// The zone the event is written in. Absent for all-day and floating events.
    std::optional<TimeZone> timeZone;
    /// For an occurrence of a series, the start that the rule gives it; it stays when the occurrence is
    /// moved.
    std::optional<Instant> occurrenceDate;
    /// This occurrence was changed by itself.
    bool isDetached = false;
    std::vector<EKRecurrenceRule> recurrenceRules;
    std::vector<EKAlarm> alarms;
    std::optional<Instant> creationDate;
    std::optional<Instant> lastModifiedDate;

    [[nodiscard]] bool hasRecurrenceRules() const { return !recurrenceRules.empty(); }
    bool operator==(const EKEventData&) const = default;
};

/// One occurrence of an event in hand: the values it was read with and the values as edited. Nothing reaches
/// the database before EKEventStore::save(). Always held by std::shared_ptr. Thread: the one that received or
/// made it.
class EKEvent {
  public:
    /// A new event that no calendar holds yet.
    EKEvent() = default;
    /// An occurrence as read; for event stores only.
    explicit EKEvent(std::shared_ptr<const EKEventData> stored) : data(*stored), stored_(std::move(stored)) {}

    /// The edited values; change them freely. The identifiers are the store's to set.
    EKEventData data;

    [[nodiscard]] bool isNew() const { return !stored_; }
    [[nodiscard]] bool hasChanges() const { return !stored_ || *stored_ != data; }
    /// Drops every edit.
    void reset() { data = stored_ ? *stored_ : EKEventData{}; }

    /// The values as read, from which the store derives the changes; null for a new event.
    [[nodiscard]] const std::shared_ptr<const EKEventData>& stored() const { return stored_; }
    /// For event stores: the event now is what the database holds.
    void setStored(std::shared_ptr<const EKEventData> stored) {
        data = *stored;
        stored_ = std::move(stored);
    }

  private:
    std::shared_ptr<const EKEventData> stored_;
};

using EKEventRef = std::shared_ptr<EKEvent>;

/// How far a change to a recurring event reaches.
enum class EKSpan {
    /// Only the occurrence in hand.
    thisEvent,
};

}  // namespace kestrant
