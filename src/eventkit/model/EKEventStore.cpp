#include "eventkit/model/EKEventStore.h"

#include <utility>

namespace kestrant {

EKPredicate EKEventStore::predicateForIncompleteReminders(std::optional<Instant> dueDateStarting,
                                                          std::optional<Instant> ending,
                                                          std::optional<std::vector<QString>> calendars) {
    return {EKPredicate::Kind::incompleteReminders, dueDateStarting, ending, std::move(calendars)};
}

EKPredicate EKEventStore::predicateForCompletedReminders(std::optional<Instant> completionDateStarting,
                                                         std::optional<Instant> ending,
                                                         std::optional<std::vector<QString>> calendars) {
    return {EKPredicate::Kind::completedReminders, completionDateStarting, ending, std::move(calendars)};
}

EKEventPredicate EKEventStore::predicateForEvents(Instant start, Instant end,
                                                  std::optional<std::vector<QString>> calendars) {
    return {start, end, std::move(calendars)};
}

}  // namespace kestrant
