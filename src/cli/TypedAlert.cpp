#include "cli/TypedAlert.h"

#include <QRegularExpression>
#include <QTime>

namespace kestrant {

std::optional<ReminderAlertSchedule> readTypedAlert(const QString& typed) {
    static const QRegularExpression before(QStringLiteral("^(?:0|([0-9]{1,4})([mhd]))$"));
    static const QRegularExpression timeOfDay(QStringLiteral("^(1d )?([0-9]{1,2}:[0-9]{2})$"));
    if (const auto match = before.match(typed); match.hasMatch()) {
        const QString unit = match.captured(2);
        const int length = unit == QLatin1String("m") ? 60 : unit == QLatin1String("h") ? 3600 : 86400;
        return RelativeToDueTime{-1.0 * match.captured(1).toInt() * length + 0.0};
    }
    if (const auto match = timeOfDay.match(typed); match.hasMatch()) {
        const QTime time = QTime::fromString(match.captured(2), QStringLiteral("H:mm"));
        if (time.isValid())
            return DayRelativeToDueDate{match.captured(1).isEmpty() ? 0 : -1, time.hour(), time.minute()};
    }
    return std::nullopt;
}

}  // namespace kestrant
