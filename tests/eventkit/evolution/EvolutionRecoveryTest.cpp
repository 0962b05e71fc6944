#include "contracts/EvolutionHouse.h"
#include "foundation/StandardFolders.h"
#include "support/EventStoreDriver.h"

#include <QDir>

#include <gmock/gmock.h>
#include <signal.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class EvolutionRecovery : public ::testing::Test {
  protected:
    explicit EvolutionRecovery(std::chrono::milliseconds longestCall = EvolutionEventStore::longestCall)
        : house(longestCall) {}
    void open() {
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        list = driver.addList("Groceries");
        identifier = add("bread")->calendarItemIdentifier();
    }
    EKReminderRef add(const char* title) {
        return driver.add(aReminder("").titled(QString::fromLatin1(title)).in(list));
    }
    [[nodiscard]] std::vector<QString> listTitles() const {
        std::vector<QString> result;
        for (const EKCalendar& calendar : house.store.calendars(EKEntityType::reminder))
            result.push_back(calendar.title);
        return result;
    }
    void addElsewhere(const QByteArray& uid, const QString& where = {}) {
        ForeignList(where.isEmpty() ? list : where, E_CAL_CLIENT_SOURCE_TYPE_TASKS)
            .add("BEGIN:VTODO\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + uid +
                 "\r\nEND:VTODO\r\n");
    }

    EvolutionHouse house;
    EventStoreDriver driver{house.store, house.scheduler};
    QString list;
    QString identifier;
};

TEST_F(EvolutionRecovery, GoesOnWhenAProcessOfTheServiceWasKilled) {
    open();
    const Subscription subscription = house.store.observeChanges([&] {
        const auto shown = house.store.calendarWithIdentifier(list);
        EXPECT_TRUE(shown && (shown->allowsContentModifications || !shown->isAnswering));
    });
    for (const char* name :
         {"org.gnome.evolution.dataserver.Calendar", "org.gnome.evolution.dataserver.Sources"}) {
        house.service.kill(name);
        // Whether the loss has been noticed by now or not, a change is either made or refused, never lost.
        const QByteArray uid = QByteArray("after ") + name;
        house.awaitThat([&] { return driver.openTitles() == std::vector<QString>{"bread"}; });
        addElsewhere(uid);
        house.awaitThat(
            [&] { return house.store.calendarItem(uid) != nullptr && house.store.problems().empty(); });
        EXPECT_TRUE(house.store.calendarItem(identifier));
        const EKReminderRef reminder = house.store.calendarItem(uid);
        ASSERT_TRUE(driver.remove(reminder).has_value());
    }
}

TEST_F(EvolutionRecovery, TakesTheFirstOfTwoStepsBackWhereTheSecondOneWasNotMade) {
    open();
    EvolutionHouse::Other other(house.currentZone.zone());
    evolution::EvolutionStorage& storage = other.storage;
    const auto parsed = [](const QByteArray& text) { return *icalendar::Document::parse(text); };
    const items::FileLocation changed{list.toUtf8(), identifier.toUtf8()};
    const QByteArray copy = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:copy\r\n"
                            "DTSTAMP:20260101T000000Z\r\nSUMMARY:copy\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    const auto rewrite = [&](const items::FileLocation& place, const char* from, const char* to) {
        const items::StoredText present = **storage.read(place);
        return storage
            .replace(place, parsed(present.text), parsed(QByteArray(present.text).replace(from, to)),
                     present.version)
            .has_value();
    };
    const struct {
        const char* what;
        bool isSecondMade, isCopyEdited;
        std::vector<QString> left;
    } cases[] = {
        {"ended between the steps", false, false, {"bread"}},
        {"the copy was edited", false, true, {"bread", "edited"}},
        {"both were made", true, false, {"copy", "rye"}},
    };
    for (const auto& each : cases) {
        {
            const items::StorageHold steps =
                storage.beginTwoSteps(changed, (*storage.read(changed))->text, items::SecondStep::rewrites);
            ASSERT_TRUE(storage.create(changed.collection, "copy", {}, parsed(copy)).has_value());
            EXPECT_TRUE(!each.isSecondMade || rewrite(changed, "SUMMARY:bread", "SUMMARY:rye"));
        }
        const items::FileLocation made{changed.collection, "copy"};
        EXPECT_TRUE(!each.isCopyEdited || rewrite(made, "SUMMARY:copy", "SUMMARY:edited"));
        (void)other.database.refresh({.files = {{changed.collection, {}}}}, house.currentZone.zone());
        house.awaitThat([&] { return driver.openTitles() == each.left; });
        if (const auto left = *storage.read(made)) {
            EXPECT_FALSE(storage.remove(made, left->version)) << each.what;
        }
        EXPECT_THAT(QDir(applicationSupportFolder() + "/changes").entryList(QDir::Files | QDir::Hidden),
                    IsEmpty())
            << each.what;
    }
}

