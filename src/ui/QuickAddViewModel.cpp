#include "ui/QuickAddViewModel.h"

#include "reminders/ReminderDueText.h"
#include "reminders/ReminderStore.h"
#include "ui/Choices.h"
#include "ui/ListColor.h"
#include "ui/Localizer.h"
#include "ui/RepeatChoices.h"
#include "ui/TimeOfDay.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

const QString noPriority = QStringLiteral("none");

TextPair priorityTitle(NewReminderPriority priority) {
    switch (priority) {
    case NewReminderPriority::high:
        return text("High priority", "Priorité haute");
    case NewReminderPriority::normal:
        return text("Medium priority", "Priorité moyenne");
    case NewReminderPriority::low:
        return text("Low priority", "Priorité basse");
    }
    return {};
}

}  // namespace

QuickAddViewModel::QuickAddViewModel(ReminderStore& store, const Clock& clock,
                                     const CurrentCalendar& calendar, Localizer& localizer, QObject* parent)
    : QObject(parent)
    , store_(store)
    , clock_(clock)
    , calendar_(calendar)
    , localizer_(localizer)
    , alert_(localizer)
    , dueDay_(clock, calendar, localizer) {
    connect(&alert_, &AlertPicker::edited, this, &QuickAddViewModel::edited);
    connect(&dueDay_, &DayPicker::dayChanged, this, [this] {
        if (!dueDay_.day().isValid())
            timeText_.clear();
        edited();
    });
    connect(&store, &ReminderStore::listsChanged, this, [this] {
        Q_EMIT listsChanged();
        Q_EMIT changed();
    });
    connect(&store, &ReminderStore::presentChanged, this, [this] {
        dueDay_.refresh();
        Q_EMIT changed();
    });
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        Q_EMIT textsChanged();
        Q_EMIT changed();
    });
}

void QuickAddViewModel::begin() {
    if (title_.trimmed().isEmpty())
        return discard();
    // The days that words such as "tomorrow" stand for may be others by now.
    understand();
    Q_EMIT changed();
}

void QuickAddViewModel::discard() {
    if (isSaving_)
        return;
    error_.reset();
    title_.clear();
    line_ = {};
    refused_.clear();
    isFlagged_ = false;
    alert_.setSchedule(std::nullopt);
    repeat_ = ReminderRepeat::none;
    priority_.reset();
    listID_.reset();
    dueDay_.setDay({});
    dueDay_.showMonthOfDay();
    timeText_.clear();
    Q_EMIT changed();
}

void QuickAddViewModel::updateAlert() {
    alert_.setDue(!dueDay_.day().isValid() ? AlertPicker::Due::nothing
                  : hasTime()              ? AlertPicker::Due::time
                                           : AlertPicker::Due::day);
}

void QuickAddViewModel::edited() {
    error_.reset();
    updateAlert();
    Q_EMIT changed();
}

void QuickAddViewModel::submit() {
    if (isSaving_)
        return;
    const auto refuse = [this](const TextPair& reason) {
        error_ = reason;
        Q_EMIT changed();
    };
    NewReminder reminder{.title = line_.title, .priority = priority_, .isFlagged = isFlagged_};
    if (const ReminderList* chosen = list())
        reminder.listID = chosen->id;
    const auto time = hasTime() ? timeOfDay(timeText_) : std::optional(QTime(0, 0));
    if (!time)
        return refuse(unreadableTimeText());
    const ZoneCalendar calendar = calendar_.calendar();
    reminder.dueDateIncludesTime = hasTime();
    const auto alert = alert_.takeSchedule();
    if (!alert)
        return refuse(alert.error());
    reminder.dueAlertSchedule = *alert;
    reminder.repeat = repeat();
    if (const QDate day = dueDay_.day(); day.isValid())
        reminder.dueDate = hasTime() ? calendar.instantAt(day, *time) : calendar.startOfDay(day);

    isSaving_ = true;
    error_.reset();
    Q_EMIT changed();
    store_.create(reminder, [self = QPointer(this)](const tl::expected<QString, ReminderStoreError>& result) {
        if (!self)
            return;
        self->isSaving_ = false;
        if (result) {
            self->discard();
            Q_EMIT self->added();
        } else {
            self->error_ = result.error().message();
            Q_EMIT self->changed();
        }
    });
}

void QuickAddViewModel::setType(const QString& type) {
    if (type == type_)
        return;
    type_ = type;
    Q_EMIT changed();
}

void QuickAddViewModel::setTitle(const QString& title) {
    if (title == title_)
        return;
    title_ = title;
    understand();
    edited();
}

