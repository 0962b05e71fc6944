#include "eventkit/model/EventStoreSwitch.h"

#include "eventkit/memory/InMemoryEventStore.h"
#include "support/EventStoreDriver.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

class EventStoreSwitchTest : public testing::Test {
  protected:
    std::unique_ptr<InMemoryEventStore> database(const QString& title) {
        auto store = std::make_unique<InMemoryEventStore>(scheduler, scheduler, currentZone);
        store->putCalendar({.calendarIdentifier = QStringLiteral("list"), .title = title});
        store->putReminder(aReminder("shared id").titled(title));
        scheduler.advance(seconds(1));
        return store;
    }
    /// Gives a database that is there already.
    static EventStoreSwitch::Make giving(std::unique_ptr<InMemoryEventStore> store) {
        return [given = std::make_shared<std::unique_ptr<EKEventStore>>(std::move(store))] {
            return std::move(*given);
        };
    }
    [[nodiscard]] static EKPredicate all() {
        return EKEventStore::predicateForIncompleteReminders({}, {}, {});
    }

    ManualScheduler scheduler{Instant{}};
    MovableTimeZone currentZone;
};

TEST_F(EventStoreSwitchTest, ShowsTheOtherDatabaseAndSaysThatEverythingChanged) {
    EventStoreSwitch store(QStringLiteral("first"), giving(database(QStringLiteral("first"))));
    EventStoreDriver driver(store, scheduler);
    int changes = 0;
    const Subscription subscription = store.observeChanges([&changes] { ++changes; });
    auto second = database(QStringLiteral("second"));
    InMemoryEventStore& inUse = *second;

    store.switchTo(QStringLiteral("second"), giving(std::move(second)));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(driver.titles(all()), std::vector{QStringLiteral("second")});
    EXPECT_EQ(store.calendarWithIdentifier(QStringLiteral("list"))->title, QStringLiteral("second"));

    inUse.putReminder(aReminder("another"));
    scheduler.advance(seconds(1));
    EXPECT_EQ(changes, 2);

    store.switchTo(QStringLiteral("first"), [] { return std::unique_ptr<EKEventStore>(); });
    EXPECT_EQ(driver.titles(all()), std::vector{QStringLiteral("first")}) << "the one that was in use before";
}

TEST_F(EventStoreSwitchTest, TheFormerDatabaseAnswersWhatItWasAskedAndIsNotHeardAnyMore) {
    auto first = database(QStringLiteral("first"));
    InMemoryEventStore& former = *first;
    EventStoreSwitch store(QStringLiteral("first"), giving(std::move(first)));
    EventStoreDriver driver(store, scheduler);
    const EKReminderRef inHand = store.calendarItem(QStringLiteral("shared id"));
    std::optional<bool> saved;
    inHand->data.title = QStringLiteral("edited");
    store.save(inHand, [&saved](const auto& result) { saved = result.has_value(); });
    int changes = 0;

    store.switchTo(QStringLiteral("second"), giving(database(QStringLiteral("second"))));
    const Subscription subscription = store.observeChanges([&changes] { ++changes; });
    scheduler.advance(seconds(1));
    EXPECT_EQ(saved, true);
    EXPECT_EQ(former.calendarItem(QStringLiteral("shared id"))->data.title, QStringLiteral("edited"));
    former.putReminder(aReminder("late"));
    scheduler.advance(seconds(1));
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(inHand->refresh()) << "what is in hand still belongs to the database it came from";
    EXPECT_EQ(driver.titles(all()), std::vector{QStringLiteral("second")});
}

TEST_F(EventStoreSwitchTest, ANewReminderRefreshesFromTheDatabaseInUse) {
    EventStoreSwitch store(QStringLiteral("first"), giving(database(QStringLiteral("first"))));
    EventStoreDriver driver(store, scheduler);
    const auto reminder = std::make_shared<EKReminder>(store);
    reminder->data.title = QStringLiteral("new");
    reminder->data.calendarIdentifier = QStringLiteral("list");
    ASSERT_TRUE(driver.save(reminder));
    EXPECT_TRUE(reminder->refresh());
    store.switchTo(QStringLiteral("second"), giving(database(QStringLiteral("second"))));
    EXPECT_FALSE(reminder->refresh());
}

}  // namespace
}  // namespace kestrant
