#include "ui/QuickAddViewModel.h"

#include "reminders/ReminderDueText.h"
#include "reminders/ReminderStore.h"
#include "ui/ListColor.h"
#include "ui/Localizer.h"
#include "ui/TimeOfDay.h"

#include <QPointer>

#include <algorithm>

namespace kestrant {
namespace {

constexpr int daysShown = 42;

QString iso(QDate day) {
    return day.isValid() ? day.toString(Qt::ISODate) : QString();
}

QString capitalized(QString text) {
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

}  // namespace

QuickAddViewModel::QuickAddViewModel(ReminderStore& store, const Clock& clock,
                                     const CurrentCalendar& calendar, Localizer& localizer, QObject* parent)
    : QObject(parent)
    , store_(store)
    , clock_(clock)
    , calendar_(calendar)
    , localizer_(localizer) {
    firstOfMonth_ = currentDay().addDays(1 - currentDay().day());
    connect(&store, &ReminderStore::listsChanged, this, [this] {
        Q_EMIT listsChanged();
        Q_EMIT changed();
    });
    connect(&store, &ReminderStore::presentChanged, this, [this] {
        Q_EMIT monthChanged();
        Q_EMIT changed();
    });
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        Q_EMIT textsChanged();
        Q_EMIT monthChanged();
        Q_EMIT changed();
    });
}

QDate QuickAddViewModel::currentDay() const {
    return calendar_.calendar().dayOf(clock_.now());
}

void QuickAddViewModel::begin() {
    if (isSaving_ || error_)
        return;
    title_.clear();
    priority_ = NewReminderPriority::normal;
    listID_.reset();
    dueDay_ = {};
    timeText_.clear();
    showMonthOf(currentDay());
    Q_EMIT changed();
}

void QuickAddViewModel::edited() {
    error_.reset();
    Q_EMIT changed();
}

void QuickAddViewModel::submit() {
    if (isSaving_)
        return;
    const auto refuse = [this](const TextPair& reason) {
        error_ = reason;
        Q_EMIT changed();
    };
    NewReminder reminder{.title = title_, .priority = priority_};
    if (const ReminderList* chosen = list())
        reminder.listID = chosen->id;
    const bool hasTime = !timeText_.trimmed().isEmpty();
    const auto time = hasTime ? timeOfDay(timeText_) : std::optional(QTime(0, 0));
    if (!time)
        return refuse(unreadableTimeText());
    const ZoneCalendar calendar = calendar_.calendar();
    reminder.dueDateIncludesTime = hasTime;
    if (dueDay_.isValid())
        reminder.dueDate = hasTime ? calendar.instantAt(dueDay_, *time) : calendar.startOfDay(dueDay_);

    isSaving_ = true;
    error_.reset();
    Q_EMIT changed();
    store_.create(reminder, [self = QPointer(this)](const tl::expected<QString, ReminderStoreError>& result) {
        if (!self)
            return;
        self->isSaving_ = false;
        if (result) {
            self->begin();
            Q_EMIT self->added();
        } else {
            self->error_ = result.error().message();
            Q_EMIT self->changed();
        }
    });
}

void QuickAddViewModel::setTitle(const QString& title) {
    if (title == title_)
        return;
    title_ = title;
    edited();
}

QString QuickAddViewModel::priority() const {
    return rawValue(priority_);
}

void QuickAddViewModel::setPriority(const QString& raw) {
    const auto priority = newReminderPriority(raw);
    if (!priority || *priority == priority_)
        return;
    priority_ = *priority;
    edited();
}

QVariantList QuickAddViewModel::priorities() const {
    const auto entry = [this](NewReminderPriority priority, const TextPair& title) {
        return QVariantMap{{QStringLiteral("rawValue"), rawValue(priority)},
                           {QStringLiteral("title"), localizer_(title)}};
    };
    return {entry(NewReminderPriority::low, text("Low", "Basse")),
            entry(NewReminderPriority::normal, text("Normal", "Normale")),
            entry(NewReminderPriority::high, text("High", "Haute"))};
}

std::optional<QString> QuickAddViewModel::preferredListID() const {
    for (const std::optional<QString>& id : {store_.selectedListID(), store_.defaultListID()}) {
        const auto& lists = store_.lists();
        if (id && std::any_of(lists.begin(), lists.end(), [&](const ReminderList& list) {
                return list.id == *id && list.allowsContentModifications;
            }))
            return id;
    }
    return std::nullopt;
}

const ReminderList* QuickAddViewModel::list() const {
    const auto& lists = store_.lists();
    const auto wanted = listID_ ? listID_ : preferredListID();
    const auto found = std::find_if(lists.begin(), lists.end(), [&](const ReminderList& list) {
        return wanted ? list.id == *wanted : list.allowsContentModifications;
    });
    return found == lists.end() ? nullptr : &*found;
}

