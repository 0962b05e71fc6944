#include "ui/recap/RecapViewModel.h"

#include "eventkit/model/EKEventStore.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/ClockText.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "notch/NotchInteractionModel.h"
#include "recap/RecapShareLink.h"
#include "recap/RecapTexts.h"
#include "reminders/store/ReminderStore.h"
#include "ui/panel/Localizer.h"
#include "ui/recap/RecapFiles.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant {
namespace {

constexpr std::array kinds{RecapKind::day, RecapKind::week, RecapKind::month, RecapKind::year};
const QString route = QStringLiteral("panel.recap");
/// Names that are listed of a day; the others are counted.
constexpr int namesOfDay = 3;

QString rawValue(RecapKind kind) {
    return RecapCard{.recap = {.period = {.kind = kind}}}.kind();
}

std::optional<RecapKind> kindNamed(const QString& name) {
    const auto found = std::ranges::find(kinds, name, rawValue);
    return found == kinds.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

RecapViewModel::RecapViewModel(const Services& services, QObject* parent)
    : QObject(parent)
    , services_(services)
    , links_(services.defaults) {
    const auto follow = [this] {
        if (isOpen_)
            refresh();
    };
    connect(&services_.reminders, &ReminderStore::completionRecordsChanged, this, follow);
    connect(&services_.reminders, &ReminderStore::filterCountsChanged, this, follow);
    connect(&services_.reminders, &ReminderStore::presentChanged, this, follow);
    connect(&services_.localizer, &Localizer::languageChanged, this, follow);
    connect(&services_.interaction, &NotchInteractionModel::phaseChanged, this, [this] {
        if (!services_.interaction.isExpanded())
            close();
    });
    zoneChanges_ = services_.currentZone.observeChanges(follow);
}

void RecapViewModel::open() {
    if (isOpen_)
        return;
    isOpen_ = true;
    kind_.reset();
    day_ = {};
    services_.interaction.presentRoute(route);
    databaseChanges_ = services_.eventStore.observeChanges([this] {
        fetched_ = {};
        fetchTitles();
    });
    refresh();
    Q_EMIT viewChanged();
    Q_EMIT isOpenChanged();
}

void RecapViewModel::close() {
    if (!std::exchange(isOpen_, false))
        return;
    services_.interaction.dismissRoute(route);
    databaseChanges_ = {};
    // The view still shows what it showed while it goes.
    ++fetchGeneration_;
    fetched_ = {};
    Q_EMIT isOpenChanged();
}

QString RecapViewModel::view() const {
    return kind_ ? rawValue(*kind_) : QStringLiteral("overview");
}

void RecapViewModel::setView(const QString& view) {
    show(kindNamed(view), {});
}

QVariantList RecapViewModel::views() const {
    const auto entry = [this](const char* raw, const TextPair& title) {
        return QVariantMap{{QStringLiteral("rawValue"), QString::fromUtf8(raw)},
                           {QStringLiteral("title"), services_.localizer(title)}};
    };
    return {entry("overview", text("Overview", "Ensemble")), entry("day", text("Day", "Jour")),
            entry("week", text("Week", "Semaine")), entry("month", text("Month", "Mois")),
            entry("year", text("Year", "Année"))};
}

QVariantList RecapViewModel::cards() const {
    QVariantList cards;
    for (const RecapCard& card : cards_)
        cards.append(QVariant::fromValue(card));
    return cards;
}

QDate RecapViewModel::today() const {
    return services_.currentZone.zone().dayOf(services_.clock.now());
}

RecapPeriod RecapViewModel::periodOf(RecapKind kind, QDate day) const {
    return periodContaining(kind, day, firstDayOfWeek());
}

bool RecapViewModel::hasPrevious() const {
    return kind_ && !days_.empty() && days_.front().day < card_.recap.period.first;
}

bool RecapViewModel::hasNext() const {
    return kind_ && card_.recap.period.last < card_.today;
}

void RecapViewModel::showPrevious() {
    if (hasPrevious())
        show(kind_, card_.recap.period.first.addDays(-1));
}

void RecapViewModel::showNext() {
    if (hasNext())
        show(kind_, card_.recap.period.last.addDays(1));
}

void RecapViewModel::showDay(int index) {
    const QDate day = card_.recap.period.first.addDays(index);
    if (index >= 0 && index < card_.days() && day <= card_.today)
        show(RecapKind::day, day);
}

void RecapViewModel::show(std::optional<RecapKind> kind, QDate day) {
    kind_ = kind;
    // The present period stays the present one when the day ends.
    day_ = kind && day.isValid() && periodOf(*kind, day) != periodOf(*kind, today()) ? day : QDate();
    tell({});
    makeCards();
    Q_EMIT viewChanged();
    Q_EMIT changed();
}

void RecapViewModel::refresh() {
    days_ = completedDays(services_.reminders.completionRecords(), services_.currentZone.zone(),
                          services_.clock.now());
    makeCards();
    Q_EMIT changed();
}

RecapCard RecapViewModel::makeCard(const RecapPeriod& period) const {
    const QDate present = today();
    RecapCard card = recapCard(recapOf(period, days_, present), present, firstDayOfWeek(),
                               services_.localizer.language(), services_.localizer.locale());
    if (period.kind == RecapKind::day) {
        const TimeZone zone = services_.currentZone.zone();
        for (const CompletionRecord* record : recordsOf(period.first)) {
            const QTime time = zone.timeOf(record->completedAt);
            const int halfHour = time.hour() * 2 + time.minute() / 30;
            ++card.halfHours[std::size_t(halfHour)];
        }
    }
    return card;
}

void RecapViewModel::makeCards() {
    const QDate day = day_.isValid() ? day_ : today();
    cards_.clear();
    if (!kind_) {
        for (const RecapKind kind : kinds)
            cards_.push_back(makeCard(periodOf(kind, day)));
    }
    card_ = makeCard(periodOf(kind_.value_or(RecapKind::week), day));
    fetchTitles();
}

void RecapViewModel::fetchTitles() {
    // A year is more than anybody reads the titles of.
    const RecapPeriod period = !kind_ ? periodOf(RecapKind::day, today()) : card_.recap.period;
    if (period == fetched_ || period.kind == RecapKind::year)
        return;
    fetched_ = period;
    const int generation = ++fetchGeneration_;
    const TimeZone zone = services_.currentZone.zone();
    services_.eventStore.fetchReminders(
        EKEventStore::predicateForCompletedReminders(zone.startOfDay(period.first),
                                                     zone.startOfDay(period.last.addDays(1)), {}),
        [self = QPointer(this), generation](const EKReminders& completed) {
            if (!self || generation != self->fetchGeneration_)
                return;
            self->items_.clear();
            for (const auto& reminder : completed) {
                Item item{.title = reminder->title, .color = QColor(0x8e, 0x8e, 0x93)};
                const auto list =
                    self->services_.eventStore.calendarWithIdentifier(reminder->calendarIdentifier);
                if (list) {
                    item.list = list->title;
                    if (list->color)
                        item.color = QColor(list->color->red, list->color->green, list->color->blue);
                }
                self->items_.insert(reminder->calendarItemIdentifier, item);
            }
            Q_EMIT self->changed();
        });
}

std::vector<const CompletionRecord*> RecapViewModel::recordsOf(QDate day) const {
    const TimeZone zone = services_.currentZone.zone();
    const auto& records = services_.reminders.completionRecords();
    const Instant end = std::min(zone.startOfDay(day.addDays(1)), services_.clock.now() + Duration(1));
    std::vector<const CompletionRecord*> found;
    for (auto record =
             std::ranges::lower_bound(records, zone.startOfDay(day), {}, &CompletionRecord::completedAt);
         record != records.end() && record->completedAt < end; ++record)
        found.push_back(&*record);
    return found;
}

QVariantList RecapViewModel::rows() const {
    if (kind_ && *kind_ != RecapKind::day)
        return {};
    const TimeZone zone = services_.currentZone.zone();
    QVariantList rows;
    for (const CompletionRecord* record : recordsOf(kind_ ? card_.recap.period.first : today())) {
        const auto item = items_.constFind(record->reminderIdentifier);
        const bool isKnown = item != items_.constEnd();
        rows.append(QVariantMap{
            {QStringLiteral("time"),
             clockText(zone.timeOf(record->completedAt), services_.localizer.clockHours())},
            {QStringLiteral("title"), isKnown ? item->title
                                              : services_.localizer(text("A reminder that is gone since",
                                                                         "Un rappel disparu depuis"))},
            {QStringLiteral("list"), isKnown ? item->list : QString()},
            {QStringLiteral("color"), isKnown ? item->color : QColor(0x8e, 0x8e, 0x93)},
            {QStringLiteral("isKnown"), isKnown},
        });
    }
    return rows;
}

QString RecapViewModel::openText() const {
    const int open = services_.reminders.filterCounts().today;
    if (!services_.reminders.hasLoaded() || open == 0)
        return {};
    return services_.localizer(open == 1 ? text("%1 open", "%1 ouvert") : text("%1 open", "%1 ouverts"))
        .arg(open);
}

QVariantMap RecapViewModel::dayHint(int index) const {
    if (index < 0 || index >= card_.days())
        return {};
    const QDate day = card_.recap.period.first.addDays(index);
    const QString title = recapLabel({RecapKind::day, day, day}, card_.today, services_.localizer.language(),
                                     services_.localizer.locale());
    const bool isFuture = day > card_.today;
    const int count = card_.recap.days[std::size_t(index)];
    QStringList names;
    if (card_.recap.period.kind != RecapKind::year) {
        for (const CompletionRecord* record : recordsOf(day)) {
            if (const auto item = items_.constFind(record->reminderIdentifier);
                item != items_.constEnd() && names.size() < namesOfDay)
                names.append(item->title);
        }
    }
    const int others = count - int(names.size());
    if (!names.isEmpty() && others > 0)
        names.append(
            services_.localizer(others == 1 ? text("%1 more", "%1 autre") : text("%1 more", "%1 autres"))
                .arg(others));
    const QString number = isFuture ? QString() : services_.localizer.locale().toString(count);
    const QString counted = isFuture ? services_.localizer(text("to come", "à venir"))
                                     : services_
                                           .localizer(count == 1 ? text("%1 completed", "%1 terminé")
                                                                 : text("%1 completed", "%1 terminés"))
                                           .arg(number);
    const QString list = names.join(QStringLiteral(", "));
    return {{QStringLiteral("title"), title},
            {QStringLiteral("number"), number},
            {QStringLiteral("names"), list},
            {QStringLiteral("counted"), counted},
            {QStringLiteral("spokenText"), title + QStringLiteral(": ") + counted +
                                               (list.isEmpty() ? QString() : QStringLiteral(". ") + list)}};
}

QString RecapViewModel::fileName() const {
    const RecapPeriod& period = card_.recap.period;
    const QString name = QStringLiteral("Kestrant ");
    switch (period.kind) {
    case RecapKind::day:
        return name + period.first.toString(Qt::ISODate);
    case RecapKind::week: {
        const WeekNumber number = weekNumberOf(period.first, firstDayOfWeek());
        return name + QStringLiteral("%1-W%2").arg(number.year).arg(number.week, 2, 10, QLatin1Char('0'));
    }
    case RecapKind::month:
        return name + period.first.toString(QStringLiteral("yyyy-MM"));
    case RecapKind::year:
        break;
    }
    return name + QString::number(period.first.year());
}

void RecapViewModel::savePicture() {
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

void RecapViewModel::share() {
    tell({});
    const auto link = recapShareLink(services_.shareBaseUrl, sharedRecap(card_.recap, card_.firstDayOfWeek));
    shareLink_ = link.value_or(QUrl());
    if (link)
        links_.remember(*link, services_.clock.now());
    Q_EMIT linksChanged();
}

QString RecapViewModel::shareContent() const {
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

QVariantList RecapViewModel::madeLinks() const {
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

void RecapViewModel::copyLink() {
    QGuiApplication::clipboard()->setText(shareLink());
    tell(services_.localizer(text("Link copied", "Lien copié")));
}

void RecapViewModel::forgetLink(const QString& link) {
    links_.forget(QUrl(link));
    Q_EMIT linksChanged();
}

void RecapViewModel::forgetAllLinks() {
    links_.forgetAll();
    Q_EMIT linksChanged();
}

void RecapViewModel::copyPicture() {
    QGuiApplication::clipboard()->setImage(recapPicture(card_));
    tell(services_.localizer(text("Picture copied", "Image copiée")));
}

void RecapViewModel::copyText() {
    QGuiApplication::clipboard()->setText(card_.plainText());
    tell(services_.localizer(text("Text copied", "Texte copié")));
}

void RecapViewModel::tell(const QString& message, bool hasFailed) {
    message_ = message;
    hasFailed_ = hasFailed;
    Q_EMIT messageChanged();
}

}  // namespace kestrant
