#include "foundation/ClockText.h"

namespace kestrant {

ClockHours clockHours(Language language, const QLocale& personal) {
    const bool hasHalves =
        personal.timeFormat(QLocale::ShortFormat).contains(QLatin1String("ap"), Qt::CaseInsensitive);
    return language == Language::english && hasHalves ? ClockHours::twelve : ClockHours::twentyFour;
}

QString clockText(QTime time, ClockHours hours) {
    if (hours == ClockHours::twentyFour)
        return time.toString(QStringLiteral("HH:mm"));
    const int hour = time.hour() % 12;
    return QString::number(hour == 0 ? 12 : hour) + time.toString(QStringLiteral(":mm")) +
           QChar(QChar::Nbsp) + (time.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM"));
}

}  // namespace kestrant
