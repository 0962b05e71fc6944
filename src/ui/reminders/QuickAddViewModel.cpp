#include "ui/reminders/QuickAddViewModel.h"

#include "foundation/ControlCharacters.h"
#include "reminders/model/ReminderDueText.h"
#include "reminders/store/ReminderStore.h"
#include "ui/calendar/ListColor.h"
#include "ui/calendar/TimeOfDay.h"
#include "ui/panel/Localizer.h"
#include "ui/reminders/RepeatChoices.h"
#include "ui/reminders/SpokenWords.h"
#include "ui/settings/Choices.h"

#include <QPointer>

#include <algorithm>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

const QString noPriority = QStringLiteral("none");

namespace fact {
const QString list = QStringLiteral("list");
const QString due = QStringLiteral("due");
const QString priority = QStringLiteral("priority");
const QString flag = QStringLiteral("flag");
const QString alert = QStringLiteral("alert");
const QString repeat = QStringLiteral("repeat");
const QString link = QStringLiteral("link");
const QString notes = QStringLiteral("notes");
const QString zone = QStringLiteral("zone");
const QStringList all{list, due, zone, priority, flag, alert, repeat, link, notes};
}  // namespace fact

}  // namespace

QuickAddViewModel::QuickAddViewModel(ReminderStore& store, const Clock& clock,
                                     const CurrentTimeZone& currentZone, Localizer& localizer,
                                     std::function<QLocale()> locale, QObject* parent)
    : FormViewModel(localizer, parent)
    , store_(store)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , locale_(std::move(locale))
    , alert_(localizer)
    , dueDay_(clock, currentZone, localizer) {
    connect(this, &QuickAddViewModel::changed, this, &QuickAddViewModel::updateFacts);
    updateFacts();
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
    connect(&localizer, &Localizer::languageChanged, this, &QuickAddViewModel::textsChanged);
}

void QuickAddViewModel::begin() {
    if (title_.trimmed().isEmpty())
        return discard();
    // The days that words such as "tomorrow" stand for may be others by now.
    understand();
    Q_EMIT changed();
}

void QuickAddViewModel::append(const QString& text) {
    begin();
    setTitle(QString(title_ + QLatin1Char(' ') + onOneLine(text)).trimmed());
}

void QuickAddViewModel::discard() {
    if (!leaveForm())
        return;
    clearError();
    title_.clear();
    line_ = {};
    refused_.clear();
    accepted_.clear();
    isFlagged_ = false;
    alert_.setSchedule(std::nullopt);
    rules_.clear();
    priority_.reset();
    listID_.reset();
    newListTitle_.clear();
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
    updateAlert();
    FormViewModel::edited();
}

void QuickAddViewModel::submit() {
    if (isSaving())
        return;
    NewReminder reminder{.title = line_.title, .priority = priority_, .isFlagged = isFlagged_};
    if (!newListTitle_.isEmpty())
        reminder.newListTitle = newListTitle_;
    else if (const ReminderList* chosen = list())
        reminder.listID = chosen->id;
    const auto time = hasTime() ? timeOfDay(timeText_) : std::optional(QTime(0, 0));
    if (!time)
        return fail(unreadableTimeText());
    const TimeZone zone = currentZone_.zone();
    reminder.dueDateIncludesTime = hasTime();
    const auto alert = alert_.takeSchedule();
    if (!alert)
        return fail(alert.error());
    reminder.dueAlertSchedule = *alert;
    if (const auto repeating = rules(); !repeating.empty())
        reminder.rule = repeating.front();
    reminder.url = line_.url;
    reminder.notes = line_.notes;
    if (const QDate day = dueDay_.day(); day.isValid())
        reminder.dueDate = hasTime() ? zone.instantAt(day, *time) : zone.startOfDay(day);

    startSaving();
    const auto end = [self = QPointer(this), form = form(),
                      line = title_](const tl::expected<QString, ReminderStoreError>& result) {
        if (!self)
            return;
        if (self->finishCreation(form, result)) {
            self->discard();
            Q_EMIT self->added();
        } else if (!result && !isUnknown(result) && self->title_.isEmpty()) {
            // The form was given up before this was known.
            self->setTitle(line);
            self->fail(result.error().message());
        }
    };
    store_.create(reminder, end, end);
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
    // Words typed anew may be meant otherwise.
    for (QStringList* words : {&refused_, &accepted_})
        words->removeIf([this](const QString& each) { return !title_.contains(each); });
    understand();
    edited();
}

