#include "reminders/store/RecordedChange.h"
#include "reminders/store/ReminderOutcomes.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using Code = ReminderStoreError::Code;
using Done = ReminderActionHistory::Done;

/// What a new reminder is given to become known to other programs.
constexpr Duration newReminderDelay = 200ms;

}  // namespace

void ReminderStore::reloadFlags() {
    if (accessState_.kind == ReminderAccessState::Kind::authorized)
        flags_.load();
}

void ReminderStore::refreshFlags() {
    std::vector<ReminderTask> tasks = *fetchedTasks_;
    for (ReminderTask& task : tasks)
        task.isFlagged = flags_.index().isFlagged(task.id);
    setFetchedTasks(std::move(tasks));
}

std::optional<QString> ReminderStore::listTitleOf(const EKReminderData& reminder) const {
    const auto list = services_.eventStore.calendarWithIdentifier(reminder.calendarIdentifier);
    return list ? std::optional(list->title) : std::nullopt;
}

void ReminderStore::toggleFlag(const QString& id, Completion completion) {
    setFlagged(id, !flags_.index().isFlagged(id), std::move(completion));
}

void ReminderStore::setFlagged(const QString& id, bool flag, Completion completion) {
    const bool isNews = flags_.index().isFlagged(id) != flag;
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (isNews && services_.history && reminder) {
        const auto operation = [self = QPointer(this), reference = referenceTo(id)](bool wanted) {
            return [self, reference, wanted](const Done& done) {
                if (self)
                    self->applyFlag(reference->identifier, wanted, done);
                else
                    done({});
            };
        };
        services_.history->record(
            flag ? text("Flag reminder", "Ajouter un drapeau") : text("Remove flag", "Retirer le drapeau"),
            operation(!flag), operation(flag),
            {.done = outcomeText(flag ? text("“%1” flagged", "« %1 » marqué")
                                      : text("“%1” no longer flagged", "« %1 » n’est plus marqué"),
                                 reminder->data.title)});
    }
    applyFlag(id, flag, std::move(completion));
}

void ReminderStore::applyFlag(const QString& id, bool flag, Completion completion) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder)
        return answer(completion, tl::unexpected(ReminderStoreError{Code::reminderNotFound, {}}));
    flags_.setLocally(id, flag);
    flags_.write(id, listTitleOf(reminder->data),
                 [completion = std::move(completion)](const std::optional<TextPair>& failure) {
                     if (!completion)
                         return;
                     if (failure)
                         completion(tl::unexpected(ReminderStoreError{Code::flagNotUpdated, {}}));
                     else
                         completion({});
                 });
}

void ReminderStore::writeFlagOfNew(const QString& id) {
    flags_.setLocally(id, true);
    beginActivity();
    flagWriteTasks_[id] = services_.scheduler.after(newReminderDelay, [this, id] {
        const auto task = flagWriteTasks_.extract(id);
        if (const EKReminderRef reminder = services_.eventStore.calendarItem(id))
            flags_.write(id, listTitleOf(reminder->data), {});
        endActivity();
    });
}

}  // namespace kestrant
