#include "eventkit/vdir/VdirEventStore.h"

#include "VdirFolder.h"
#include "support/EventStoreDriver.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VdirEventStoreTest : public ::testing::Test {
  protected:
    void open() {
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        scheduler.runPosted();
        subscription = store.observeChanges([this] { ++told; });
    }
    /// Waits until the system has told of a change and it has been read in.
    void awaitChange() {
        const int before = told;
        while (told == before) {
            ASSERT_TRUE(scheduler.runUntil([&] { return told > before || scheduler.pendingCount() > 0; }));
            scheduler.advance(200ms);
        }
    }
    [[nodiscard]] std::vector<QString> lists() const {
        std::vector<QString> result;
        for (const EKCalendar& list : store.calendars(EKEntityType::reminder))
            result.push_back(list.title);
        return result;
    }

    VdirFolder folder;
    ManualScheduler scheduler{at("UTC", {2026, 3, 27}, {12, 0})};
    MovableTimeZone currentZone;
    VdirEventStore store{folder.root(), scheduler, scheduler, currentZone};
    EventStoreDriver driver{store, scheduler};
    int told = 0;
    Subscription subscription;
};

TEST_F(VdirEventStoreTest, NoticesWhatOtherProgramsDoToFiles) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "a"));
    open();
    folder.replace("list/b.ics", VdirFolder::reminder("b", "b"));
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("a", "b"));
    folder.put("list/a.ics", VdirFolder::reminder("a", "A"));
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("A", "b"));
    folder.remove("list/b.ics");
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("A"));
    EXPECT_EQ(told, 3);
}

TEST_F(VdirEventStoreTest, NoticesListsThatComeAndGo) {
    open();
    folder.put("list/displayname", "First");
    awaitChange();
    EXPECT_THAT(lists(), ElementsAre("First"));
    // The list is watched from now on.
    folder.put("list/a.ics", VdirFolder::reminder("a", "a"));
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("a"));
    folder.replace("list/displayname", "Renamed");
    awaitChange();
    EXPECT_THAT(lists(), ElementsAre("Renamed"));
    folder.removeAll("list");
    awaitChange();
    EXPECT_THAT(lists(), IsEmpty());
    EXPECT_THAT(driver.openTitles(), IsEmpty());
}

TEST_F(VdirEventStoreTest, NoticesThatItsFolderGoesAndComesBack) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "a"));
    open();
    folder.removeAll();
    awaitChange();
    EXPECT_THAT(driver.openTitles(), IsEmpty());
    EXPECT_EQ(store.problems().size(), 1U);

    folder.put("../prepared/list/a.ics", VdirFolder::reminder("a", "again"));
    ASSERT_TRUE(QDir().rename(folder.path("../prepared"), folder.root()));
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("again"));
    EXPECT_THAT(store.problems(), IsEmpty());
}

TEST_F(VdirEventStoreTest, TellsOfOnesOwnChangeOnce) {
    folder.put("list/a.ics", VdirFolder::reminder("a", "a"));
    open();
    const EKReminderRef reminder = store.calendarItem("a");
    reminder->data.title = "ours";
    ASSERT_TRUE(driver.save(reminder).has_value());
    EXPECT_EQ(told, 1);
    // The system tells of our file, and it is looked at before the one that another program writes next.
    ASSERT_TRUE(scheduler.runUntil([&] { return scheduler.pendingCount() > 0; }));
    scheduler.advance(200ms);
    folder.replace("list/b.ics", VdirFolder::reminder("b", "theirs"));
    awaitChange();
    EXPECT_THAT(driver.openTitles(), ElementsAre("ours", "theirs"));
    EXPECT_EQ(told, 2);
}

TEST_F(VdirEventStoreTest, AnswersAFetchWithTheWholeDatabase) {
    for (int i = 0; i < 500; ++i)
        folder.put(QString("list/%1.ics").arg(i), VdirFolder::reminder(QByteArray::number(i), "x"));
    store.requestFullAccessToReminders([](bool, const auto&) {});
    EXPECT_EQ(driver.fetch(EKEventStore::predicateForIncompleteReminders({}, {}, {})).size(), 500U);
}

TEST_F(VdirEventStoreTest, SaysWhyAFolderCannotBeOpened) {
    folder.put("../calendars", "a file");
    const auto error = driver.requestAccess();
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(error->message.english.contains("calendars"));
    EXPECT_EQ(store.authorizationStatus(EKEntityType::reminder), EKAuthorizationStatus::notDetermined)
        << "nobody has refused";

    folder.remove("../calendars");
    EXPECT_EQ(driver.requestAccess(), std::nullopt);
    EXPECT_EQ(store.authorizationStatus(EKEntityType::reminder), EKAuthorizationStatus::fullAccess);
}

TEST(VdirEventStoreEndTest, FinishesAcceptedChangesAndAnswersNobody) {
    VdirFolder folder;
    folder.put("list/displayname", "List");
    ManualScheduler scheduler{at("UTC", {2026, 3, 27}, {12, 0})};
    const MovableTimeZone currentZone;
    int answers = 0;
    {
        VdirEventStore store(folder.root(), scheduler, scheduler, currentZone);
        ASSERT_EQ(EventStoreDriver(store, scheduler).requestAccess(), std::nullopt);
        for (int i = 0; i < 20; ++i) {
            const auto reminder = std::make_shared<EKReminder>(store);
            reminder->data = aReminder("").titled("x").in("list");
            store.save(reminder, [&](const auto&) { ++answers; });
        }
    }
    scheduler.runPosted();
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(folder.names("list").size(), 21U);
}

}  // namespace
}  // namespace kestrant
