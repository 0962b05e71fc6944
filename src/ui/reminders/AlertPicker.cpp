#include "ui/reminders/AlertPicker.h"

#include "reminders/model/ReminderAlerts.h"
#include "ui/calendar/TimeOfDay.h"
#include "ui/panel/Localizer.h"

#include <algorithm>
#include <vector>

namespace kestrant {
namespace {

using Schedule = ReminderAlertSchedule;

/// When an alert rings that nobody has given another time.
const QTime usualTime(9, 0);

std::vector<Schedule> offered(AlertPicker::Due due) {
    std::vector<Schedule> schedules;
    if (due == AlertPicker::Due::time) {
        for (const auto& timing : choicesOf<ReminderAlertTiming>)
            schedules.emplace_back(RelativeToDueTime{timing.rawValue});
    } else if (due == AlertPicker::Due::day) {
        for (const auto& day : choicesOf<ReminderDateOnlyAlertDay>)
            schedules.emplace_back(DayRelativeToDueDate{day.rawValue, usualTime.hour(), usualTime.minute()});
    }
    return schedules;
}

/// A choice of a day, whatever the time.
std::optional<ReminderDateOnlyAlertDay> offeredDay(const Schedule& schedule) {
    const auto* day = std::get_if<DayRelativeToDueDate>(&schedule);
    return day ? fromRawValue<ReminderDateOnlyAlertDay>(day->dayOffset) : std::nullopt;
}

QString idOf(const Schedule& schedule) {
    if (const auto* relative = std::get_if<RelativeToDueTime>(&schedule))
        return QStringLiteral("time %1").arg(relative->seconds, 0, 'g', 17);
    const auto& day = std::get<DayRelativeToDueDate>(schedule);
    return QStringLiteral("day %1").arg(day.dayOffset);
}

}  // namespace

AlertPicker::AlertPicker(const Localizer& localizer, QObject* parent)
    : QObject(parent)
    , localizer_(localizer) {
    connect(&localizer, &Localizer::languageChanged, this, &AlertPicker::changed);
}

void AlertPicker::setDue(Due due) {
    if (due == due_)
        return;
    due_ = due;
    Q_EMIT changed();
}

void AlertPicker::setSchedule(const std::optional<Schedule>& schedule) {
    given_ = schedule;
    setValue({schedule, timeTextOf(schedule)});
}

void AlertPicker::setValue(const Value& value) {
    value_ = value;
    timeIsWrong_ = false;
    Q_EMIT changed();
}

bool AlertPicker::fits(const Schedule& schedule) const {
    return due_ == (std::holds_alternative<RelativeToDueTime>(schedule) ? Due::time : Due::day);
}

std::optional<Schedule> AlertPicker::shown() const {
    return value_.schedule && fits(*value_.schedule) ? value_.schedule : std::nullopt;
}

tl::expected<std::optional<Schedule>, TextPair> AlertPicker::takeSchedule() {
    const auto schedule = shown();
    if (!hasTime())
        return schedule;
    const auto time = timeOfDay(value_.time);
    if (timeIsWrong_ != !time) {
        timeIsWrong_ = !time;
        Q_EMIT changed();
    }
    if (!time)
        return tl::unexpected(unreadableTimeText());
    return DayRelativeToDueDate{std::get<DayRelativeToDueDate>(*schedule).dayOffset, time->hour(),
                                time->minute()};
}

QVariantList AlertPicker::choices() const {
    QVariantList result;
    const auto offer = [&](const QString& id, const std::optional<Schedule>& schedule) {
        result.append(QVariantMap{{QStringLiteral("id"), id}, {QStringLiteral("title"), titleOf(schedule)}});
    };
    offer({}, std::nullopt);
    const auto usual = offered(due_);
    for (const Schedule& schedule : usual)
        offer(idOf(schedule), schedule);
    const bool isUsual = !given_ || std::any_of(usual.begin(), usual.end(), [&](const Schedule& schedule) {
        return idOf(schedule) == idOf(*given_);
    });
    if (!isUsual && fits(*given_))
        offer(idOf(*given_), given_);
    return result;
}

QString AlertPicker::id() const {
    const auto schedule = shown();
    return schedule ? idOf(*schedule) : QString();
}

void AlertPicker::setId(const QString& id) {
    if (id == this->id())
        return;
    std::vector<Schedule> known = offered(due_);
    if (given_)
        known.push_back(*given_);
    const auto chosen = std::find_if(known.rbegin(), known.rend(),
                                     [&](const Schedule& schedule) { return idOf(schedule) == id; });
    const bool keepsTime = hasTime();
    value_.schedule = chosen == known.rend() ? std::nullopt : std::optional(*chosen);
    if (!keepsTime)
        value_.time = timeTextOf(value_.schedule);
    timeIsWrong_ = false;
    Q_EMIT changed();
    Q_EMIT edited();
}

QString AlertPicker::title() const {
    return titleOf(shown());
}

QString AlertPicker::titleOf(const std::optional<Schedule>& schedule) const {
    if (!schedule)
        return localizer_(text("No alert", "Aucune alerte"));
    const auto day = offeredDay(*schedule);
    return localizer_(day ? kestrant::title(*day) : label(*schedule, localizer_.clockHours()));
}

QString AlertPicker::timeTextOf(const std::optional<Schedule>& schedule) const {
    const auto* day = schedule ? std::get_if<DayRelativeToDueDate>(&*schedule) : nullptr;
    return day ? clockText(QTime(day->hour, day->minute), localizer_.clockHours()) : QString();
}

bool AlertPicker::hasTime() const {
    const auto schedule = shown();
    return schedule && offeredDay(*schedule);
}

void AlertPicker::setTime(const QString& typed) {
    if (typed == value_.time)
        return;
    value_.time = typed;
    timeIsWrong_ = false;
    Q_EMIT changed();
    Q_EMIT edited();
}

}  // namespace kestrant
