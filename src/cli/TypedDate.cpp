#include "cli/TypedDate.h"

#include <algorithm>

namespace kestrant {

std::optional<TypedDate> readTypedDate(const QString& typed, const TimeZone& zone) {
    const QDate day = QDate::fromString(typed.left(10), QStringLiteral("yyyy-MM-dd"));
    if (!day.isValid() || day.year() < 1)
        return std::nullopt;
    if (typed.size() == 10)
        return TypedDate{zone.startOfDay(day), false, std::pair(day, QTime(0, 0))};
    const QChar separator = typed[10];
    if (separator != u'T' && separator != u't' && separator != u' ')
        return std::nullopt;
    const QString time = typed.mid(11);
    if (const auto instant = parseIso8601(QString(typed.left(10) + u'T' + time)))
        return TypedDate{*instant, true};
    for (const QString& format : {QStringLiteral("HH:mm"), QStringLiteral("HH:mm:ss")}) {
        const QTime local = QTime::fromString(time, format);
        if (local.isValid())
            return TypedDate{zone.instantAt(day, local), true, std::pair(day, local)};
    }
    return std::nullopt;
}

std::optional<TypedDate> readDateInWords(const QString& typed, const QuickAddContext& context) {
    if (const auto date = readTypedDate(typed, context.zone))
        return date;
    const QuickAddLine line = parseQuickAdd(typed, context);
    const bool isDate =
        line.title.isEmpty() &&
        std::all_of(line.pieces.begin(), line.pieces.end(), [](const QuickAddPiece& piece) {
            using Kind = QuickAddPiece::Kind;
            return piece.kind == Kind::day || piece.kind == Kind::time || piece.kind == Kind::zone;
        });
    return isDate ? dateOf(line, context.zone) : std::nullopt;
}

std::optional<TypedDate> dateOf(const QuickAddLine& line, const TimeZone& zone) {
    if (!line.day)
        return std::nullopt;
    if (!line.time)
        return TypedDate{zone.startOfDay(*line.day), false, std::pair(*line.day, QTime(0, 0))};
    return TypedDate{zone.instantAt(*line.day, *line.time), true, std::pair(*line.day, *line.time)};
}

}  // namespace kestrant
