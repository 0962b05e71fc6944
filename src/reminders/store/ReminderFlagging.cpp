#include "reminders/store/ReminderFlagging.h"

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/HistoryReferences.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "reminders/store/ReminderActionHistory.h"
#include "reminders/store/ReminderOutcomes.h"
#include "reminders/store/ReminderWork.h"

#include <QPointer>

#include <chrono>
#include <optional>
#include <utility>

namespace kestrant {
namespace {

using Code = ReminderStoreError::Code;
using Done = ReminderActionHistory::Done;

/// Time for a new reminder to become known to other programs.
constexpr Duration newReminderDelay = std::chrono::milliseconds(200);

}  // namespace

ReminderFlagging::ReminderFlagging(const ReminderStoreServices& services, ReminderFlagSync& flags,
                                   HistoryReferences& references, ReminderWork& work)
    : services_(services)
    , flags_(flags)
    , references_(references)
    , work_(work) {}

void ReminderFlagging::toggle(const QString& id, ReminderCompletion completion) {
    setFlagged(id, !flags_.index().isFlagged(id), std::move(completion));
}

void ReminderFlagging::setFlagged(const QString& id, bool flag, ReminderCompletion completion) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (services_.history && reminder && flags_.index().isFlagged(id) != flag) {
        const auto operation = [self = QPointer(this), reference = references_.to(id)](bool wanted) {
            return [self, reference, wanted](const Done& done) {
                if (self)
                    self->apply(reference->identifier, wanted, done);
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
    apply(id, flag, std::move(completion));
}

void ReminderFlagging::apply(const QString& id, bool flag, ReminderCompletion completion) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder)
        return work_.answer(completion, tl::unexpected(ReminderStoreError{Code::reminderNotFound, {}}));
    flags_.setLocally(id, flag);
    flags_.write(id, listTitle(reminder->data.calendarIdentifier),
                 [completion = std::move(completion)](const std::optional<TextPair>& failure) {
                     if (!completion)
                         return;
                     if (failure)
                         completion(tl::unexpected(ReminderStoreError{Code::flagNotUpdated, {}}));
                     else
                         completion({});
                 });
}

void ReminderFlagging::flagNew(const QString& id) {
    flags_.setLocally(id, true);
    work_.begin();
    newFlags_[id] = services_.scheduler.after(newReminderDelay, [this, id] {
        const auto task = newFlags_.extract(id);
        if (const EKReminderRef reminder = services_.eventStore.calendarItem(id))
            flags_.write(id, listTitle(reminder->data.calendarIdentifier), {});
        work_.end();
    });
}

std::optional<QString> ReminderFlagging::listTitle(const QString& listID) const {
    const auto list = services_.eventStore.calendarWithIdentifier(listID);
    return list ? std::optional(list->title) : std::nullopt;
}

}  // namespace kestrant