/// With little patience.
class EvolutionSilence : public EvolutionRecovery {
  protected:
    EvolutionSilence() : EvolutionRecovery(2s) {}
};

TEST_F(EvolutionSilence, IsToldAndWhatWasSeenLastIsShown) {
    open();
    const pid_t process = house.service.processOf("org.gnome.evolution.dataserver.Calendar");
    ASSERT_GT(process, 0);
    ASSERT_EQ(::kill(process, SIGSTOP), 0);
    const EKReminderRef reminder = house.store.calendarItem(identifier);
    reminder->data.title = "milk";
    std::optional<EventStoreDriver::SaveAnswer> refused;
    house.store.save(reminder, [&](const auto& result) { refused = result; });
    house.awaitThat([&] { return !house.store.problems().empty(); });
    EXPECT_FALSE(refused.has_value()) << "nobody has given up yet";
    EXPECT_TRUE(house.store.problems()[0].english.contains("takes long to answer"));
    house.awaitThat([&] { return refused.has_value(); });
    ASSERT_FALSE(refused->has_value());
    EXPECT_EQ(refused->error().code, EKError::Code::storage);
    house.awaitThat([&] {
        const auto problems = house.store.problems();
        return problems.size() == 1 && problems[0].english.startsWith(u"“Groceries” does not answer");
    });
    EXPECT_THAT(driver.openTitles(), ElementsAre("bread"));
    EXPECT_FALSE(house.store.calendarWithIdentifier(list)->allowsContentModifications);
    const auto unsaved = driver.save(reminder);
    ASSERT_FALSE(unsaved.has_value());
    EXPECT_TRUE(unsaved.error().message.english.contains("does not answer"))
        << unsaved.error().message.english.toStdString();

    ASSERT_EQ(::kill(process, SIGCONT), 0);
    house.awaitThat([&] { return house.store.problems().empty(); });
    EXPECT_TRUE(driver.save(reminder).has_value());
    EXPECT_THAT(driver.openTitles(), ElementsAre("milk"));
}

TEST_F(EvolutionRecovery, WaitsNoTimeForAProcessThatHangs) {
    open();
    for (const char* name :
         {"org.gnome.evolution.dataserver.Calendar", "org.gnome.evolution.dataserver.Sources"}) {
        const pid_t process = house.service.processOf(name);
        ASSERT_EQ(::kill(process, SIGSTOP), 0);
        EvolutionEventStore store(house.scheduler, house.scheduler, house.currentZone, 1h);
        EventStoreDriver other(store, house.scheduler);
        const auto refused = other.requestAccess();
        const auto problems = refused ? std::vector<TextPair>{refused->message} : store.problems();
        EXPECT_EQ(::kill(process, SIGCONT), 0);
        ASSERT_THAT(problems, SizeIs(1)) << name;
        EXPECT_TRUE(problems[0].english.contains("no answer in time")) << name;
        house.awaitThat([&] { return !other.requestAccess() && store.problems().empty(); });
        EXPECT_THAT(other.openTitles(), ElementsAre("bread"));
    }
}

