#include "ui/recap/RecapCard.h"

#include "recap/RecapTexts.h"

#include <QStringList>

namespace kestrant {
namespace {

QString asSentence(QString text) {
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text + u'.';
}

}  // namespace

QString RecapCard::kind() const {
    switch (recap.period.kind) {
    case RecapKind::day:
        return QStringLiteral("day");
    case RecapKind::week:
        return QStringLiteral("week");
    case RecapKind::month:
        return QStringLiteral("month");
    case RecapKind::year:
        break;
    }
    return QStringLiteral("year");
}

int RecapCard::todayIndex() const {
    const RecapPeriod& period = recap.period;
    return period.first <= today && today <= period.last ? int(period.first.daysTo(today)) : -1;
}

QString RecapCard::spokenText() const {
    QStringList parts{title + QStringLiteral(": ") + number + u' ' + caption + u'.'};
    for (const QString& each : {sentence, detail}) {
        // A single word says no more than the caption.
        if (each.contains(u' '))
            parts.append(asSentence(each));
    }
    return parts.join(u' ');
}

QString RecapCard::plainText() const {
    QString text = spokenText();
    if (title != label)
        text.replace(0, title.size(), title + QStringLiteral(" (") + label + u')');
    return text;
}

RecapCard recapCard(const Recap& recap, QDate today, Qt::DayOfWeek firstDayOfWeek, Language language,
                    const QLocale& dates) {
    RecapCard card;
    card.recap = recap;
    card.today = today;
    card.firstDayOfWeek = firstDayOfWeek;
    card.dates = dates;
    card.title = recapTitle(recap.period, today, language, dates);
    card.label = recapLabel(recap.period, today, language, dates);
    card.number = dates.toString(recap.completed);
    card.caption = (recap.completed == 1   ? text("reminder completed", "rappel terminé")
                    : recap.completed == 0 ? text("reminders completed", "rappel terminé")
                                           : text("reminders completed", "rappels terminés"))
                       .in(language);
    card.sentence = recapSentence(recap, today, language, dates);
    card.detail = recapDetail(recap, today, language, dates);
    return card;
}

}  // namespace kestrant
