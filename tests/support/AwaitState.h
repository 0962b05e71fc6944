#pragma once

#include "eventkit/model/EKEventStore.h"
#include "support/ManualScheduler.h"

#include <QString>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace kestrant {

/// Lets time go on, as long as something waits for it, until this holds.
inline void awaitThat(ManualScheduler& scheduler, const std::function<bool()>& holds) {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::minutes(2);
    while (!holds()) {
        ASSERT_LT(steady_clock::now(), end) << "what was waited for did not come";
        ASSERT_TRUE(scheduler.runUntil([&] { return holds() || scheduler.pendingCount() > 0; }));
        scheduler.advance(std::chrono::seconds(1));
    }
}

/// Whether a store shows a reminder as this change leaves it; the change is one that may be made twice.
template <typename Change>
bool showsChange(EKEventStore& store, const QString& identifier, const Change& change) {
    const EKReminderRef shown = store.calendarItem(identifier);
    if (!shown)
        return false;
    EKReminderData changed = shown->data;
    change(changed);
    return changed == shown->data;
}

}  // namespace kestrant
