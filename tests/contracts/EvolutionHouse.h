#pragma once

#include "eventkit/evolution/EvolutionEventStore.h"
#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/items/ItemDatabase.h"
#include "support/EvolutionService.h"
#include "support/FixedCalendar.h"
#include "support/ManualScheduler.h"
#include "support/ReminderBuilders.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace kestrant {

/// The desktop's calendar service. Others are a second client of it; their changes are told by the service.
struct EvolutionHouse {
    explicit EvolutionHouse(std::chrono::milliseconds longestCall = EvolutionEventStore::longestCall)
        : store(scheduler, scheduler, calendar, longestCall) {}

    ManualScheduler scheduler{at("Europe/Paris", {2026, 3, 27}, {8, 0})};
    FixedCalendar calendar{"Europe/Paris"};
    EvolutionService& service = EvolutionService::emptied();
    EvolutionEventStore store;
    /// The one that the tests use.
    EKEventStore* used = &store;

    template <typename Change>
    void changeElsewhere(const QString& identifier, Change change) {
        Other other(calendar.calendar());
        const auto base = other.database.snapshot()->reminders.value(identifier).data;
        ASSERT_TRUE(base);
        EKReminderData edited = *base;
        change(edited);
        ASSERT_TRUE(other.database.save(base, edited, scheduler.now(), calendar.calendar()).has_value());
        awaitNotice();
    }
    void removeElsewhere(const QString& identifier) {
        Other other(calendar.calendar());
        ASSERT_TRUE(other.database.remove(identifier, calendar.calendar()).has_value());
        awaitNotice();
    }
    void makeReadOnly(const QString& list) {
        service.makeReadOnly(list);
        awaitNotice();
    }
    /// Lets time go on until the store has told of a change.
    void awaitNotice() {
        bool told = false;
        const Subscription subscription = used->observeChanges([&] { told = true; });
        while (!told) {
            ASSERT_TRUE(scheduler.runUntil([&] { return told || scheduler.pendingCount() > 0; }));
            scheduler.advance(std::chrono::seconds(1));
        }
    }

    /// Lets time go on until this holds.
    void awaitThat(const std::function<bool()>& holds) {
        while (!holds()) {
            ASSERT_TRUE(scheduler.runUntil([&] { return holds() || scheduler.pendingCount() > 0; }));
            scheduler.advance(std::chrono::seconds(1));
        }
    }

    /// Another program that uses the service.
    struct Other {
        explicit Other(const ZoneCalendar& local) { EXPECT_FALSE(database.open(local)); }
        evolution::EvolutionStorage storage{{}, EvolutionEventStore::longestCall};
        items::ItemDatabase database{storage};
    };
};

}  // namespace kestrant
