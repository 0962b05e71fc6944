#include "eventkit/model/EKReminder.h"

#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/ReminderChanges.h"

#include <algorithm>
#include <utility>

namespace kestrant {

EKReminder::EKReminder(EKEventStore& store) : store_(store) {}

EKReminder::EKReminder(EKEventStore& store, std::shared_ptr<const EKReminderData> stored)
    : data(*stored)
    , store_(store)
    , stored_(std::move(stored)) {}

void EKReminder::addAlarm(const EKAlarm& alarm) {
    data.alarms.push_back(alarm);
}

void EKReminder::removeAlarm(const EKAlarm& alarm) {
    const auto found = std::find(data.alarms.begin(), data.alarms.end(), alarm);
    if (found != data.alarms.end())
        data.alarms.erase(found);
}

bool EKReminder::refresh() {
    if (!stored_)
        return false;
    auto present = store_.storedReminder(stored_->calendarItemIdentifier);
    if (!present)
        return false;
    data = mergeEdits(*stored_, data, *present).merged;
    stored_ = std::move(present);
    return true;
}

void EKReminder::reset() {
    data = stored_ ? *stored_ : EKReminderData{};
}

void EKReminder::setStored(std::shared_ptr<const EKReminderData> stored) {
    stored_ = std::move(stored);
    data = *stored_;
}

}  // namespace kestrant
