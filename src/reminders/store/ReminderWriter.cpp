#include "reminders/store/ReminderWriter.h"

#include "eventkit/model/EKEventStore.h"
#include "foundation/DateComponents.h"
#include "foundation/Scheduler.h"
#include "foundation/TimeZone.h"
#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/model/ReminderConversion.h"
#include "reminders/store/CompletionReconciler.h"
#include "reminders/store/ReminderLoader.h"
#include "reminders/store/ReminderOutcomes.h"
#include "reminders/store/ReminderWork.h"

#include <QPointer>

#include <utility>

namespace kestrant {
namespace {

using Code = ReminderStoreError::Code;

constexpr Color initialListColor{0x0a, 0x84, 0xff};

tl::unexpected<ReminderStoreError> failure(Code code) {
    return tl::unexpected(ReminderStoreError{code, {}});
}

tl::expected<void, ReminderStoreError> outcome(const tl::expected<EKSaveResult, EKError>& result) {
    if (!result)
        return tl::unexpected(ReminderStoreError::from(result.error()));
    return {};
}

void tell(const ReminderWriter::CreationCompletion& completion,
          const tl::expected<EKSaveResult, EKError>& result) {
    if (completion && result)
        completion(result->calendarItemIdentifier);
    else if (completion)
        completion(tl::unexpected(ReminderStoreError::from(result.error())));
}

/// The title that an edit writes: trimmed, unless it is unchanged.
tl::expected<QString, ReminderStoreError> titleToWrite(const QString& wanted, const QString& present) {
    if (wanted.trimmed().isEmpty())
        return failure(Code::emptyTitle);
    return wanted == present ? wanted : wanted.trimmed();
}

bool asksForMissingDueDate(const std::optional<Instant>& dueDate, bool includesTime,
                           const std::optional<ReminderAlertSchedule>& schedule) {
    return !dueDate && (includesTime || schedule);
}

TextPair editOutcome(const EKReminderData& edited) {
    return outcomeText(text("“%1” changed", "« %1 » modifié"), edited.title);
}

}  // namespace

ReminderWriter::ReminderWriter(const ReminderStoreServices& services, ReminderLoader& loader,
                               RecordedChanges& recorder, CompletionReconciler& reconciler,
                               ReminderWork& work)
    : services_(services)
    , loader_(loader)
    , recorder_(recorder)
    , reconciler_(reconciler)
    , work_(work) {}

void ReminderWriter::create(const NewReminder& reminder, CreationCompletion completion,
                            CreationCompletion known) {
    const auto refuse = [&](Code code) {
        services_.scheduler.post([self = QPointer(this), completion = std::move(completion), code] {
            if (self && completion)
                completion(failure(code));
        });
    };
    NewReminder wanted = reminder;
    wanted.title = wanted.title.trimmed();
    if (wanted.title.isEmpty())
        return refuse(Code::emptyTitle);
    if (asksForMissingDueDate(wanted.dueDate, wanted.dueDateIncludesTime, wanted.dueAlertSchedule))
        return refuse(Code::dueDateRequired);
    if (!wanted.dueDate && (wanted.rule || wanted.repeat != ReminderRepeat::none))
        return refuse(Code::repeatRequiresDueDate);
    if (!wanted.newListTitle.isEmpty())
        return makeNamedList(wanted, {std::move(completion), std::move(known)});
    const auto& selected = loader_.selectedListID();
    const bool selectedExists = selected && services_.eventStore.calendarWithIdentifier(*selected);
    const auto preferred =
        selectedExists ? selected : services_.defaults.string(preferenceKeys::defaultReminderListID);
    const auto list =
        listForNewReminder(wanted.listID, preferred, services_.eventStore.defaultCalendarForNewReminders(),
                           services_.eventStore.calendars(EKEntityType::reminder));
    if (list)
        saveNew(wanted, *list, {std::move(completion), std::move(known)});
    else
        makeInitialList(wanted, {std::move(completion), std::move(known)});
}

void ReminderWriter::makeNamedList(const NewReminder& reminder, CreationEnd end) {
    EKCalendar list;
    list.title = reminder.newListTitle;
    list.color = initialListColor;
    work_.begin();
    services_.eventStore.saveCalendar(list, [self = QPointer(this), reminder, end = std::move(end)](
                                                const tl::expected<EKCalendar, EKError>& made) {
        if (!self)
            return;
        if (made)
            self->saveNew(reminder, *made, end);
        else if (end.completion)
            end.completion(
                tl::unexpected(ReminderStoreError{Code::unableToCreateInitialList, made.error().message}));
        if (self)
            self->work_.end();
    });
}

void ReminderWriter::makeInitialList(const NewReminder& reminder, CreationEnd end) {
    waitingForInitialList_.push_back([this, reminder,
                                      end = std::move(end)](const tl::expected<EKCalendar, EKError>& list) {
        if (list)
            saveNew(reminder, *list, end);
        else if (end.completion)
            end.completion(
                tl::unexpected(ReminderStoreError{Code::unableToCreateInitialList, list.error().message}));
    });
    if (waitingForInitialList_.size() > 1)
        return;
    EKCalendar list;
    list.title = text("Reminders", "Rappels").in(services_.localization.language());
    list.color = initialListColor;
    work_.begin();
    services_.eventStore.saveCalendar(
        list, [self = QPointer(this)](const tl::expected<EKCalendar, EKError>& made) {
            if (!self)
                return;
            for (const auto& creation : std::exchange(self->waitingForInitialList_, {})) {
                creation(made);
                if (!self)
                    return;
            }
            self->work_.end();
        });
}

void ReminderWriter::saveNew(const NewReminder& wanted, const EKCalendar& list, CreationEnd end) {
    const auto reminder = std::make_shared<EKReminder>(services_.eventStore);
    const TimeZone zone = services_.currentZone.zone();
    reminder->data.title = wanted.title;
    reminder->data.priority = wanted.priority ? servicePriority(*wanted.priority) : 0;
    reminder->data.calendarIdentifier = list.calendarIdentifier;
    if (wanted.dueDate)
        applyDueDate(reminder->data,
                     dueComponents(*wanted.dueDate, wanted.dueDateIncludesTime, zone, std::nullopt),
                     wanted.dueAlertSchedule, zone);
    applyRules(reminder->data,
               wanted.rule ? std::vector{*wanted.rule} : kestrant::recurrenceRules(wanted.repeat));
    if (!wanted.url.isEmpty())
        reminder->data.url = wanted.url;
    if (!wanted.notes.isEmpty())
        reminder->data.notes = wanted.notes;
    const RecordedChangeRef recorded =
        recorder_.begin(RecordedChange::Kind::creation, text("Create reminder", "Créer le rappel"),
                        outcomeText(text("“%1” added", "« %1 » ajouté"), wanted.title), QString());
    work_.begin();
    services_.eventStore.save(reminder, [self = QPointer(this), recorded, isFlagged = wanted.isFlagged,
                                         end = std::move(end)](
                                            const tl::expected<EKSaveResult, EKError>& result) {
        if (!self)
            return;
        const bool isUnknown = !result && result.error().code == EKError::Code::outcomeUnknown;
        if (isUnknown)
            tell(end.completion, result);
        self->recorder_.whenKnown(result, [self, recorded, isFlagged,
                                           told = isUnknown ? end.known : end.completion](const auto& known) {
            self->recorder_.end(recorded, known);
            if (known)
                Q_EMIT self->created(known->calendarItemIdentifier, isFlagged);
            self->loader_.reload();
            tell(told, known);
        });
        if (self)
            self->work_.end();
    });
}

std::optional<ReminderEditDetails> ReminderWriter::editDetails(const QString& id) const {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder)
        return std::nullopt;
    return reminderEditDetails(reminder->data, services_.currentZone.zone());
}