void QuickAddViewModel::understand() {
    const QuickAddContext context{.now = clock_.now(),
                                  .zone = currentZone_.zone(),
                                  .language = localizer_.language(),
                                  .lists = store_.lists(),
                                  .locale = locale_()};
    const QuickAddLine before = std::exchange(
        line_, parseQuickAdd(title_, context, rangesOf(refused_, title_), rangesOf(accepted_, title_)));
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
    if (line_.newListTitle != before.newListTitle)
        newListTitle_ = line_.newListTitle;
    if (line_.isFlagged != before.isFlagged)
        isFlagged_ = line_.isFlagged;
    if (line_.rule != before.rule)
        rules_ = line_.rule ? std::vector{*line_.rule} : std::vector<EKRecurrenceRule>();
    if (line_.alert != before.alert) {
        updateAlert();
        alert_.setSchedule(line_.alert);
    }
}

void QuickAddViewModel::takeBack(const QString& fact) {
    // Without a due date there is no repetition either.
    const bool takesRule = fact == fact::due && line_.rule;
    for (const QuickAddPiece& piece : line_.pieces)
        if (kindOf(piece.kind) == fact || (takesRule && piece.kind == QuickAddPiece::Kind::repeat))
            refused_.append(title_.mid(piece.range.start, piece.range.length));
    understand();
    if (fact == fact::list) {
        listID_.reset();
        newListTitle_.clear();
    }
    if (fact == fact::due)
        dueDay_.setDay({});
    else if (fact == fact::priority)
        priority_.reset();
    else if (fact == fact::flag)
        isFlagged_ = false;
    else if (fact == fact::alert)
        alert_.setId({});
    else if (fact == fact::repeat)
        rules_.clear();
    edited();
}

bool QuickAddViewModel::canTakeBack(const QString& fact) const {
    return fact == fact::list ? listID_.has_value() || !newListTitle_.isEmpty() : holds(fact);
}

bool QuickAddViewModel::holds(const QString& fact) const {
    return fact == fact::list       ? true
           : fact == fact::due      ? dueDay_.day().isValid()
           : fact == fact::zone     ? line_.timeInZone.has_value()
           : fact == fact::priority ? priority_.has_value()
           : fact == fact::flag     ? isFlagged_
           : fact == fact::alert    ? !alert_.id().isEmpty()
           : fact == fact::link     ? !line_.url.isEmpty()
           : fact == fact::notes    ? !line_.notes.isEmpty()
                                    : !rules().empty();
}

void QuickAddViewModel::updateFacts() {
    const QStringList byWords = understood();
    QStringList order = byWords.contains(fact::list) ? byWords : QStringList{fact::list} + byWords;
    for (const QString& fact : fact::all)
        if (!order.contains(fact))
            order.append(fact);
    QStringList said;
    QStringList addable;
    for (const QString& fact : std::as_const(order)) {
        if (holds(fact))
            said.append(fact);
        else if (fact != fact::link && fact != fact::notes && fact != fact::zone &&
                 (dueDay_.day().isValid() || (fact != fact::alert && fact != fact::repeat)))
            addable.append(fact);
    }
    if (said == said_ && addable == addable_)
        return;
    said_ = said;
    addable_ = addable;
    Q_EMIT factsChanged();
}

QVariantList QuickAddViewModel::pieces() const {
    return coloredWords(title_, line_.pieces);
}

QString QuickAddViewModel::zoneText() const {
    return kestrant::zoneText(line_.timeInZone, line_.zone, localizer_);
}

QStringList QuickAddViewModel::understood() const {
    QStringList facts;
    for (const QuickAddPiece& piece : line_.pieces)
        if (const QString fact = kindOf(piece.kind); !facts.contains(fact))
            facts.append(fact);
    return facts;
}

void QuickAddViewModel::setFlagged(bool flagged) {
    if (flagged == isFlagged_)
        return;
    isFlagged_ = flagged;
    edited();
}

std::vector<EKRecurrenceRule> QuickAddViewModel::rules() const {
    return dueDay_.day().isValid() ? rules_ : std::vector<EKRecurrenceRule>();
}

void QuickAddViewModel::setRepeatId(const QString& id) {
    if (const auto chosen = fromRawValue<ReminderRepeat>(id))
        rules_ = recurrenceRules(*chosen);
    edited();
}

QString QuickAddViewModel::repeatTitle() const {
    return kestrant::repeatTitle(rules(), localizer_);
}

