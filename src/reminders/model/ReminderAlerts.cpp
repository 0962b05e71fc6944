#include "reminders/model/ReminderAlerts.h"

#include "eventkit/model/ReminderAlarms.h"
#include "eventkit/model/ReminderChanges.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// Farther from the due date than any calendar reaches; more would not fit an instant.
constexpr double longestOffset = 1e11;

/// Whether two instants are one for an alarm.
bool coincide(const std::optional<Instant>& a, const std::optional<Instant>& b) {
    return a && b && std::chrono::abs(*a - *b) <= 1s;
}

/// The alarm that stands for the reminder's alert.
const EKAlarm* shownAlarm(const std::vector<EKAlarm>& alarms, const AlarmDates& dates, const TimeZone& zone) {
    const auto found = std::find_if(alarms.begin(), alarms.end(), [&](const EKAlarm& alarm) {
        return alarm.snoozedAlarm.isEmpty() && ringInstant(alarm, dates, zone);
    });
    return found == alarms.end() ? nullptr : &*found;
}

std::optional<Instant> instantOf(const RelativeToDueTime& schedule, const DateComponents& due,
                                 const TimeZone& zone) {
    const auto dueInstant = zone.instantFrom(due);
    if (!due.includesTime() || !dueInstant || !(std::abs(schedule.seconds) <= longestOffset))
        return std::nullopt;
    return *dueInstant + seconds(schedule.seconds);
}

std::optional<Instant> instantOf(const DayRelativeToDueDate& schedule, const DateComponents& due,
                                 const TimeZone& zone) {
    const QTime time(schedule.hour, schedule.minute);
    if (due.includesTime() || !due.date().isValid() || !time.isValid() ||
        !fromRawValue<ReminderDateOnlyAlertDay>(schedule.dayOffset))
        return std::nullopt;
    return zone.instantAt(due.date().addDays(schedule.dayOffset), time, GapPolicy::nextExisting);
}

/// In the largest unit that it is a whole number of; below a minute it is rounded to minutes.
TextPair offsetInWords(double seconds) {
    struct Unit {
        qint64 seconds;
        TextPair one;
        TextPair several;
    };
    const std::array units{Unit{86400, text("%1 day", "%1 jour"), text("%1 days", "%1 jours")},
                           Unit{3600, text("%1 hr", "%1 h"), text("%1 hr", "%1 h")},
                           Unit{60, text("%1 min", "%1 min"), text("%1 min", "%1 min")}};
    const double bounded = std::abs(seconds) <= longestOffset ? std::abs(seconds) : longestOffset;
    const qint64 length = std::max<qint64>(60, 60 * std::llround(bounded / 60));
    const auto unit = std::find_if(units.begin(), units.end(),
                                   [&](const Unit& candidate) { return length % candidate.seconds == 0; });
    const qint64 count = length / unit->seconds;
    const TextPair& words = count == 1 ? unit->one : unit->several;
    const TextPair side = seconds < 0 ? text("before", "avant") : text("after", "après");
    return {words.english.arg(count) + QLatin1Char(' ') + side.english,
            words.french.arg(count) + QLatin1Char(' ') + side.french};
}

/// The schedule that an alarm at this time stands for.
std::optional<ReminderAlertSchedule> scheduleOf(Instant rings, const std::optional<DateComponents>& due,
                                                const TimeZone& zone) {
    const auto dueInstant = due ? zone.instantFrom(*due) : std::nullopt;
    if (!dueInstant)
        return std::nullopt;
    if (due->includesTime())
        return RelativeToDueTime{std::chrono::duration<double>(rings - *dueInstant).count()};
    const QTime time = zone.timeOf(rings);
    const qint64 days = due->date().daysTo(zone.dayOf(rings));
    return DayRelativeToDueDate{static_cast<int>(days), time.hour(), time.minute()};
}

class AlarmReplacement {
  public:
    AlarmReplacement(EKReminderData& reminder, const ReminderDueAlert& before, const ReminderDueAlert& after,
                     const TimeZone& zone)
        : alarms_(reminder.alarms)
        , zone_(zone)
        , before_{reminder.startDateComponents, before.dueComponents}
        , after_{startFitting(before_.start, before_.due, after.dueComponents, zone), after.dueComponents}
        , keepsDistance_(before.schedule && before.schedule == after.schedule)
        , former_(alarmInstant(before, zone))
        , wanted_(alarmInstant(after, zone)) {
        const EKAlarm* shown = before.schedule ? shownAlarm(alarms_, before_, zone) : nullptr;
        const auto rang = shown ? ringInstant(*shown, before_, zone) : std::nullopt;
        if (!rang || scheduleOf(*rang, before_.due, zone) != before.schedule)
            return;
        shown_ = rang;
        if (const auto moved = keepsDistance_ ? movedAlong(*shown_, *after.schedule) : std::nullopt)
            wanted_ = moved;
    }

