#pragma once

#include "eventkit/model/EKEvent.h"
#include "support/ReminderBuilders.h"

#include <chrono>

namespace kestrant {

/// An event of the database with valid defaults: anEvent("id").titled("x").lasting(start,
/// end).in("calendar").
class EventBuilder {
  public:
    explicit EventBuilder(const QString& id) {
        data_.calendarItemIdentifier = id;
        data_.eventIdentifier = id;
        data_.calendarIdentifier = QStringLiteral("calendar");
        data_.title = id;
    }

    EventBuilder& titled(const QString& title) {
        data_.title = title;
        return *this;
    }
    EventBuilder& in(const char* calendar) {
        data_.calendarIdentifier = QString::fromUtf8(calendar);
        return *this;
    }
    EventBuilder& lasting(Instant start, Instant end) {
        data_.startDate = start;
        data_.endDate = end;
        return *this;
    }
    EventBuilder& lasting(Instant start, Duration length) { return lasting(start, start + length); }
    /// From the start of the first day to the start of `end`.
    EventBuilder& allDay(QDate first, QDate end, const char* zone = "Europe/Paris") {
        data_.isAllDay = true;
        return lasting(at(zone, first), at(zone, end));
    }
    EventBuilder& repeating(const char* rule) {
        data_.recurrenceRules = {EKRecurrenceRule::parse(QString::fromUtf8(rule))};
        return *this;
    }

    // NOLINTNEXTLINE(google-explicit-constructor): a builder stands for what it builds.
    operator EKEventData() const { return data_; }

  private:
    EKEventData data_;
};

[[nodiscard]] inline EventBuilder anEvent(const char* id) {
    return EventBuilder(QString::fromUtf8(id));
}

}  // namespace kestrant
