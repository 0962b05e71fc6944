#include "ui/calendar/TimeOfDay.h"

#include <QRegularExpression>

namespace kestrant {

std::optional<QTime> timeOfDay(QStringView typed) {
    static const QRegularExpression form(
        QStringLiteral(R"(^(\d{1,2})(?:\s*[:h.]\s*(\d{2})|(?<=\d)(\d{2})|\s*h)?\s*(am|pm|a\.m\.|p\.m\.)?$)"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(typed.toString().simplified());
    if (!match.hasMatch())
        return std::nullopt;
    int hour = match.captured(1).toInt();
    const QString minute = match.captured(2) + match.captured(3);
    if (const QString half = match.captured(4).toLower(); !half.isEmpty()) {
        if (hour < 1 || hour > 12)
            return std::nullopt;
        hour = hour % 12 + (half.startsWith(QLatin1Char('p')) ? 12 : 0);
    }
    const QTime time(hour, minute.toInt());
    return time.isValid() ? std::optional(time) : std::nullopt;
}

bool isSameMinute(QTime a, QTime b) {
    return a.hour() == b.hour() && a.minute() == b.minute();
}

TextPair unreadableTimeText() {
    return text("Enter the time like 9:30.", "Entrez l’heure comme 9:30.");
}

}  // namespace kestrant