TEST_F(EvolutionRecovery, ReadsNoMoreThanIsWanted) {
    open();
    add("milk");
    const auto completed = EKEventStore::predicateForCompletedReminders({}, {}, {});
    struct Case {
        QStringList wanted;
        std::vector<QString> known;
    };
    for (const Case& each :
         {Case{{identifier}, {"bread"}}, Case{{}, {}}, Case{{identifier, "unknown"}, {"bread", "milk"}}}) {
        EvolutionEventStore store(house.scheduler, house.scheduler, house.currentZone,
                                  EvolutionEventStore::longestCall, {.reminders = each.wanted});
        EventStoreDriver other(store, house.scheduler);
        ASSERT_EQ(other.requestAccess(), std::nullopt);
        EXPECT_EQ(other.openTitles(), each.known);
        const EKReminderRef added = other.add(aReminder("").titled("rice").in(list));
        // The record of completions is never made of a part of the database.
        (void)other.fetch(completed);
        EXPECT_THAT(other.openTitles(), ElementsAre("bread", "milk", "rice"));
        ASSERT_TRUE(other.remove(added).has_value());
    }
}

TEST_F(EvolutionRecovery, FindsAWantedReminderAmongItemsOfTheSameName) {
    open();
    const QString other = driver.addList("Other");
    const auto calendar =
        driver.saveCalendar({.title = "Work", .allowsReminders = false, .allowsEvents = true});
    ASSERT_TRUE(calendar.has_value());
    ForeignList(calendar->calendarIdentifier, E_CAL_CLIENT_SOURCE_TYPE_EVENTS)
        .add("BEGIN:VEVENT\r\nUID:" + identifier.toUtf8() + "\r\nDTSTART:20260327T090000Z\r\nEND:VEVENT\r\n");
    addElsewhere(identifier.toUtf8(), other);
    house.awaitThat([&] { return driver.openTitles().size() == 2; });
    const EKReminderRef whole = house.store.calendarItem(identifier);
    for (int i = 0; i < 8; ++i) {
        EvolutionEventStore store(house.scheduler, house.scheduler, house.currentZone,
                                  EvolutionEventStore::longestCall, {.reminders = QStringList{identifier}});
        EventStoreDriver partial(store, house.scheduler);
        ASSERT_EQ(partial.requestAccess(), std::nullopt);
        const EKReminderRef found = store.calendarItem(identifier);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->data, whole->data) << "the same one that is known by that name among all";
    }
}

TEST_F(EvolutionRecovery, FollowsListsThatOthersMakeChangeDisableAndRemove) {
    open();
    EvolutionHouse::Other other(house.currentZone.zone());
    const auto made = other.database.saveCalendar({.title = "Aardvarks", .color = Color{1, 2, 3}},
                                                  house.currentZone.zone());
    ASSERT_TRUE(made.has_value());
    house.awaitThat([&] { return listTitles() == std::vector<QString>{"Aardvarks", "Groceries"}; });
    EXPECT_EQ(house.store.calendars(EKEntityType::reminder)[0].color, (Color{1, 2, 3}));

    EvolutionService::changeSettings(made->calendarIdentifier,
                                     [](ESource* source) { e_source_set_display_name(source, "Zebras"); });
    house.awaitThat([&] { return listTitles() == std::vector<QString>{"Groceries", "Zebras"}; });
    EvolutionService::changeSettings(list, [](ESource* source) { e_source_set_enabled(source, FALSE); });
    house.awaitThat([&] { return listTitles() == std::vector<QString>{"Zebras"}; });
    EXPECT_THAT(driver.openTitles(), IsEmpty());
    EvolutionService::changeSettings(list, [](ESource* source) { e_source_set_enabled(source, TRUE); });
    house.awaitThat([&] { return listTitles().size() == 2; });
    EXPECT_THAT(driver.openTitles(), ElementsAre("bread"));
    house.service.removeAll();
    house.awaitThat([&] { return listTitles().empty(); });
    EXPECT_THAT(driver.openTitles(), IsEmpty());
    EXPECT_THAT(house.store.problems(), IsEmpty());
}

}  // namespace
}  // namespace kestrant