void QuickAddViewModel::understand() {
    std::vector<TextRange> refused;
    for (const QString& words : refused_)
        if (const qsizetype start = title_.indexOf(words); start >= 0)
            refused.push_back({start, words.size()});
    const QuickAddLine before = std::exchange(
        line_,
        parseQuickAdd(title_, {clock_.now(), calendar_.calendar(), localizer_.language(), store_.lists()},
                      refused));
    // A line that is nothing but a date is a title.
    if (line_.title.trimmed().isEmpty())
        line_ = QuickAddLine{.title = title_};
    if (line_.day != before.day)
        dueDay_.setDay(line_.day.value_or(QDate()));
    if (line_.time != before.time)
        timeText_ = line_.time ? clockText(*line_.time, localizer_.clockHours()) : QString();
    if (line_.priority != before.priority)
        priority_ = line_.priority;
    if (line_.listID != before.listID)
        listID_ = line_.listID;
}

void QuickAddViewModel::refuse(int piece) {
    if (piece < 0 || piece >= int(line_.pieces.size()))
        return;
    const TextRange range = line_.pieces[std::size_t(piece)].range;
    refused_.append(title_.mid(range.start, range.length));
    understand();
    edited();
}

QVariantList QuickAddViewModel::pieces() const {
    const auto name = [](QuickAddPiece::Kind kind) {
        switch (kind) {
        case QuickAddPiece::Kind::day:
            return QStringLiteral("day");
        case QuickAddPiece::Kind::time:
            return QStringLiteral("time");
        case QuickAddPiece::Kind::priority:
            return QStringLiteral("priority");
        case QuickAddPiece::Kind::list:
            return QStringLiteral("list");
        }
        return QString();
    };
    QVariantList result;
    for (const QuickAddPiece& piece : line_.pieces) {
        const QString words = title_.mid(piece.range.start, piece.range.length);
        const bool isMark = piece.kind == QuickAddPiece::Kind::priority && line_.priority;
        result.append(QVariantMap{
            {QStringLiteral("kind"), name(piece.kind)},
            {QStringLiteral("words"), words},
            {QStringLiteral("spoken"), isMark ? localizer_(priorityTitle(*line_.priority)) : words}});
    }
    return result;
}

void QuickAddViewModel::setFlagged(bool flagged) {
    if (flagged == isFlagged_)
        return;
    isFlagged_ = flagged;
    edited();
}

ReminderRepeat QuickAddViewModel::repeat() const {
    return dueDay_.day().isValid() ? repeat_ : ReminderRepeat::none;
}

void QuickAddViewModel::setRepeatId(const QString& id) {
    repeat_ = reminderRepeat(id).value_or(ReminderRepeat::none);
    edited();
}

QString QuickAddViewModel::repeatTitle() const {
    return kestrant::repeatTitle(recurrenceRules(repeat()), localizer_);
}

QVariantList QuickAddViewModel::repeats() const {
    return repeatChoices({}, localizer_);
}

QString QuickAddViewModel::priority() const {
    return priority_ ? rawValue(*priority_) : noPriority;
}

void QuickAddViewModel::setPriority(const QString& raw) {
    const auto priority = newReminderPriority(raw);
    if ((!priority && raw != noPriority) || priority == priority_)
        return;
    priority_ = priority;
    edited();
}

QVariantList QuickAddViewModel::priorities() const {
    const auto entry = [this](NewReminderPriority priority, const TextPair& title) {
        return QVariantMap{{QStringLiteral("rawValue"), rawValue(priority)},
                           {QStringLiteral("title"), localizer_(title)}};
    };
    return {QVariantMap{{QStringLiteral("rawValue"), noPriority},
                        {QStringLiteral("title"), localizer_(text("None", "Aucune"))}},
            entry(NewReminderPriority::low, text("Low", "Basse")),
            entry(NewReminderPriority::normal, text("Medium", "Moyenne")),
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
    return writableChoices(store_.lists());
}

void QuickAddViewModel::setTimeText(const QString& typed) {
    if (typed == timeText_)
        return;
    timeText_ = typed;
    edited();
}

QString QuickAddViewModel::dueText() const {
    const QDate day = dueDay_.day();
    if (!day.isValid())
        return {};
    const ZoneCalendar calendar = calendar_.calendar();
    const auto time = timeOfDay(timeText_);
    const Instant due = time ? calendar.instantAt(day, *time) : calendar.startOfDay(day);
    return reminderDueText(due, time.has_value(), clock_.now(), calendar, localizer_.language(),
                           localizer_.clockHours());
}

bool QuickAddViewModel::canSubmit() const {
    return !isSaving_ && !title_.trimmed().isEmpty();
}

QString QuickAddViewModel::errorText() const {
    return error_ ? localizer_(*error_) : QString();
}

}  // namespace kestrant
