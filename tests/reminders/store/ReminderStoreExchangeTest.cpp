#include "ReminderStoreFixture.h"
#include "eventkit/model/EventStoreSwitch.h"

#include <memory>

namespace kestrant {
namespace {

/// The store over a database that is exchanged for another one while it runs.
class ReminderStoreExchangeTest : public ReminderStoreTest {
  protected:
    std::unique_ptr<InMemoryEventStore> databaseWith(const char* id) {
        auto made = std::make_unique<InMemoryEventStore>(scheduler, scheduler, currentZone);
        made->putCalendar({.calendarIdentifier = QStringLiteral("list"), .title = QString::fromUtf8(id)});
        made->putReminder(aReminder(id));
        scheduler.advance(1s);
        return made;
    }
    /// Gives a database that is there already.
    static EventStoreSwitch::Make giving(std::unique_ptr<InMemoryEventStore> other) {
        return [given = std::make_shared<std::unique_ptr<EKEventStore>>(std::move(other))] {
            return std::move(*given);
        };
    }
    void exchange(EventStoreSwitch& eventStore, std::unique_ptr<InMemoryEventStore> other) {
        eventStore.switchTo(QString::number(++exchanges), giving(std::move(other)));
        store->databaseWasExchanged();
    }

    int exchanges = 0;
};

TEST_F(ReminderStoreExchangeTest, ShowsTheOtherDatabaseAndForgetsWhatCouldBeUndone) {
    EventStoreSwitch eventStore(QStringLiteral("first"), giving(databaseWith("first")));
    makeStoreOn(eventStore).requestAccess();
    scheduler.advance(1s);
    store->remove(QStringLiteral("first"), [](const auto&) {});
    scheduler.advance(1s);
    ASSERT_EQ(recorded().size(), 1u);

    exchange(eventStore, databaseWith("second"));
    EXPECT_EQ(visibleIDs(), std::vector<std::string>{});
    scheduler.advance(1s);
    EXPECT_EQ(visibleIDs(), std::vector<std::string>{"second"});
    EXPECT_EQ(store->lists().front().title, QStringLiteral("second"));
    EXPECT_FALSE(history.canUndo());
}

TEST_F(ReminderStoreExchangeTest, LateAnswersOfTheFormerDatabaseAreDropped) {
    auto first = databaseWith("first");
    first->setAuthorizationStatus(EKAuthorizationStatus::denied);
    EventStoreSwitch eventStore(QStringLiteral("first"), giving(std::move(first)));
    makeStoreOn(eventStore).requestAccess();
    // The database is exchanged before its refusal has arrived.
    exchange(eventStore, databaseWith("second"));
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, ReminderAccessState::Kind::authorized);
    EXPECT_EQ(visibleIDs(), std::vector<std::string>{"second"});

    store->reloadTasks();
    exchange(eventStore, databaseWith("third"));
    scheduler.advance(1s);
    EXPECT_EQ(visibleIDs(), std::vector<std::string>{"third"});
    EXPECT_FALSE(store->isLoading());
}

TEST_F(ReminderStoreExchangeTest, BeforeAccessWasRequestedNothingIsAskedOfTheOther) {
    EventStoreSwitch eventStore(QStringLiteral("first"), giving(databaseWith("first")));
    makeStoreOn(eventStore);
    exchange(eventStore, databaseWith("second"));
    scheduler.advance(1s);
    EXPECT_EQ(store->accessState().kind, ReminderAccessState::Kind::notDetermined);
}

}  // namespace
}  // namespace kestrant
