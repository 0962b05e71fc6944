#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <functional>

namespace kestrant {

/// Fills a database with lists, reminders and events to show the program with, around the given present.
/// `done` is called once, when everything is saved or with the first failure. The database must outlive that.
/// Thread: main.
void addDemoData(EKEventStore& store, Instant now, const TimeZone& zone, Language language,
                 std::function<void(std::optional<EKError> error)> done);

}  // namespace kestrant
