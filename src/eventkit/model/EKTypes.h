#pragma once

#include "foundation/CompactOptional.h"
#include "foundation/DateComponents.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace kestrant {

enum class EKEntityType { event, reminder };

enum class EKAuthorizationStatus { notDetermined, restricted, denied, fullAccess };

/// A colour in sRGB, 8 bits a channel.
struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    /// Reads "#RRGGBB" or "#RRGGBBAA" (alpha dropped) in either letter case; absent for anything else.
    [[nodiscard]] static std::optional<Color> parse(QStringView text);
    /// "#RRGGBB".
    [[nodiscard]] QString toString() const;
    bool operator==(const Color&) const = default;
};

/// Why the database refused.
struct EKError {
    enum class Code {
        /// The item is not in the database (any more).
        itemNotFound,
        /// The list is not in the database (any more).
        calendarNotFound,
        /// The list or the item's file may not be changed.
        readOnly,
        /// The item was changed elsewhere in the same property since it was read; nothing was written.
        conflict,
        /// The item breaks a rule of the database; nothing was written.
        invalidItem,
        /// The disk, the folder or the service failed; nothing was written.
        storage,
        /// The service has not said in time whether it made the change: it may yet turn out to be made. Ask
        /// EKEventStore::awaitOutcome() for what became of it.
        outcomeUnknown,
        /// The person (or the machine) does not allow access.
        accessDenied,
    };

    Code code = Code::storage;
    /// The database's own sentence for the person, in both languages, detail included.
    TextPair message;
    /// With outcomeUnknown, the number of the change.
    std::uint64_t change = 0;
};

struct EKStructuredLocation {
    QString title;
    std::optional<double> latitude;
    std::optional<double> longitude;
    /// Metres; absent when none was given.
    std::optional<double> radius;
    bool operator==(const EKStructuredLocation&) const = default;
};

enum class EKAlarmProximity { none, enter, leave };

/// One alarm of an item. An alarm that was read keeps its source text, so that copying it to another item or
/// leaving it alone loses nothing; a new one is built from its absolute date.
struct EKAlarm {
    /// When it rings. Of an alarm with an offset from a date of a reminder this is what the database works
    /// out; to bind the alarm to an instant instead, set this and take the offset away. Absent for alarms at
    /// places and for those that this program does not carry out.
    std::optional<Instant> absoluteDate;
    /// Distance from a date of the item, if it follows that: with `followsStart` the start, else the due date
    /// (of an event, the end); where the item has one of them only, that one.
    std::optional<Duration> relativeOffset;
    /// How many days of the offset the calendar counts, so that the time of day stays when the clocks change.
    int relativeDays = 0;
    bool followsStart = false;
    std::optional<EKStructuredLocation> structuredLocation;
    EKAlarmProximity proximity = EKAlarmProximity::none;
    /// The alarm as it stands in its file (iCalendar lines from BEGIN:VALARM to END:VALARM); empty for a new
    /// one.
    QByteArray sourceText;
    /// The name by which other alarms of the item refer to this one (UID, RFC 9074); empty where none does.
    QByteArray identifier;
    /// Until when it has been dealt with (ACKNOWLEDGED): it has nothing more to say about moments up to this
    /// one.
    std::optional<Instant> acknowledgedDate;
    /// The identifier of the alarm that this one repeats later; empty for one that was not made by snoozing.
    QByteArray snoozedAlarm;

    [[nodiscard]] static EKAlarm at(Instant absoluteDate) { return EKAlarm{.absoluteDate = absoluteDate}; }
    /// Alarms with an offset are the same wherever their dates have been moved to.
    bool operator==(const EKAlarm& other) const;
};

enum class EKRecurrenceFrequency { daily, weekly, monthly, yearly, other };

/// A recurrence rule. The text is the value of an RRULE (RFC 5545, 3.3.10) and is what is kept and written;
/// the other fields are read from it.
struct EKRecurrenceRule {
    QString text;
    EKRecurrenceFrequency frequency = EKRecurrenceFrequency::other;
    int interval = 1;
    /// True when frequency and interval say all there is to the rule.
    bool isSimple = false;

    /// Reads a rule for display; a text that is no valid rule gives frequency `other`.
    [[nodiscard]] static EKRecurrenceRule parse(const QString& text);
    /// "FREQ=WEEKLY" or "FREQ=DAILY;INTERVAL=2".
    [[nodiscard]] static EKRecurrenceRule every(EKRecurrenceFrequency frequency, int interval = 1);
    bool operator==(const EKRecurrenceRule&) const = default;
};

/// Whether each rule is a valid one, or one that was there before.
[[nodiscard]] bool areValidRules(const std::vector<EKRecurrenceRule>& edited,
                                 const std::vector<EKRecurrenceRule>& before);

/// A list of reminders or a calendar of events (or both), as a value.
struct EKCalendar {
    QString calendarIdentifier;
    QString title;
    std::optional<Color> color;
    bool allowsContentModifications = true;
    bool allowsReminders = true;
    bool allowsEvents = false;
    /// Whether its source answers. What is shown of one that does not is what was seen last, if anything.
    bool isAnswering = true;
    bool operator==(const EKCalendar&) const = default;
};

/// Everything this program sees of one reminder, as a value.
struct EKReminderData {
    QString calendarItemIdentifier;
    QString calendarIdentifier;
    QString title;
    CompactOptional<QString> notes;
    CompactOptional<QString> location;
    CompactOptional<QString> url;
    /// 0 none, 1 highest to 9 lowest.
    int priority = 0;
    bool isCompleted = false;
    /// Marked as important (X-PINNED). Set and asked for by scripts; the panel shows its own index of flags.
    bool isFlagged = false;
    std::optional<DateComponents> dueDateComponents;
    std::optional<DateComponents> startDateComponents;
    std::optional<Instant> completionDate;
    std::optional<Instant> creationDate;
    std::optional<Instant> lastModifiedDate;
    std::vector<EKAlarm> alarms;
    std::vector<EKRecurrenceRule> recurrenceRules;
    bool operator==(const EKReminderData&) const = default;
};

}  // namespace kestrant
