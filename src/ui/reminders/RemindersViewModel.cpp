#include "ui/reminders/RemindersViewModel.h"

#include "reminders/model/ReminderAlerts.h"
#include "reminders/model/ReminderDueText.h"
#include "reminders/store/ReminderStore.h"
#include "ui/calendar/ListColor.h"
#include "ui/panel/Localizer.h"
#include "ui/settings/Choices.h"

#include <QPointer>

namespace kestrant {
namespace {

QString marksOf(int priority) {
    if (priority <= 0 || priority > 9)
        return {};
    return priority < 5 ? QStringLiteral("!!!") : priority == 5 ? QStringLiteral("!!") : QStringLiteral("!");
}

TextPair priorityInWords(const QString& marks) {
    return marks.size() == 3   ? text("high priority", "priorité haute")
           : marks.size() == 2 ? text("medium priority", "priorité moyenne")
                               : text("low priority", "priorité basse");
}

QString alertText(const ReminderTask& task, Language language, ClockHours hours) {
    if (!task.dueAlertSchedule || task.dueAlertSchedule == ReminderAlertSchedule(RelativeToDueTime{0}))
        return {};
    const auto* day = std::get_if<DayRelativeToDueDate>(&*task.dueAlertSchedule);
    if (!day || !fromRawValue<ReminderDateOnlyAlertDay>(day->dayOffset))
        return label(*task.dueAlertSchedule, hours).in(language);
    const QString time = clockText(QTime(day->hour, day->minute), hours);
    return day->dayOffset == 0 ? time : text("day before %1", "veille %1").in(language).arg(time);
}

/// The alert's words without what the bell beside them says already.
QString besideBell(const QString& alert, Language language) {
    const QString before = text(" before", " avant").in(language);
    return alert.endsWith(before) ? alert.chopped(before.size()) : alert;
}

}  // namespace

RemindersViewModel::RemindersViewModel(ReminderStore& store, const Clock& clock,
                                       const CurrentTimeZone& currentZone, Localizer& localizer,
                                       QObject* parent)
    : QObject(parent)
    , store_(store)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , cards_([this](const ReminderTask& task, bool isPending) { return card(task, isPending); }) {
    const auto updateCards = [this] {
        cards_.setTasks(store_.visibleTasks());
        updateContent();
    };
    connect(&store, &ReminderStore::tasksChanged, this, updateCards);
    connect(&store, &ReminderStore::pendingCompletionIDsChanged, this,
            [this] { cards_.setPendingIDs(store_.pendingCompletionIDs()); });
    connect(&store, &ReminderStore::pendingCompletionIDsChanged, this,
            &RemindersViewModel::completingIdsChanged);
    connect(&store, &ReminderStore::presentChanged, &cards_, &ReminderCardModel::refreshTexts);
    connect(&store, &ReminderStore::accessStateChanged, this, [this] {
        updateContent();
        if (store_.accessState().kind == ReminderAccessState::Kind::failed && store_.hasLoaded())
            Q_EMIT changeFailed(failureText());
    });
    connect(&store, &ReminderStore::isLoadingChanged, this, &RemindersViewModel::updateContent);
    connect(&store, &ReminderStore::filtersChanged, this, [this] {
        Q_EMIT filtersChanged();
        updateContent();
    });
    connect(&store, &ReminderStore::filterCountsChanged, this, &RemindersViewModel::countsChanged);
    connect(&store, &ReminderStore::completionRecordsChanged, this, &RemindersViewModel::hasCompletedChanged);
    connect(&store, &ReminderStore::isFlagLoadingChanged, this, &RemindersViewModel::flagSyncChanged);
    connect(&store, &ReminderStore::flagFilterErrorChanged, this, &RemindersViewModel::flagSyncChanged);
    connect(&store, &ReminderStore::sortModeChanged, this, &RemindersViewModel::sortModeChanged);
    connect(&store, &ReminderStore::searchQueryChanged, this, [this] {
        Q_EMIT searchQueryChanged();
        updateContent();
    });
    connect(&store, &ReminderStore::listsChanged, this, [this] {
        Q_EMIT listsChanged();
        cards_.refreshTexts();
    });
    connect(&store, &ReminderStore::selectedListIDChanged, this, &RemindersViewModel::listsChanged);
    connect(&store, &ReminderStore::revealRequested, this,
            [this](const ReminderRevealRequest& request) { Q_EMIT revealRequested(request.reminderID); });
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        Q_EMIT flagSyncChanged();
        cards_.refreshTexts();
        Q_EMIT contentChanged();
        Q_EMIT listsChanged();
        Q_EMIT sortModesChanged();
    });
    updateCards();
}