QString QuickAddViewModel::listId() const {
    return list() ? list()->id : QString();
}

void QuickAddViewModel::setListId(const QString& id) {
    listID_ = id.isEmpty() ? std::nullopt : std::optional(id);
    edited();
}

QString QuickAddViewModel::listTitle() const {
    return list() ? list()->title : localizer_(text("New list", "Nouvelle liste"));
}

QColor QuickAddViewModel::listColor() const {
    return kestrant::listColor(list());
}

QVariantList QuickAddViewModel::lists() const {
    QVariantList lists;
    for (const ReminderList& list : store_.lists()) {
        if (list.allowsContentModifications)
            lists.append(QVariantMap{{QStringLiteral("id"), list.id},
                                     {QStringLiteral("title"), list.title},
                                     {QStringLiteral("color"), kestrant::listColor(&list)}});
    }
    return lists;
}

QString QuickAddViewModel::dueDay() const {
    return iso(dueDay_);
}

void QuickAddViewModel::setDueDay(const QString& day) {
    const QDate date = QDate::fromString(day, Qt::ISODate);
    if (date == dueDay_)
        return;
    dueDay_ = date;
    if (date.isValid())
        showMonthOf(date);
    else
        timeText_.clear();
    edited();
}

void QuickAddViewModel::setTimeText(const QString& typed) {
    if (typed == timeText_)
        return;
    timeText_ = typed;
    edited();
}

QString QuickAddViewModel::dueText() const {
    if (!dueDay_.isValid())
        return {};
    const ZoneCalendar calendar = calendar_.calendar();
    const auto time = timeOfDay(timeText_);
    const Instant due = time ? calendar.instantAt(dueDay_, *time) : calendar.startOfDay(dueDay_);
    return reminderDueText(due, time.has_value(), clock_.now(), calendar, localizer_.language());
}

bool QuickAddViewModel::canSubmit() const {
    return !isSaving_ && !title_.trimmed().isEmpty();
}

QString QuickAddViewModel::errorText() const {
    return error_ ? localizer_(*error_) : QString();
}

void QuickAddViewModel::showMonthOf(QDate day) {
    const QDate first = day.addDays(1 - day.day());
    if (first == firstOfMonth_)
        return;
    firstOfMonth_ = first;
    Q_EMIT monthChanged();
}

void QuickAddViewModel::showMonth(int monthsLater) {
    showMonthOf(firstOfMonth_.addMonths(monthsLater));
}

void QuickAddViewModel::moveDueDay(int days, int months) {
    const QDate from = dueDay_.isValid() ? dueDay_ : currentDay();
    setDueDay(iso(from.addMonths(months).addDays(days)));
}

QString QuickAddViewModel::monthTitle() const {
    return capitalized(localizer_.locale().toString(firstOfMonth_, QStringLiteral("MMMM yyyy")));
}

QVariantList QuickAddViewModel::weekdays() const {
    const QLocale locale = localizer_.locale();
    QVariantList names;
    for (int offset = 0; offset < 7; ++offset) {
        const int day = (locale.firstDayOfWeek() - 1 + offset) % 7 + 1;
        names.append(QVariantMap{
            {QStringLiteral("narrow"), locale.standaloneDayName(day, QLocale::NarrowFormat).toUpper()},
            {QStringLiteral("full"), locale.standaloneDayName(day, QLocale::LongFormat)}});
    }
    return names;
}

QVariantList QuickAddViewModel::days() const {
    const QLocale locale = localizer_.locale();
    const QDate now = currentDay();
    const int leading = (firstOfMonth_.dayOfWeek() - locale.firstDayOfWeek() + 7) % 7;
    QVariantList days;
    for (int index = 0; index < daysShown; ++index) {
        const QDate day = firstOfMonth_.addDays(index - leading);
        days.append(QVariantMap{{QStringLiteral("iso"), iso(day)},
                                {QStringLiteral("day"), day.day()},
                                {QStringLiteral("isInMonth"), day.month() == firstOfMonth_.month()},
                                {QStringLiteral("isToday"), day == now},
                                {QStringLiteral("spoken"), locale.toString(day, QLocale::LongFormat)}});
    }
    return days;
}

QString QuickAddViewModel::today() const {
    return iso(currentDay());
}

QString QuickAddViewModel::tomorrow() const {
    return iso(currentDay().addDays(1));
}

QString QuickAddViewModel::nextWeek() const {
    const QDate now = currentDay();
    return iso(now.addDays(8 - now.dayOfWeek()));
}

}  // namespace kestrant
