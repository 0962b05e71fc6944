#include "recap/RecapTexts.h"

#include <QStringList>

#include <algorithm>
#include <array>

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

TextPair nothingCompleted(RecapKind kind, bool isPresent) {
    switch (kind) {
    case RecapKind::day:
        return isPresent ? text("nothing completed yet", "rien de terminé pour l’instant")
                         : text("a quiet day", "une journée calme");
    case RecapKind::week:
        return isPresent ? text("a quiet week so far", "une semaine calme jusqu’ici")
                         : text("a quiet week", "une semaine calme");
    case RecapKind::month:
        return isPresent ? text("a quiet month so far", "un mois calme jusqu’ici")
                         : text("a quiet month", "un mois calme");
    case RecapKind::year:
        break;
    }
    return isPresent ? text("a quiet year so far", "une année calme jusqu’ici")
                     : text("a quiet year", "une année calme");
}

TextPair moreThanBefore(RecapKind kind, bool isPresent) {
    switch (kind) {
    case RecapKind::day:
        return isPresent ? text("%1 more than yesterday", "%1 de plus qu’hier")
                         : text("%1 more than the day before", "%1 de plus que la veille");
    case RecapKind::week:
        return isPresent ? text("%1 more than last week by this day",
                                "%1 de plus que la semaine dernière à ce jour")
                         : text("%1 more than the week before", "%1 de plus que la semaine précédente");
    case RecapKind::month:
        return isPresent
                   ? text("%1 more than last month by this day", "%1 de plus que le mois dernier à ce jour")
                   : text("%1 more than the month before", "%1 de plus que le mois précédent");
    case RecapKind::year:
        break;
    }
    return isPresent ? text("%1 more than in %2 by this day", "%1 de plus qu’en %2 à ce jour")
                     : text("%1 more than in %2", "%1 de plus qu’en %2");
}

bool isPresentPeriod(const RecapPeriod& period, QDate today) {
    return period.first <= today && today <= period.last;
}

QString daysInARow(int days, Language language) {
    return text("%1 days in a row", "%1 jours de suite").in(language).arg(days);
}

/// Tells of the best day only by comparison.
bool comparesWithBefore(const Recap& recap) {
    return recap.period.kind != RecapKind::month && recap.completedBefore > 0 &&
           recap.completed > recap.completedBefore;
}

QString bestDay(const Recap& recap, Language language, const QLocale& dates) {
    return text("best day: %1, with %2", "meilleur jour : %1, avec %2")
        .in(language)
        .arg(dayIn(recap.period.kind, *recap.bestDay, language, dates))
        .arg(recap.bestCount);
}

/// The month and the day of the week with the most completions, the earlier one of several, and the longest
/// row of days.
QString yearDetail(const Recap& recap, Language language, const QLocale& dates) {
    std::array<int, 12> months{};
    std::array<int, 7> weekdays{};
    for (std::size_t index = 0; index < recap.days.size(); ++index) {
        const QDate day = recap.period.first.addDays(qint64(index));
        months[std::size_t(day.month() - 1)] += recap.days[index];
        weekdays[std::size_t(day.dayOfWeek() - 1)] += recap.days[index];
    }
    const auto month = std::ranges::max_element(months);
    const auto weekday = std::ranges::max_element(weekdays);
    QStringList parts{text("busiest month: %1, %2", "mois le plus rempli : %1, %2")
                          .in(language)
                          .arg(dates.standaloneMonthName(int(month - months.begin()) + 1))
                          .arg(*month)};
    if (recap.longestStreak > 1)
        parts.append(text("longest run: %1 days", "plus longue série : %1 jours")
                         .in(language)
                         .arg(recap.longestStreak));
    const QString name = dates.standaloneDayName(int(weekday - weekdays.begin()) + 1);
    parts.append(text("most on %1s", "surtout le %1").in(language).arg(name));
    return parts.join(QStringLiteral(" · "));
}

}  // namespace

QString recapTitle(const RecapPeriod& period, QDate today, Language language, const QLocale& dates) {
    const bool isPresent = isPresentPeriod(period, today);
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

QString recapLabel(const RecapPeriod& period, QDate today, Language language, const QLocale& dates) {
    const bool isThisYear = period.last.year() == today.year();
    const auto brief = [&](QDate day, const QString& format) {
        const bool isFirst = day.day() == 1 && language == Language::french;
        return dates.toString(day, isFirst ? QString(format).replace(u'd', QStringLiteral("d'er'")) : format);
    };
    switch (period.kind) {
    case RecapKind::day:
        return capitalised(dates.toString(period.first, QStringLiteral("ddd "))) +
               brief(period.first, isThisYear ? QStringLiteral("d MMM") : QStringLiteral("d MMM yyyy"));
    case RecapKind::week: {
        const bool isOneMonth = period.first.month() == period.last.month();
        return brief(period.first, isOneMonth ? QStringLiteral("d") : QStringLiteral("d MMM")) +
               QStringLiteral(" – ") +
               brief(period.last, isThisYear ? QStringLiteral("d MMM") : QStringLiteral("d MMM yyyy"));
    }
    case RecapKind::month:
        return capitalised(dates.standaloneMonthName(period.first.month())) + u' ' +
               QString::number(period.first.year());
    case RecapKind::year:
        break;
    }
    return QString::number(period.first.year());
}

QString recapSentence(const Recap& recap, QDate today, Language language, const QLocale& dates) {
    const RecapKind kind = recap.period.kind;
    const bool isPresent = isPresentPeriod(recap.period, today);
    if (recap.completed == 0)
        return nothingCompleted(kind, isPresent).in(language);
    if (kind == RecapKind::day && recap.streak > 1)
        return daysInARow(recap.streak, language);
    if (comparesWithBefore(recap)) {
        const QString sentence =
            moreThanBefore(kind, isPresent).in(language).arg(recap.completed - recap.completedBefore);
        return kind == RecapKind::year ? sentence.arg(recap.period.first.year() - 1) : sentence;
    }
    if (kind == RecapKind::day)
        return text("completed", recap.completed == 1 ? "terminé" : "terminés").in(language);
    return bestDay(recap, language, dates);
}

QString recapDetail(const Recap& recap, QDate today, Language language, const QLocale& dates) {
    if (recap.completed == 0)
        return {};
    switch (recap.period.kind) {
    case RecapKind::day:
        if (recap.streak > 1 && comparesWithBefore(recap))
            return moreThanBefore(RecapKind::day, isPresentPeriod(recap.period, today))
                .in(language)
                .arg(recap.completed - recap.completedBefore);
        return {};
    case RecapKind::week:
        if (comparesWithBefore(recap))
            return bestDay(recap, language, dates);
        return recap.longestStreak > 1 ? daysInARow(recap.longestStreak, language) : QString();
    case RecapKind::month: {
        const int busyDays = recap.elapsedDays - recap.quietDays;
        if (busyDays == recap.elapsedDays)
            return text("something got done on every day", "quelque chose de fait chaque jour").in(language);
        return text("on %1 of %2 days something got done", busyDays == 1
                                                               ? "quelque chose de fait %1 jour sur %2"
                                                               : "quelque chose de fait %1 jours sur %2")
            .in(language)
            .arg(busyDays)
            .arg(recap.elapsedDays);
    }
    case RecapKind::year:
        break;
    }
    return yearDetail(recap, language, dates);
}

}  // namespace kestrant
