#pragma once

#include "eventkit/evolution/EvolutionEventStore.h"
#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/items/ItemDatabase.h"
#include "foundation/Text.h"
#include "support/AwaitState.h"
#include "support/EvolutionService.h"
#include "support/ManualScheduler.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace kestrant {

/// The desktop's calendar service. Others are a second client of it; their changes are told by the service.
struct EvolutionHouse {
    explicit EvolutionHouse(std::chrono::milliseconds longestCall = EvolutionEventStore::longestCall)
        : store(scheduler, scheduler, currentZone, longestCall) {}

    ManualScheduler scheduler{at("Europe/Paris", {2026, 3, 27}, {8, 0})};
    MovableTimeZone currentZone;
    EvolutionService& service = EvolutionService::emptied();
    EvolutionEventStore store;
    /// The one that the tests use.
    EKEventStore* used = &store;

    template <typename Change>
    void changeElsewhere(const QString& identifier, Change change) {
        Other other(currentZone.zone());
        const auto base = other.database.snapshot()->reminders.value(identifier).data;
        ASSERT_TRUE(base);
        EKReminderData edited = *base;
        change(edited);
        ASSERT_TRUE(other.database.save(base, edited, scheduler.now(), currentZone.zone()).has_value());
        awaitThat([&] { return showsChange(*used, identifier, change); });
    }
    void removeElsewhere(const QString& identifier) {
        Other other(currentZone.zone());
        ASSERT_TRUE(other.database.remove(identifier, currentZone.zone()).has_value());
        awaitThat([&] { return used->calendarItem(identifier) == nullptr; });
    }
    void makeReadOnly(const QString& list) {
        service.makeReadOnly(list);
        awaitThat([&] { return !used->calendarWithIdentifier(list)->allowsContentModifications; });
    }
    void awaitThat(const std::function<bool()>& holds) {
        kestrant::awaitThat(scheduler, holds);
        if (!::testing::Test::HasFatalFailure())
            return;
        for (const TextPair& problem : used->problems())
            ADD_FAILURE() << "the database says: " << problem.english.toStdString();
    }

    /// Another program that uses the service.
    struct Other {
        explicit Other(const TimeZone& local) { EXPECT_FALSE(database.open(local)); }
        evolution::EvolutionStorage storage{{}, EvolutionEventStore::longestCall};
        items::ItemDatabase database{storage};
    };
};

}  // namespace kestrant