std::vector<EKRecurrenceRule> ReminderWriter::recurrenceRules(const QString& id) const {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    return reminder ? reminder->data.recurrenceRules : std::vector<EKRecurrenceRule>();
}

void ReminderWriter::change(const TextPair& title, const QString& id, const Edit& edit,
                            const Describe& describe, Completion completion) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder)
        return work_.answer(completion, failure(Code::reminderNotFound));
    if (auto edited = edit(reminder->data); !edited)
        return work_.answer(completion, std::move(edited));
    const RecordedChangeRef recorded =
        recorder_.begin(RecordedChange::Kind::edit, title, describe(reminder->data), id);
    work_.begin();
    services_.eventStore.save(reminder, endOf(recorded, id, std::move(completion)));
}

EKEventStore::SaveCompletion ReminderWriter::endOf(const RecordedChangeRef& recorded, const QString& id,
                                                   Completion completion) {
    return [self = QPointer(this), recorded, id,
            completion = std::move(completion)](const tl::expected<EKSaveResult, EKError>& result) {
        if (!self)
            return;
        self->recorder_.whenKnown(result, [self, recorded, id](const auto& known) {
            self->recorder_.end(recorded, known);
            if (known && recorded->kind == RecordedChange::Kind::removal)
                self->reconciler_.note(id, ReminderCompletionState::deleted());
        });
        self->loader_.reload();
        if (completion)
            completion(outcome(result));
        if (self)
            self->work_.end();
    };
}