ReminderCard RemindersViewModel::card(const ReminderTask& task, bool isPending) const {
    const Language language = localizer_.language();
    const Instant now = clock_.now();
    const TimeZone zone = currentZone_.zone();
    const ReminderList* list = find(store_.lists(), task.listID);
    ReminderCard card;
    card.id = task.id;
    card.title = task.title;
    if (task.dueDate)
        card.dueText = reminderDueText(*task.dueDate, task.dueDateIncludesTime, now, zone, language,
                                       localizer_.clockHours());
    if (task.dueDate && task.dueDateIncludesTime)
        card.timeText = clockText(zone.timeOf(*task.dueDate), localizer_.clockHours());
    card.isOverdue = isOverdue(task, ReminderTimeContext::at(now, zone));
    card.priorityMarks = marksOf(task.priority);
    card.isFlagged = task.isFlagged;
    card.isRecurring = task.isRecurring();
    card.repeatText = shortRepeatText(task.recurrenceRules, language);
    card.alertText = alertText(task, language, localizer_.clockHours());
    card.alertBrief = besideBell(card.alertText, language);
    card.listColor = listColor(list);
    card.isPending = isPending;
    card.isWritable = !list || list->allowsContentModifications;

    QStringList words{card.title};
    const auto say = [&](bool holds, const QString& what) {
        if (holds && !what.isEmpty())
            words.append(what);
    };
    say(card.isPending, text("completed", "terminé").in(language));
    say(true, card.dueText);
    say(card.isOverdue, text("overdue", "en retard").in(language));
    say(!card.priorityMarks.isEmpty(), priorityInWords(card.priorityMarks).in(language));
    say(card.isFlagged, text("flagged", "marqué").in(language));
    say(card.isRecurring,
        text("repeats %1", "se répète, %1").in(language).arg(repeatInWords(task.recurrenceRules, language)));
    say(true, card.alertText);
    say(list != nullptr, list ? list->title : QString());
    card.spokenText = words.join(QStringLiteral(", "));
    return card;
}

QString RemindersViewModel::computedContent() const {
    switch (store_.accessState().kind) {
    case ReminderAccessState::Kind::denied:
        return QStringLiteral("denied");
    case ReminderAccessState::Kind::restricted:
        return QStringLiteral("restricted");
    case ReminderAccessState::Kind::failed:
        // Loaded cards stay visible under the message.
        if (store_.hasLoaded())
            break;
        return QStringLiteral("failed");
    case ReminderAccessState::Kind::notDetermined:
    case ReminderAccessState::Kind::requesting:
        return QStringLiteral("loading");
    case ReminderAccessState::Kind::authorized:
        break;
    }
    if (!store_.visibleTasks().empty())
        return QStringLiteral("cards");
    if (!store_.hasLoaded())
        return QStringLiteral("loading");
    if (!store_.searchQuery().trimmed().isEmpty())
        return QStringLiteral("nothingFound");
    return store_.filters() == ReminderFilters{} ? QStringLiteral("empty") : QStringLiteral("allDone");
}

void RemindersViewModel::updateContent() {
    const QString content = computedContent();
    if (content == content_ && content != QLatin1String("failed"))
        return;
    content_ = content;
    Q_EMIT contentChanged();
}

bool RemindersViewModel::hasCompleted() const {
    return !store_.completionRecords().empty();
}

QString RemindersViewModel::failureText() const {
    return localizer_(store_.accessState().message);
}

QVariantList RemindersViewModel::lists() const {
    QVariantList lists;
    for (const ReminderList& list : store_.lists())
        lists.append(QVariantMap{{QStringLiteral("id"), list.id},
                                 {QStringLiteral("title"), list.title},
                                 {QStringLiteral("color"), listColor(&list)},
                                 {QStringLiteral("isWritable"), list.allowsContentModifications}});
    return lists;
}

QString RemindersViewModel::selectedListId() const {
    const QString id = store_.selectedListID().value_or(QString());
    return find(store_.lists(), id) ? id : QString();
}

void RemindersViewModel::setSelectedListId(const QString& id) {
    store_.setSelectedListID(id.isEmpty() ? std::nullopt : std::optional(id));
}

QString RemindersViewModel::selectedListTitle() const {
    const ReminderList* list = find(store_.lists(), selectedListId());
    return list ? list->title : localizer_(text("All lists", "Toutes les listes"));
}

QColor RemindersViewModel::selectedListColor() const {
    const ReminderList* list = find(store_.lists(), selectedListId());
    return list ? listColor(list) : allListsColor();
}

QColor RemindersViewModel::allListsColor() const {
    return kestrant::allListsColor();
}

bool RemindersViewModel::showsTodayOnly() const {
    return store_.filters().todayOnly;
}

void RemindersViewModel::setShowsTodayOnly(bool on) {
    store_.setShowsTodayOnly(on);
}

bool RemindersViewModel::showsOverdueOnly() const {
    return store_.filters().overdueOnly;
}

void RemindersViewModel::setShowsOverdueOnly(bool on) {
    store_.setShowsOverdueOnly(on);
}

bool RemindersViewModel::showsFlaggedOnly() const {
    return store_.filters().flaggedOnly;
}

