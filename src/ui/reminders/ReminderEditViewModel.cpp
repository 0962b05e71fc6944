#include "ui/reminders/ReminderEditViewModel.h"

#include "reminders/store/ReminderStore.h"
#include "ui/calendar/ListColor.h"
#include "ui/calendar/TimeOfDay.h"
#include "ui/panel/Localizer.h"
#include "ui/reminders/RepeatChoices.h"
#include "ui/settings/Choices.h"

#include <QPointer>

#include <array>

namespace kestrant {
namespace {

struct PriorityChoice {
    QString rawValue;
    TextPair title;
    /// The rules that are written when this is chosen.
    int priority = 0;
};

/// In the order of the form.
std::array<PriorityChoice, 4> priorityChoices() {
    const auto choice = [](NewReminderPriority priority) {
        return PriorityChoice{rawValue(priority), title(priority), servicePriority(priority)};
    };
    return {PriorityChoice{QStringLiteral("none"), text("None", "Aucune"), 0},
            choice(NewReminderPriority::low), choice(NewReminderPriority::normal),
            choice(NewReminderPriority::high)};
}

/// Which of the choices a number from 0 to 9 reads as.
QString rawPriority(int priority) {
    if (priority <= 0 || priority > 9)
        return QStringLiteral("none");
    return rawValue(priority < 5    ? NewReminderPriority::high
                    : priority == 5 ? NewReminderPriority::normal
                                    : NewReminderPriority::low);
}

bool differsInDueDateAlone(const ReminderEditDetails& details, ReminderEditDetails before) {
    before.dueDate = details.dueDate;
    before.dueDateIncludesTime = details.dueDateIncludesTime;
    before.dueAlertSchedule = details.dueAlertSchedule;
    return details == before;
}

}  // namespace

ReminderEditViewModel::ReminderEditViewModel(ReminderStore& store, const Clock& clock,
                                             const CurrentTimeZone& currentZone, Localizer& localizer,
                                             QObject* parent)
    : FormViewModel(localizer, parent)
    , store_(store)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , zone_(currentZone.zone())
    , dueDay_(clock, currentZone, localizer)
    , alert_(localizer) {
    connect(&dueDay_, &DayPicker::dayChanged, this, [this] {
        if (!dueDay_.day().isValid())
            dueTime_.clear();
        edited();
    });
    connect(&alert_, &AlertPicker::edited, this, &ReminderEditViewModel::edited);
}

int ReminderEditViewModel::begin(const QString& reminderId) {
    beginForm();
    id_ = reminderId;
    zone_ = currentZone_.zone();
    loaded_ = store_.editDetails(id_);
    dueTimeIsWrong_ = false;
    const ReminderEditDetails details = loaded_.value_or(ReminderEditDetails{});
    title_ = details.title;
    notes_ = details.notes;
    priority_ = details.priority;
    alert_.setSchedule(details.dueAlertSchedule);
    rules_ = store_.recurrenceRules(id_);
    repeat_.reset();
    const ReminderList* list = find(store_.lists(), details.listID);
    list_ = list ? *list : ReminderList{.id = details.listID};
    dueDay_.setDay(details.dueDate ? zone_.dayOf(*details.dueDate) : QDate());
    dueTime_ = details.dueDateIncludesTime
                   ? clockText(zone_.timeOf(*details.dueDate), localizer_.clockHours())
                   : QString();
    updateAlert();
    begun_ = fields();
    isRestored_ = false;
    if (loaded_)
        Q_EMIT changed();
    else
        fail(ReminderStoreError{ReminderStoreError::Code::reminderNotFound, {}}.message());
    return form();
}

ReminderEditViewModel::Fields ReminderEditViewModel::fields() const {
    return {title_, dueDay_.day(), dueTime_, priority_, list_, notes_, alert_.value(), rules_, repeat_};
}

QString ReminderEditViewModel::lockReason() const {
    if (list_.allowsContentModifications)
        return {};
    return localizer_(list_.isAnswering ? text("This list is read-only.", "Cette liste est en lecture seule.")
                                        : text("This list does not answer at the moment.",
                                               "Cette liste ne répond pas pour le moment."));
}

void ReminderEditViewModel::restore() {
    const auto written = loaded_ ? draft_.writtenOver(id_, begun_) : std::nullopt;
    if (!written)
        return;
    title_ = written->title;
    dueDay_.setDay(written->dueDay);
    dueTime_ = written->dueTime;
    priority_ = written->priority;
    list_ = written->list;
    notes_ = written->notes;
    alert_.setValue(written->alert);
    updateAlert();
    repeat_ = written->repeat;
    isRestored_ = true;
    Q_EMIT changed();
}

void ReminderEditViewModel::keep(int form) {
    if (form == this->form() && loaded_ && list_.allowsContentModifications)
        draft_.keep(id_, begun_, fields());
}

void ReminderEditViewModel::discard() {
    if (loaded_)
        begin(id_);
    draft_.discard();
}

void ReminderEditViewModel::updateAlert() {
    alert_.setDue(!dueDay_.day().isValid() ? AlertPicker::Due::nothing
                  : hasTime()              ? AlertPicker::Due::time
                                           : AlertPicker::Due::day);
}

void ReminderEditViewModel::edited() {
    updateAlert();
    FormViewModel::edited();
}

void ReminderEditViewModel::setDueTime(const QString& typed) {
    dueTimeIsWrong_ = false;
    set(dueTime_, typed);
}

QString ReminderEditViewModel::priority() const {
    return rawPriority(priority_);
}

void ReminderEditViewModel::setPriority(const QString& raw) {
    for (const PriorityChoice& choice : priorityChoices()) {
        if (choice.rawValue == raw && raw != priority()) {
            priority_ = choice.priority;
            edited();
        }
    }
}

QVariantList ReminderEditViewModel::priorities() const {
    QVariantList result;
    for (const PriorityChoice& choice : priorityChoices())
        result.append(QVariantMap{{QStringLiteral("rawValue"), choice.rawValue},
                                  {QStringLiteral("title"), localizer_(choice.title)}});
    return result;
}

QVariantList ReminderEditViewModel::lists() const {
    return writableChoices(store_.lists());
}

void ReminderEditViewModel::setListId(const QString& id) {
    const ReminderList* list = find(store_.lists(), id);
    if (!list || id == list_.id)
        return;
    list_ = *list;
    edited();
}

QColor ReminderEditViewModel::listColor() const {
    return kestrant::listColor(&list_);
}

bool ReminderEditViewModel::takeDueDate(ReminderEditDetails& details) {
    const QDate day = dueDay_.day();
    const bool hasTime = !dueTime_.trimmed().isEmpty();
    const auto time = hasTime ? timeOfDay(dueTime_) : std::optional(QTime(0, 0));
    dueTimeIsWrong_ = !time;
    if (!time)
        return false;
    // A due date that still reads as it did stays to the second.
    const bool isUnchanged =
        details.dueDate.has_value() == day.isValid() && details.dueDateIncludesTime == hasTime &&
        (!details.dueDate || (zone_.dayOf(*details.dueDate) == day &&
                              (!hasTime || isSameMinute(zone_.timeOf(*details.dueDate), *time))));
    if (isUnchanged)
        return true;
    details.dueDateIncludesTime = hasTime;
    details.dueDate.reset();
    if (day.isValid())
        details.dueDate = hasTime ? zone_.instantAt(day, *time) : zone_.startOfDay(day);
    return true;
}

void ReminderEditViewModel::save() {
    if (!canSave())
        return;
    ReminderEditDetails details = *loaded_;
    details.title = title_;
    details.notes = notes_;
    details.priority = priority_;
    details.listID = list_.id;
    if (!takeDueDate(details))
        return fail(unreadableTimeText());
    const auto alert = alert_.takeSchedule();
    if (!alert)
        return fail(alert.error());
    details.dueAlertSchedule = *alert;
    // Without a due date there is none.
    const auto repeat = details.dueDate ? repeat_ : std::nullopt;
    if (details == *loaded_ && !repeat) {
        discard();
        Q_EMIT saved();
        return;
    }
    startSaving();
    const auto finish = [self = QPointer(this),
                         form = form()](const tl::expected<void, ReminderStoreError>& result) {
        if (self)
            self->finishSaving(form, result);
    };
    if (repeat || !differsInDueDateAlone(details, *loaded_))
        store_.edit(id_, details, repeat, finish);
    else if (details.dueDate)
        store_.reschedule(id_, *details.dueDate, details.dueDateIncludesTime, details.dueAlertSchedule,
                          finish);
    else
        store_.clearDueDate(id_, finish);
}

void ReminderEditViewModel::finishSaving(int form, const tl::expected<void, ReminderStoreError>& result) {
    if (!FormViewModel::finishSaving(form, result))
        return;
    draft_.discard();
    begun_ = fields();
    Q_EMIT changed();
    Q_EMIT saved();
}

std::vector<EKRecurrenceRule> ReminderEditViewModel::shownRules() const {
    return repeat_ ? recurrenceRules(*repeat_) : rules_;
}

QString ReminderEditViewModel::repeatId() const {
    const auto repeat = reminderRepeat(shownRules());
    return repeat ? rawValue(*repeat) : QString();
}

void ReminderEditViewModel::setRepeatId(const QString& id) {
    if (id == repeatId())
        return;
    const auto repeat = fromRawValue<ReminderRepeat>(id);
    // Unchanged rules are kept to the letter.
    repeat_ = repeat == reminderRepeat(rules_) ? std::nullopt : repeat;
    edited();
}

QString ReminderEditViewModel::repeatTitle() const {
    return kestrant::repeatTitle(shownRules(), localizer_);
}

QVariantList ReminderEditViewModel::repeats() const {
    return repeatChoices(rules_, localizer_);
}

}  // namespace kestrant
