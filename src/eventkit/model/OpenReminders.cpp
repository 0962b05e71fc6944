#include "eventkit/model/OpenReminders.h"

#include <utility>

namespace kestrant {

OpenReminders::OpenReminders(EKEventStore& eventStore, Scheduler& scheduler)
    : eventStore_(eventStore)
    , scheduler_(scheduler)
    , changes_(eventStore.observeChanges([this] { latest_.reset(); })) {}

OpenReminders::~OpenReminders() = default;

void OpenReminders::fetch(Completion completion) {
    if (latest_ && latest_->found) {
        scheduler_.post([this, weak = std::weak_ptr(isAlive_), completion = std::move(completion)]() mutable {
            if (weak.expired())
                return;
            if (latest_ && latest_->found)
                completion(Reminders(latest_->found));
            else
                fetch(std::move(completion));
        });
        return;
    }
    if (latest_) {
        latest_->waiting.push_back(std::move(completion));
        return;
    }
    latest_ = std::make_shared<Fetch>();
    latest_->waiting.push_back(std::move(completion));
    eventStore_.fetchReminders(
        EKEventStore::predicateForIncompleteReminders(std::nullopt, std::nullopt, std::nullopt),
        [this, weak = std::weak_ptr(isAlive_), fetch = latest_](EKReminders reminders) {
            if (weak.expired())
                return;
            fetch->found = std::make_shared<const EKReminders>(std::move(reminders));
            // A fetch without access does not show the database's content.
            if (latest_ == fetch &&
                eventStore_.authorizationStatus(EKEntityType::reminder) != EKAuthorizationStatus::fullAccess)
                latest_.reset();
            for (const Completion& waiting : std::exchange(fetch->waiting, {})) {
                if (weak.expired())
                    return;
                waiting(fetch->found);
            }
        });
}

}  // namespace kestrant