    void execute() {
        const std::vector<EKAlarm> former = alarms_;
        std::vector<EKAlarm> replaced;
        std::optional<std::size_t> place;
        alarms_.clear();
        for (const EKAlarm& alarm : former) {
            const auto rang = ringInstant(alarm, before_, zone_);
            if (!coincide(rang, former_) && !coincide(rang, shown_)) {
                // One that followed a date that is gone has nothing left to follow.
                if (!rang || ringInstant(alarm, after_, zone_))
                    alarms_.push_back(alarm);
                continue;
            }
            if (!place)
                place = alarms_.size();
            replaced.push_back(alarm);
        }
        if (wanted_ && std::none_of(alarms_.begin(), alarms_.end(), [&](const EKAlarm& alarm) {
                return coincide(ringInstant(alarm, after_, zone_), wanted_);
            }))
            alarms_.insert(alarms_.begin() + static_cast<std::ptrdiff_t>(place.value_or(alarms_.size())),
                           successorOf(replaced));
        removeVoidRepetitions(former);
    }

  private:
    /// Where an alarm that stood for this alert stands for it on the new due day; by its own clock, since an
    /// alarm may be more exact than an alert and farther from its day than one that can be chosen.
    [[nodiscard]] std::optional<Instant> movedAlong(Instant rang,
                                                    const ReminderAlertSchedule& schedule) const {
        const auto* day = std::get_if<DayRelativeToDueDate>(&schedule);
        if (!day || !after_.due || after_.due->includesTime() || !after_.due->date().isValid())
            return std::nullopt;
        return zone_.instantAt(after_.due->date().addDays(day->dayOffset), zone_.timeOf(rang),
                               GapPolicy::nextExisting);
    }

    /// Whether an alarm comes to ring at the wanted instant without being changed.
    [[nodiscard]] bool follows(const EKAlarm& alarm) const {
        const bool keepsItsDistance = keepsDistance_ && alarm.relativeOffset &&
                                      before_.followedBy(alarm) == before_.due &&
                                      after_.followedBy(alarm) == after_.due;
        return keepsItsDistance || coincide(ringInstant(alarm, after_, zone_), wanted_);
    }

    [[nodiscard]] EKAlarm successorOf(const std::vector<EKAlarm>& replaced) const {
        for (const EKAlarm& alarm : replaced) {
            if (follows(alarm))
                return alarm;
        }
        if (!keepsDistance_ || replaced.empty())
            return EKAlarm::at(*wanted_);
        EKAlarm moved = replaced.front();
        moved.absoluteDate = wanted_;
        moved.relativeOffset.reset();
        return moved;
    }

    void removeVoidRepetitions(const std::vector<EKAlarm>& former) {
        const auto stillRings = [&](const EKAlarm& alarm) {
            return std::any_of(alarms_.begin(), alarms_.end(), [&](const EKAlarm& left) {
                return left.identifier == alarm.identifier &&
                       coincide(ringInstant(left, after_, zone_), ringInstant(alarm, before_, zone_));
            });
        };
        for (const EKAlarm& alarm : former) {
            if (alarm.identifier.isEmpty() || alarm.structuredLocation || stillRings(alarm))
                continue;
            std::erase_if(alarms_,
                          [&](const EKAlarm& again) { return again.snoozedAlarm == alarm.identifier; });
        }
    }

    std::vector<EKAlarm>& alarms_;
    const TimeZone& zone_;
    const AlarmDates before_;
    const AlarmDates after_;
    /// The alert stays the same, and the due date moves.
    const bool keepsDistance_;
    /// When the alert rang, as it is computed and as the alarm has it, and when it is to ring.
    const std::optional<Instant> former_;
    std::optional<Instant> shown_;
    std::optional<Instant> wanted_;
};

}  // namespace

TextPair label(const ReminderAlertSchedule& schedule, ClockHours hours) {
    if (const auto* relative = std::get_if<RelativeToDueTime>(&schedule)) {
        const auto timing = fromRawValue<ReminderAlertTiming>(relative->seconds);
        return timing ? title(*timing) : offsetInWords(relative->seconds);
    }
    const auto& day = std::get<DayRelativeToDueDate>(schedule);
    const auto offered = fromRawValue<ReminderDateOnlyAlertDay>(day.dayOffset);
    const TextPair words = offered ? title(*offered) : offsetInWords(86400.0 * day.dayOffset);
    const QString time = clockText(QTime(day.hour, day.minute), hours);
    return {QStringLiteral("%1 at %2").arg(words.english, time),
            QStringLiteral("%1 à %2").arg(words.french, time)};
}

std::optional<Instant> alarmInstant(const ReminderDueAlert& dueAlert, const TimeZone& zone) {
    if (!dueAlert.dueComponents || !dueAlert.schedule)
        return std::nullopt;
    return std::visit(
        [&](const auto& schedule) { return instantOf(schedule, *dueAlert.dueComponents, zone); },
        *dueAlert.schedule);
}

void replaceAlarm(EKReminderData& reminder, const ReminderDueAlert& before, const ReminderDueAlert& after,
                  const TimeZone& zone) {
    if (before == after)
        return;
    AlarmReplacement(reminder, before, after, zone).execute();
}

std::optional<ReminderAlertSchedule> alertSchedule(const EKReminderData& reminder, const TimeZone& zone) {
    const AlarmDates dates = AlarmDates::of(reminder);
    const EKAlarm* alarm = shownAlarm(reminder.alarms, dates, zone);
    const auto rings = alarm ? ringInstant(*alarm, dates, zone) : std::nullopt;
    return rings ? scheduleOf(*rings, dates.due, zone) : std::nullopt;
}

}  // namespace kestrant
