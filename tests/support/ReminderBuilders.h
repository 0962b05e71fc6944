#pragma once

#include "eventkit/model/EKTypes.h"

#include <initializer_list>

namespace kestrant {

/// A reminder of the database with valid defaults: aReminder("id").titled("x").due({2026, 3, 27}).in("list").
class ReminderBuilder {
  public:
    explicit ReminderBuilder(const QString& id) {
        data_.calendarItemIdentifier = id;
        data_.calendarIdentifier = QStringLiteral("list");
        data_.title = id;
    }

    ReminderBuilder& titled(const QString& title) { return set(data_.title, title); }
    ReminderBuilder& in(const QString& list) { return set(data_.calendarIdentifier, list); }
    ReminderBuilder& due(QDate day) { return set(data_.dueDateComponents, DateComponents::fromDate(day)); }
    ReminderBuilder& due(QDate day, QTime time, const char* zone = "") {
        return set(data_.dueDateComponents, DateComponents::fromDateTime(day, time, TimeZone::named(zone)));
    }
    ReminderBuilder& priority(int priority) { return set(data_.priority, priority); }
    ReminderBuilder& notes(const QString& notes) { return set(data_.notes, notes); }
    ReminderBuilder& created(Instant instant) { return set(data_.creationDate, instant); }
    ReminderBuilder& starting(QDate day, QTime time) {
        return set(data_.startDateComponents, DateComponents::fromDateTime(day, time));
    }
    ReminderBuilder& alarmAt(Instant instant) {
        data_.alarms.push_back(EKAlarm::at(instant));
        return *this;
    }
    ReminderBuilder& repeating(const QString& rule) {
        data_.recurrenceRules.push_back(EKRecurrenceRule::parse(rule));
        return *this;
    }
    ReminderBuilder& completedAt(Instant instant) {
        data_.isCompleted = true;
        return set(data_.completionDate, instant);
    }

    // NOLINTNEXTLINE(google-explicit-constructor): a builder stands for what it builds.
    operator EKReminderData() const { return data_; }

  private:
    template <typename Field, typename Value>
    ReminderBuilder& set(Field& field, Value&& value) {
        field = std::forward<Value>(value);
        return *this;
    }
    EKReminderData data_;
};

[[nodiscard]] inline ReminderBuilder aReminder(const char* id) {
    return ReminderBuilder(QString::fromUtf8(id));
}

/// A local time of day in a zone, for expectations: at("Europe/Paris", {2026, 3, 27}, {9, 0}).
[[nodiscard]] inline Instant at(const char* zone, QDate day, QTime time = {0, 0}) {
    return TimeZone::named(zone)->instantAt(day, time);
}

}  // namespace kestrant