QVariantList QuickAddViewModel::repeats() const {
    return repeatChoices(rules(), localizer_);
}

QString QuickAddViewModel::repeatId() const {
    const auto choice = reminderRepeat(rules());
    return choice ? rawValue(*choice) : QString();
}

QVariantList QuickAddViewModel::offers() const {
    QVariantList result;
    for (const auto& offer : line_.offers) {
        const TimeZone zone = currentZone_.zone();
        const Instant due = offer.time ? zone.instantAt(offer.day, *offer.time) : zone.startOfDay(offer.day);
        const bool repeats = !offer.rule.isEmpty();
        result.append(
            QVariantMap{{QStringLiteral("kind"), repeats ? fact::repeat : fact::due},
                        {QStringLiteral("words"), title_.mid(offer.range.start, offer.range.length)},
                        {QStringLiteral("title"),
                         repeats ? kestrant::repeatTitle({EKRecurrenceRule::parse(offer.rule)}, localizer_)
                                 : reminderDueText(due, offer.time.has_value(), clock_.now(), zone,
                                                   localizer_.language(), localizer_.clockHours())}});
    }
    return result;
}

void QuickAddViewModel::accept(const QString& words) {
    accepted_.append(words);
    understand();
    edited();
}

QString QuickAddViewModel::completion() const {
    if (const QString begun = begunTitle(title_, line_.pieces); !begun.isEmpty()) {
        for (const ReminderTask& task : store_.tasks())
            if (QString rest = restOf(task.title, begun); !rest.isEmpty())
                return rest;
    }
    const QString begun = begunList(title_);
    for (const ReminderList& list : store_.lists())
        if (QString rest = restOf(list.title, begun); list.allowsContentModifications && !rest.isEmpty())
            return rest;
    return {};
}

QString QuickAddViewModel::priority() const {
    return priority_ ? rawValue(*priority_) : noPriority;
}

void QuickAddViewModel::setPriority(const QString& raw) {
    const auto priority = fromRawValue<NewReminderPriority>(raw);
    if ((!priority && raw != noPriority) || priority == priority_)
        return;
    priority_ = priority;
    edited();
}

QString QuickAddViewModel::priorityTitle() const {
    const QVariantList known = priorities();
    const auto shown = std::find_if(known.begin(), known.end(), [this](const QVariant& entry) {
        return entry.toMap()[QStringLiteral("id")] == priority();
    });
    return shown->toMap()[QStringLiteral("title")].toString();
}

QVariantList QuickAddViewModel::priorities() const {
    const auto entry = [this](NewReminderPriority priority) {
        return QVariantMap{{QStringLiteral("id"), rawValue(priority)},
                           {QStringLiteral("title"), localizer_(kestrant::title(priority))}};
    };
    return {QVariantMap{{QStringLiteral("id"), noPriority},
                        {QStringLiteral("title"), localizer_(text("None", "Aucune"))}},
            entry(NewReminderPriority::low), entry(NewReminderPriority::normal),
            entry(NewReminderPriority::high)};
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
    newListTitle_.clear();
    edited();
}

QString QuickAddViewModel::listTitle() const {
    if (!newListTitle_.isEmpty()) {
        const QString words = localizer_(text("New list “%1”", "Nouvelle liste « %1 »"));
        return words.arg(newListTitle_);
    }
    return list() ? list()->title : localizer_(text("New list", "Nouvelle liste"));
}

QColor QuickAddViewModel::listColor() const {
    return kestrant::listColor(list());
}

QString QuickAddViewModel::listReason() const {
    const ReminderList* shown = list();
    if (!shown || listID_ || !newListTitle_.isEmpty())
        return {};
    return localizer_(
        store_.selectedListID() == shown->id  ? text("the list you are looking at", "la liste affichée")
        : store_.defaultListID() == shown->id ? text("your usual list", "votre liste habituelle")
                                              : text("your first list", "votre première liste"));
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
    const TimeZone zone = currentZone_.zone();
    const auto time = timeOfDay(timeText_);
    const Instant due = time ? zone.instantAt(day, *time) : zone.startOfDay(day);
    return reminderDueText(due, time.has_value(), clock_.now(), zone, localizer_.language(),
                           localizer_.clockHours());
}

bool QuickAddViewModel::canSubmit() const {
    return !isSaving() && !title_.trimmed().isEmpty();
}

}  // namespace kestrant
