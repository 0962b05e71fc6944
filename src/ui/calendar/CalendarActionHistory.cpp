#include "ui/calendar/CalendarActionHistory.h"

#include "reminders/store/ReminderActionHistory.h"

#include <utility>

namespace kestrant {
namespace {

ReminderActionHistory::Operation operation(CalendarAction::Operation work) {
    return [work = std::move(work)](const ReminderActionHistory::Done& done) {
        work([done](const tl::expected<void, EKError>& result) {
            done(result.map_error([](const EKError& error) { return ReminderStoreError::from(error); }));
        });
    };
}

}  // namespace

int CalendarActionHistory::begin() {
    return history_.beginAction();
}

void CalendarActionHistory::record(CalendarAction action) {
    history_.record(action.title, operation(std::move(action.undo)), operation(std::move(action.redo)),
                    {.done = action.outcome});
}

void CalendarActionHistory::end(int action, bool succeeded) {
    using End = ReminderActionHistory::ActionEnd;
    history_.endAction(action, succeeded ? End::succeeded : End::failed);
}

}  // namespace kestrant
