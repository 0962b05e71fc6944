#include "ReminderStoreFixture.h"

namespace kestrant {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReminderStoreOrder : public ReminderStoreTest {
  protected:
    ReminderStoreOrder() {
        for (const char* id : {"a", "b", "c"})
            put(aReminder(id));
        put(aReminder("o").in(QStringLiteral("other")));
    }
    [[nodiscard]] std::optional<QStringList> storedOrder() const {
        return defaults.stringList(QStringLiteral("reminderManualOrder"));
    }
};

TEST_F(ReminderStoreOrder, EveryFetchPlacesWhatIsNewAndForgetsWhatIsGone) {
    loadedStore().setSortMode(ReminderSortMode::manual);
    store->commitManualOrder(
        {QStringLiteral("o"), QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a")});
    EXPECT_THAT(visibleIDs(), ElementsAre("o", "c", "b", "a"));
    database.dropReminder(QStringLiteral("b"));
    put(aReminder("new"));
    scheduler.advance(1s);
    EXPECT_EQ(store->manualOrderIDs().join(u' '), QStringLiteral("o c a new"));
    EXPECT_EQ(storedOrder()->join(u' '), QStringLiteral("o c b a")) << "written by a drag only";
}

TEST_F(ReminderStoreOrder, WhatAListOrAFilterHidesKeepsItsPlace) {
    loadedStore();
    store->commitManualOrder(
        {QStringLiteral("a"), QStringLiteral("o"), QStringLiteral("b"), QStringLiteral("c")});
    store->setSelectedListID(QStringLiteral("list"));
    scheduler.advance(1s);
    store->commitManualOrder({QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a")});
    EXPECT_THAT(visibleIDs(), ElementsAre("c", "b", "a"));
    EXPECT_EQ(storedOrder()->join(u' '), QStringLiteral("c o b a"));
    store->setShowsTodayOnly(true);
    store->setSelectedListID(std::nullopt);
    scheduler.advance(1s);
    EXPECT_THAT(visibleIDs(), IsEmpty());
    store->setShowsTodayOnly(false);
    EXPECT_THAT(visibleIDs(), ElementsAre("c", "o", "b", "a"));
}

TEST_F(ReminderStoreOrder, ADragIsOneActionThatCanBeTakenBackTogetherWithItsSortMode) {
    loadedStore();
    const auto before = visibleIDs();
    const QStringList reversed{QStringLiteral("o"), QStringLiteral("c"), QStringLiteral("b"),
                               QStringLiteral("a")};
    store->commitManualOrder(reversed);
    store->commitManualOrder(reversed);
    EXPECT_THAT(recorded(), ElementsAre("Move reminder"));
    history.undo();
    EXPECT_EQ(store->sortMode(), ReminderSortMode::dueDate);
    EXPECT_EQ(visibleIDs(), before);
    history.redo();
    EXPECT_THAT(visibleIDs(), ElementsAre("o", "c", "b", "a"));
    EXPECT_EQ(*storedOrder(), reversed);
}

TEST_F(ReminderStoreOrder, AnotherSortModeIsAnActionAndRestoringOneIsNot) {
    defaults.set(QStringLiteral("reminderSortMode"), QStringLiteral("priority"));
    loadedStore();
    EXPECT_EQ(store->sortMode(), ReminderSortMode::priority);
    EXPECT_THAT(recorded(), IsEmpty());
    store->setSortMode(ReminderSortMode::title);
    store->setSortMode(ReminderSortMode::title);
    EXPECT_THAT(recorded(), ElementsAre("Change sort order"));
    history.undo();
    EXPECT_EQ(store->sortMode(), ReminderSortMode::priority);
    EXPECT_EQ(defaults.string(QStringLiteral("reminderSortMode")), QStringLiteral("priority"));
    store.reset();
    history.redo();
    EXPECT_FALSE(history.canRedo()) << "the end of the store leaves nothing to do";
}

}  // namespace
}  // namespace kestrant
