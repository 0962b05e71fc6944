#include "recap/RecapTexts.h"

namespace kestrant {
namespace {

QString capitalised(QString text) {
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

/// A day within its period: "Tuesday", "Tue 10", "10 November".
QString dayIn(RecapKind kind, QDate day, Language language, const QLocale& dates) {
    switch (kind) {
    case RecapKind::day:
    case RecapKind::week:
        return dates.toString(day, QStringLiteral("dddd"));
    case RecapKind::month:
        return dates.toString(day, QStringLiteral("ddd d"));
    case RecapKind::year:
        break;
    }
    if (day.day() == 1 && language == Language::french)
        return dates.toString(day, QStringLiteral("1'er' MMMM"));
    return dates.toString(day, QStringLiteral("d MMMM"));
}

TextPair nothingYet(RecapKind kind) {
    switch (kind) {
    case RecapKind::day:
        return text("nothing completed yet", "rien de terminé pour l’instant");
    case RecapKind::week:
        return text("a quiet week so far", "une semaine calme jusqu’ici");
    case RecapKind::month:
        return text("a quiet month so far", "un mois calme jusqu’ici");
    case RecapKind::year:
        break;
    }
    return text("a quiet year so far", "une année calme jusqu’ici");
}

TextPair moreThanBefore(RecapKind kind) {
    switch (kind) {
    case RecapKind::day:
        return text("%1 more than yesterday", "%1 de plus qu’hier");
    case RecapKind::week:
        return text("%1 more than last week by this day", "%1 de plus que la semaine dernière à ce jour");
    case RecapKind::month:
        return text("%1 more than last month by this day", "%1 de plus que le mois dernier à ce jour");
    case RecapKind::year:
        break;
    }
    return text("%1 more than in %2 by this day", "%1 de plus qu’en %2 à ce jour");
}

}  // namespace

QString recapTitle(const RecapPeriod& period, QDate today, Language language, const QLocale& dates) {
    const bool isPresent = period.first <= today && today <= period.last;
    switch (period.kind) {
    case RecapKind::day:
        return isPresent ? text("Today", "Aujourd’hui").in(language)
                         : capitalised(dates.toString(period.first, QStringLiteral("dddd d MMMM yyyy")));
    case RecapKind::week:
        return isPresent ? text("This week", "Cette semaine").in(language)
                         : dates.toString(period.first, QStringLiteral("d MMM")) + QStringLiteral(" – ") +
                               dates.toString(period.last, QStringLiteral("d MMM yyyy"));
    case RecapKind::month:
        return capitalised(dates.standaloneMonthName(period.first.month())) +
               (period.first.year() == today.year() ? QString()
                                                    : u' ' + QString::number(period.first.year()));
    case RecapKind::year:
        break;
    }
    return QString::number(period.first.year());
}

QString recapSentence(const Recap& recap, Language language, const QLocale& dates) {
    const RecapKind kind = recap.period.kind;
    if (recap.completed == 0)
        return nothingYet(kind).in(language);
    if (kind == RecapKind::day && recap.streak > 1)
        return text("%1 days in a row", "%1 jours de suite").in(language).arg(recap.streak);
    const int more = recap.completed - recap.completedBefore;
    if (kind != RecapKind::month && recap.completedBefore > 0 && more > 0) {
        const QString sentence = moreThanBefore(kind).in(language).arg(more);
        return kind == RecapKind::year ? sentence.arg(recap.period.first.year() - 1) : sentence;
    }
    if (kind == RecapKind::day)
        return text("completed", recap.completed == 1 ? "terminé" : "terminés").in(language);
    return text("best day: %1, with %2", "meilleur jour : %1, avec %2")
        .in(language)
        .arg(dayIn(kind, *recap.bestDay, language, dates))
        .arg(recap.bestCount);
}

}  // namespace kestrant