void ReminderWriter::edit(const QString& id, const ReminderEditDetails& details,
                          std::optional<ReminderRepeat> repeat, Completion completion) {
    change(
        text("Edit reminder", "Modifier le rappel"), id,
        [this, &details, repeat](EKReminderData& reminder) -> tl::expected<void, ReminderStoreError> {
            const auto title = titleToWrite(details.title, reminder.title);
            if (!title)
                return tl::unexpected(title.error());
            if (asksForMissingDueDate(details.dueDate, details.dueDateIncludesTime, details.dueAlertSchedule))
                return failure(Code::dueDateRequired);
            if (!details.dueDate && repeat.value_or(ReminderRepeat::none) != ReminderRepeat::none)
                return failure(Code::repeatRequiresDueDate);
            if (details.listID != reminder.calendarIdentifier &&
                !services_.eventStore.calendarWithIdentifier(details.listID))
                return failure(Code::listUnavailable);
            const TimeZone zone = services_.currentZone.zone();
            reminder.title = *title;
            reminder.priority = details.priority;
            reminder.calendarIdentifier = details.listID;
            if (details.notes != reminder.notes.value_or(QString()))
                reminder.notes = details.notes.isEmpty() ? std::nullopt : std::optional(details.notes);
            std::optional<DateComponents> due;
            if (details.dueDate)
                due = dueComponents(*details.dueDate, details.dueDateIncludesTime, zone,
                                    reminder.dueDateComponents);
            applyDueDate(reminder, due, details.dueAlertSchedule, zone);
            if (repeat && repeat != reminderRepeat(reminder.recurrenceRules))
                applyRules(reminder, kestrant::recurrenceRules(*repeat));
            return {};
        },
        editOutcome, std::move(completion));
}

void ReminderWriter::rename(const QString& id, const QString& title, Completion completion) {
    change(
        text("Edit reminder", "Modifier le rappel"), id,
        [&title](EKReminderData& reminder) -> tl::expected<void, ReminderStoreError> {
            auto toWrite = titleToWrite(title, reminder.title);
            if (!toWrite)
                return tl::unexpected(toWrite.error());
            reminder.title = *std::move(toWrite);
            return {};
        },
        editOutcome, std::move(completion));
}

void ReminderWriter::reschedule(const QString& id, Instant dueDate, bool includesTime,
                                const std::optional<ReminderAlertSchedule>& alert, Completion completion) {
    change(
        text("Reschedule reminder", "Reporter le rappel"), id,
        [this, dueDate, includesTime,
         &alert](EKReminderData& reminder) -> tl::expected<void, ReminderStoreError> {
            const TimeZone zone = services_.currentZone.zone();
            applyDueDate(reminder, dueComponents(dueDate, includesTime, zone, reminder.dueDateComponents),
                         alert, zone);
            return {};
        },
        [this](const EKReminderData& edited) {
            return reschedulingOutcome(edited.title,
                                       dueInWords(edited, services_.clock.now(), services_.currentZone.zone(),
                                                  services_.localization.clockHours()));
        },
        std::move(completion));
}

void ReminderWriter::clearDueDate(const QString& id, Completion completion) {
    change(
        text("Reschedule reminder", "Reporter le rappel"), id, withoutDueDate(),
        [](const EKReminderData& edited) { return reschedulingOutcome(edited.title, std::nullopt); },
        std::move(completion));
}

void ReminderWriter::removeFromCalendar(const QString& id, Completion completion) {
    change(
        text("Remove from calendar", "Retirer du calendrier"), id, withoutDueDate(),
        [](const EKReminderData& edited) {
            return outcomeText(text("“%1” removed from the calendar", "« %1 » retiré du calendrier"),
                               edited.title);
        },
        std::move(completion));
}

ReminderWriter::Edit ReminderWriter::withoutDueDate() const {
    return [this](EKReminderData& reminder) -> tl::expected<void, ReminderStoreError> {
        applyDueDate(reminder, std::nullopt, std::nullopt, services_.currentZone.zone());
        return {};
    };
}

void ReminderWriter::move(const QString& id, const QString& listID, Completion completion) {
    change(
        text("Change list", "Changer de liste"), id,
        [this, &listID](EKReminderData& reminder) -> tl::expected<void, ReminderStoreError> {
            if (!services_.eventStore.calendarWithIdentifier(listID))
                return failure(Code::listUnavailable);
            reminder.calendarIdentifier = listID;
            return {};
        },
        [this](const EKReminderData& edited) {
            const auto target = services_.eventStore.calendarWithIdentifier(edited.calendarIdentifier);
            const QString list = target ? target->title : QString();
            return outcomeText(text("“%1” moved to %2", "« %1 » déplacé vers « %2 »"), edited.title,
                               {list, list});
        },
        std::move(completion));
}

void ReminderWriter::remove(const QString& id, Completion completion) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder)
        return work_.answer(completion, failure(Code::reminderNotFound));
    const RecordedChangeRef recorded =
        recorder_.begin(RecordedChange::Kind::removal, text("Delete reminder", "Supprimer le rappel"),
                        outcomeText(text("“%1” deleted", "« %1 » supprimé"), reminder->data.title), id);
    work_.begin();
    services_.eventStore.remove(reminder, endOf(recorded, id, std::move(completion)));
}

}  // namespace kestrant
