#include "ui/recap/RecapSharing.h"

#include "foundation/BackgroundExecutor.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "recap/RecapShareLink.h"
#include "recap/RecapTexts.h"
#include "ui/panel/Localizer.h"
#include "ui/recap/RecapFiles.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <QVariantMap>

namespace kestrant {

RecapSharing::RecapSharing(const Services& services, QObject* parent)
    : QObject(parent)
    , services_(services)
    , links_(services.defaults) {}

QString RecapSharing::fileName() const {
    const RecapPeriod& period = card_.recap.period;
    const QString name = QStringLiteral("Kestrant ");
    switch (period.kind) {
    case RecapKind::day:
        return name + period.first.toString(Qt::ISODate);
    case RecapKind::week: {
        const WeekNumber number = weekNumberOf(period.first, card_.firstDayOfWeek);
        return name + QStringLiteral("%1-W%2").arg(number.year).arg(number.week, 2, 10, QLatin1Char('0'));
    }
    case RecapKind::month:
        return name + period.first.toString(QStringLiteral("yyyy-MM"));
    case RecapKind::year:
        break;
    }
    return name + QString::number(period.first.year());
}

void RecapSharing::savePicture() {
    const QString folder = pictureFolder_.isEmpty() ? pictureFolder() : pictureFolder_;
    services_.executor.run(
        [self = QPointer(this), &scheduler = services_.scheduler, folder, name = fileName(), card = card_] {
            const auto saved = saveRecapPicture(card, folder, name);
            scheduler.post([self, folder, saved] {
                if (!self)
                    return;
                if (saved)
                    self->tell(self->services_.localizer(text("Saved as %1", "Enregistré : %1")).arg(*saved));
                else
                    self->tell(self->services_
                                   .localizer(text("The picture could not be saved in %1.",
                                                   "L’image n’a pas pu être enregistrée dans %1."))
                                   .arg(folder),
                               true);
            });
        });
}

void RecapSharing::begin(const RecapCard& card) {
    card_ = card;
    tell({});
    const auto link = recapShareLink(services_.baseUrl, sharedRecap(card_.recap, card_.firstDayOfWeek));
    link_ = link.value_or(QUrl());
    if (link)
        links_.remember(*link, services_.clock.now());
    Q_EMIT linksChanged();
}

QString RecapSharing::contentText() const {
    const SharedRecap shared = sharedRecap(card_.recap, card_.firstDayOfWeek);
    QStringList numbers;
    for (const int count : shared.days)
        numbers.append(QString::number(count));
    switch (card_.recap.period.kind) {
    case RecapKind::day:
        return services_.localizer(text("The day and one number: %1", "Le jour et un nombre : %1"))
            .arg(numbers.join(u' '));
    case RecapKind::week:
        return services_
            .localizer(
                text("The week and a number for each day: %1", "La semaine et un nombre par jour : %1"))
            .arg(numbers.join(u' '));
    case RecapKind::month:
        return services_.localizer(
            text("The month and a number for each day", "Le mois et un nombre par jour"));
    case RecapKind::year:
        break;
    }
    return services_.localizer(text("The year and a number for each day", "L’année et un nombre par jour"));
}

QVariantList RecapSharing::madeLinks() const {
    const TimeZone zone = services_.currentZone.zone();
    const QLocale dates = services_.localizer.locale();
    QVariantList made;
    for (const MadeShareLink& each : links_.links()) {
        const auto shared = readRecapFragment(each.link.fragment(QUrl::FullyEncoded).toLatin1());
        const QDate day = zone.dayOf(each.made);
        made.append(QVariantMap{
            {QStringLiteral("link"), each.link.toString()},
            {QStringLiteral("title"),
             shared ? recapLabel(shared->period, card_.today, services_.localizer.language(), dates)
                    : each.link.toDisplayString()},
            {QStringLiteral("made"), services_.localizer(text("made on %1", "créé le %1"))
                                         .arg(recapLabel({RecapKind::day, day, day}, card_.today,
                                                         services_.localizer.language(), dates))},
        });
    }
    return made;
}

void RecapSharing::copyLink() {
    QGuiApplication::clipboard()->setText(link());
    tell(services_.localizer(text("Link copied", "Lien copié")));
}

void RecapSharing::forgetLink(const QString& link) {
    links_.forget(QUrl(link));
    Q_EMIT linksChanged();
}

void RecapSharing::forgetAllLinks() {
    links_.forgetAll();
    Q_EMIT linksChanged();
}

void RecapSharing::copyPicture() {
    QGuiApplication::clipboard()->setImage(recapPicture(card_));
    tell(services_.localizer(text("Picture copied", "Image copiée")));
}

void RecapSharing::copyText() {
    QGuiApplication::clipboard()->setText(card_.plainText());
    tell(services_.localizer(text("Text copied", "Texte copié")));
}

void RecapSharing::tell(const QString& message, bool hasFailed) {
    message_ = message;
    hasFailed_ = hasFailed;
    Q_EMIT messageChanged();
}

}  // namespace kestrant
