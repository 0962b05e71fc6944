#include "ui/recap/RecapViewModel.h"

#include "eventkit/model/EKEventStore.h"
#include "foundation/ClockText.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "notch/NotchInteractionModel.h"
#include "recap/RecapTexts.h"
#include "reminders/store/ReminderStore.h"
#include "ui/panel/Localizer.h"

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
    , sharing_({.scheduler = services.scheduler,
                .clock = services.clock,
                .currentZone = services.currentZone,
                .localizer = services.localizer,
                .executor = services.executor,
                .defaults = services.defaults,
                .baseUrl = services.shareBaseUrl}) {
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

}  // namespace kestrant