void RemindersViewModel::setShowsFlaggedOnly(bool on) {
    store_.setShowsFlaggedOnly(on);
}

int RemindersViewModel::todayCount() const {
    return store_.filterCounts().today;
}

int RemindersViewModel::overdueCount() const {
    return store_.filterCounts().overdue;
}

int RemindersViewModel::flaggedCount() const {
    return store_.filterCounts().flagged;
}

bool RemindersViewModel::isFlagLoading() const {
    return store_.isFlagLoading();
}

QString RemindersViewModel::flagFilterError() const {
    return store_.flagFilterError() ? localizer_(*store_.flagFilterError()) : QString();
}

QVariantList RemindersViewModel::sortModes() const {
    QVariantList modes;
    for (const auto& [mode, raw, english, french] : choicesOf<ReminderSortMode>)
        modes.append(QVariantMap{{QStringLiteral("rawValue"), rawValue(mode)},
                                 {QStringLiteral("title"), localizer_(title(mode))}});
    return modes;
}

QString RemindersViewModel::sortMode() const {
    return rawValue(store_.sortMode());
}

void RemindersViewModel::setSortMode(const QString& raw) {
    if (const auto mode = fromRawValue<ReminderSortMode>(raw))
        store_.setSortMode(*mode);
}

QString RemindersViewModel::searchQuery() const {
    return store_.searchQuery();
}

void RemindersViewModel::setSearchQuery(const QString& query) {
    store_.setSearchQuery(query);
}

QStringList RemindersViewModel::completingIds() const {
    return store_.pendingCompletionIDs().values();
}

void RemindersViewModel::toggleCompletion(const QString& taskId) {
    store_.toggleCompletion(taskId);
}

void RemindersViewModel::remove(const QString& taskId) {
    store_.remove(taskId, reportFailure());
}

void RemindersViewModel::toggleFlag(const QString& taskId) {
    store_.toggleFlag(taskId, reportFailure());
}

void RemindersViewModel::moveToList(const QString& taskId, const QString& listId) {
    store_.move(taskId, listId, reportFailure());
}

void RemindersViewModel::clearDueDate(const QString& taskId) {
    store_.clearDueDate(taskId, reportFailure());
}

void RemindersViewModel::placeAt(const QString& taskId, int row) {
    QStringList ids;
    for (const ReminderTask& task : cards_.tasks())
        ids.append(task.id);
    const qsizetype from = ids.indexOf(taskId);
    if (from < 0 || row < 0 || row >= ids.size() || from == row)
        return;
    ids.move(from, row);
    store_.commitManualOrder(ids, taskId);
}

std::function<void(const tl::expected<void, ReminderStoreError>&)> RemindersViewModel::reportFailure() {
    return [self = QPointer(this)](const tl::expected<void, ReminderStoreError>& result) {
        if (self && !result)
            Q_EMIT self->changeFailed(self->localizer_(result.error().message()));
    };
}

bool RemindersViewModel::moveToDay(const QString& taskId, const QString& day) {
    const ReminderTask* task = store_.task(taskId);
    const QDate date = QDate::fromString(day, Qt::ISODate);
    if (!task || !date.isValid())
        return false;
    const Instant dueDate = dueDateOn(*task, date);
    if (task->dueDate == dueDate)
        return false;
    store_.reschedule(taskId, dueDate, task->dueDate && task->dueDateIncludesTime, reportFailure());
    return true;
}

Instant RemindersViewModel::dueDateOn(const ReminderTask& task, QDate day) const {
    const TimeZone zone = currentZone_.zone();
    return task.dueDate && task.dueDateIncludesTime ? zone.instantAt(day, zone.timeOf(*task.dueDate))
                                                    : zone.startOfDay(day);
}

QString RemindersViewModel::dueTextOn(const QString& taskId, const QString& day) const {
    const ReminderTask* task = store_.task(taskId);
    const QDate date = QDate::fromString(day, Qt::ISODate);
    if (!task || !date.isValid())
        return {};
    return reminderDueText(dueDateOn(*task, date), task->dueDate && task->dueDateIncludesTime, clock_.now(),
                           currentZone_.zone(), localizer_.language(), localizer_.clockHours());
}

QString RemindersViewModel::dayNamed(const QString& name) const {
    QDate day = currentZone_.zone().dayOf(clock_.now());
    if (name == QLatin1String("tomorrow"))
        day = day.addDays(1);
    else if (name == QLatin1String("nextWeek"))
        day = day.addDays(8 - day.dayOfWeek());
    return day.toString(Qt::ISODate);
}

void RemindersViewModel::retry() {
    store_.refreshAccessState();
    if (store_.accessState().kind != ReminderAccessState::Kind::authorized)
        store_.requestAccess();
}

void RemindersViewModel::openPrivacyPage() {
    Q_EMIT privacyPageRequested();
}

}  // namespace kestrant
