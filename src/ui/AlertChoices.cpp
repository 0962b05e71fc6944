#include "ui/AlertChoices.h"

#include "reminders/ReminderAlerts.h"

#include <QStringList>
#include <QVariantMap>

#include <vector>

namespace kestrant {

namespace {

/// The times of day that are offered for a reminder without one: two on the day, two on the day before.
std::vector<ReminderAlertSchedule> usualAlerts(bool dueDateIncludesTime) {
    std::vector<ReminderAlertSchedule> usual;
    if (dueDateIncludesTime) {
        for (const ReminderAlertTiming timing : allReminderAlertTimings)
            usual.emplace_back(RelativeToDueTime{rawValue(timing)});
        return usual;
    }
    for (const ReminderDateOnlyAlertDay day : allReminderDateOnlyAlertDays)
        for (const int hour : {9, 18})
            usual.emplace_back(DayRelativeToDueDate{rawValue(day), hour, 0});
    return usual;
}

}  // namespace

QString alertId(const std::optional<ReminderAlertSchedule>& schedule) {
    if (!schedule)
        return {};
    if (const auto* relative = std::get_if<RelativeToDueTime>(&*schedule))
        return QStringLiteral("time %1").arg(relative->seconds, 0, 'g', 17);
    const auto& day = std::get<DayRelativeToDueDate>(*schedule);
    return QStringLiteral("day %1 %2 %3").arg(day.dayOffset).arg(day.hour).arg(day.minute);
}

std::optional<ReminderAlertSchedule> alertWithId(const QString& id) {
    const QStringList parts = id.split(u' ');
    if (parts.size() == 2 && parts[0] == QLatin1String("time"))
        return RelativeToDueTime{parts[1].toDouble()};
    if (parts.size() == 4 && parts[0] == QLatin1String("day"))
        return DayRelativeToDueDate{parts[1].toInt(), parts[2].toInt(), parts[3].toInt()};
    return std::nullopt;
}

QString alertTitle(const std::optional<ReminderAlertSchedule>& schedule, const Localizer& localizer) {
    if (!schedule)
        return localizer(text("No alert", "Aucune alerte"));
    return localizer(label(*schedule));
}

QVariantList alertChoices(bool dueDateIncludesTime, const std::optional<ReminderAlertSchedule>& present,
                          const Localizer& localizer) {
    QVariantList choices;
    const auto offer = [&](const std::optional<ReminderAlertSchedule>& schedule) {
        choices.append(QVariantMap{{QStringLiteral("id"), alertId(schedule)},
                                   {QStringLiteral("title"), alertTitle(schedule, localizer)}});
    };
    offer(std::nullopt);
    bool offersPresent = !present.has_value();
    for (const ReminderAlertSchedule& schedule : usualAlerts(dueDateIncludesTime)) {
        offer(schedule);
        offersPresent = offersPresent || schedule == present;
    }
    if (!offersPresent)
        offer(present);
    return choices;
}

std::optional<ReminderAlertSchedule> fittingAlert(const std::optional<ReminderAlertSchedule>& schedule,
                                                  bool dueDateIncludesTime) {
    if (schedule && std::holds_alternative<RelativeToDueTime>(*schedule) == dueDateIncludesTime)
        return schedule;
    return std::nullopt;
}

}  // namespace kestrant
