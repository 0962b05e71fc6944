#include "EventStoreHouses.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <typename House>
class EventStoreContract : public ::testing::Test {
  protected:
    void open() {
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        list = driver.addList("Groceries");
    }
    [[nodiscard]] EKReminderData shown(const QString& identifier) {
        const EKReminderRef reminder = house.store.calendarItem(identifier);
        return reminder ? reminder->data : EKReminderData{};
    }
    [[nodiscard]] std::vector<QString> completedTitles() {
        return driver.titles(EKEventStore::predicateForCompletedReminders({}, {}, {}));
    }
    [[nodiscard]] EKReminderData inList(EKReminderData data) const {
        data.calendarIdentifier = list;
        return data;
    }

    House house;
    EventStoreDriver driver{house.store, house.scheduler};
    QString list;
};

TYPED_TEST_SUITE(EventStoreContract, Houses);

TYPED_TEST(EventStoreContract, ShowsNothingAndRefusesChangesBeforeAccessIsGranted) {
    EXPECT_EQ(this->house.store.authorizationStatus(EKEntityType::reminder),
              EKAuthorizationStatus::notDetermined);
    EXPECT_THAT(this->house.store.calendars(EKEntityType::reminder), IsEmpty());
    const auto reminder = std::make_shared<EKReminder>(this->house.store);
    EXPECT_EQ(codeOf(this->driver.save(reminder)), EKError::Code::accessDenied);
    EXPECT_EQ(this->driver.saveCalendar({.title = "List"}).error().code, EKError::Code::accessDenied);

    EXPECT_EQ(this->driver.requestAccess(), std::nullopt);
    EXPECT_EQ(this->house.store.authorizationStatus(EKEntityType::event), EKAuthorizationStatus::fullAccess);
}

TYPED_TEST(EventStoreContract, CreatesAndRenamesLists) {
    this->open();
    auto created = this->house.store.calendarWithIdentifier(this->list);
    ASSERT_TRUE(created.has_value());
    EXPECT_EQ(created->title, "Groceries");
    EXPECT_TRUE(created->allowsReminders && created->allowsContentModifications);
    EXPECT_EQ(this->house.store.defaultCalendarForNewReminders(), created);

    EKCalendar changed = *created;
    changed.title = "Épicerie";
    changed.color = Color{1, 2, 3};
    const auto saved = this->driver.saveCalendar(changed);
    ASSERT_TRUE(saved.has_value());
    EXPECT_EQ(*saved, changed);
    EXPECT_THAT(this->house.store.calendars(EKEntityType::reminder), ElementsAre(changed));

    EXPECT_EQ(this->driver.saveCalendar({.calendarIdentifier = "elsewhere", .title = "x"}).error().code,
              EKError::Code::calendarNotFound);
}

TYPED_TEST(EventStoreContract, KeepsEveryPropertyOfAReminder) {
    this->open();
    EKReminderData data = this->inList(aReminder("")
                                           .titled("Acheter du pain; \"bio\", 日本\\語")
                                           .notes("two\nlines")
                                           .priority(5)
                                           .due({2026, 4, 1}, {9, 30}, "America/New_York")
                                           .alarmAt(at("UTC", {2026, 4, 1}, {13, 0}))
                                           .created(at("UTC", {2026, 1, 1})));
    data.location = "Rue de l’Église, 3";
    data.url = "https://example.org/?a=b,c;d";
    const EKReminderRef saved = this->driver.add(data);

    EKReminderData found = this->shown(saved->calendarItemIdentifier());
    EXPECT_EQ(found, saved->data);
    EXPECT_FALSE(saved->hasChanges());
    ASSERT_EQ(found.alarms.size(), 1U);
    EXPECT_EQ(found.alarms[0].absoluteDate, data.alarms[0].absoluteDate);
    EXPECT_EQ(found.lastModifiedDate, morning);
    found.alarms = data.alarms;
    found.lastModifiedDate.reset();
    found.calendarItemIdentifier.clear();
    EXPECT_EQ(found, data);
}

TYPED_TEST(EventStoreContract, KeepsEveryKindOfDate) {
    this->open();
    const DateComponents dates[] = {
        DateComponents::fromDate({2026, 3, 29}), DateComponents::fromDateTime({2026, 3, 29}, {2, 30}),
        DateComponents::fromDateTime({2026, 10, 25}, {2, 30}, TimeZone::named("Europe/Paris")),
        DateComponents::fromDateTime({2026, 12, 31}, {23, 59, 59}, TimeZone::named("UTC")),
        DateComponents::fromDate({9999, 12, 31})};
    for (const DateComponents& date : dates) {
        EKReminderData data = this->inList(aReminder("").titled("x"));
        data.dueDateComponents = date;
        const QString identifier = this->driver.add(data)->calendarItemIdentifier();
        EXPECT_EQ(this->shown(identifier).dueDateComponents, date);
    }
}

TYPED_TEST(EventStoreContract, FindsRemindersByCompletionDateAndList) {
    this->open();
    const QString other = this->driver.addList("Work");
    this->driver.add(this->inList(aReminder("").titled("undated")));
    this->driver.add(this->inList(aReminder("").titled("today").due({2026, 3, 27})));
    this->driver.add(aReminder("").titled("tomorrow 9:00").in(other).due({2026, 3, 28}, {9, 0}));
    this->driver.add(this->inList(aReminder("").titled("done in 2025").completedAt(at("UTC", {2025, 6, 1}))));
    this->driver.add(aReminder("").titled("done in 2026").in(other).completedAt(at("UTC", {2026, 2, 1})));

    const auto open = [&](std::optional<Instant> start, std::optional<Instant> end,
                          std::optional<std::vector<QString>> lists) {
        return this->driver.titles(
            EKEventStore::predicateForIncompleteReminders(start, end, std::move(lists)));
    };
    const auto done = [&](std::optional<Instant> start, std::optional<std::vector<QString>> lists) {
        return this->driver.titles(EKEventStore::predicateForCompletedReminders(start, {}, std::move(lists)));
    };
    const Instant today = at("Europe/Paris", {2026, 3, 27});
    EXPECT_THAT(open({}, {}, {}), ElementsAre("today", "tomorrow 9:00", "undated"));
    EXPECT_THAT(open({}, {}, std::vector{other}), ElementsAre("tomorrow 9:00"));
    EXPECT_THAT(open(today, {}, {}), ElementsAre("today", "tomorrow 9:00"));
    EXPECT_THAT(open({}, today + 1s, {}), ElementsAre("today"));
    EXPECT_THAT(open(today, today, {}), IsEmpty());
    EXPECT_THAT(done({}, {}), ElementsAre("done in 2025", "done in 2026"));
    EXPECT_THAT(done(at("Europe/Paris", {2026, 1, 1}), {}), ElementsAre("done in 2026"));
    EXPECT_THAT(done({}, std::vector{this->list}), ElementsAre("done in 2025"));
}

TYPED_TEST(EventStoreContract, CompletesAndReopensAReminder) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("x")));
    reminder->data.isCompleted = true;
    ASSERT_TRUE(this->driver.save(reminder).has_value());
    EXPECT_EQ(reminder->data.completionDate, morning);
    EXPECT_THAT(this->driver.openTitles(), IsEmpty());
    EXPECT_THAT(this->completedTitles(), ElementsAre("x"));

    reminder->data.isCompleted = false;
    ASSERT_TRUE(this->driver.save(reminder).has_value());
    EXPECT_EQ(this->shown(reminder->calendarItemIdentifier()).completionDate, std::nullopt);
    EXPECT_THAT(this->driver.openTitles(), ElementsAre("x"));
}

TYPED_TEST(EventStoreContract, CompletingARecurringReminderMovesItOnAndLeavesACopy) {
    this->open();
    EKReminderData data = this->inList(aReminder("")
                                           .titled("Water the plants")
                                           .notes("all of them")
                                           .due({2026, 3, 27}, {9, 0}, "Europe/Paris")
                                           .starting({2026, 3, 26}, {18, 0})
                                           .alarmAt(at("Europe/Paris", {2026, 3, 27}, {8, 45}))
                                           .repeating("FREQ=DAILY;INTERVAL=3;COUNT=2"));
    data.startDateComponents->timeZone = TimeZone::named("Europe/Paris");
    const EKReminderRef reminder = this->driver.add(data);
    reminder->data.isCompleted = true;
    const auto answer = this->driver.save(reminder);
    ASSERT_TRUE(answer.has_value());
    ASSERT_TRUE(answer->completedCopyIdentifier.has_value());

    // The clocks change on 29 March: nine o'clock stays nine o'clock.
    EXPECT_FALSE(reminder->data.isCompleted);
    EXPECT_EQ(reminder->data.dueDateComponents,
              DateComponents::fromDateTime({2026, 3, 30}, {9, 0}, TimeZone::named("Europe/Paris")));
    EXPECT_EQ(reminder->data.startDateComponents,
              DateComponents::fromDateTime({2026, 3, 29}, {18, 0}, TimeZone::named("Europe/Paris")));
    ASSERT_EQ(reminder->data.alarms.size(), 1U);
    EXPECT_EQ(reminder->data.alarms[0].absoluteDate, at("Europe/Paris", {2026, 3, 30}, {8, 45}));
    // In whatever order a database writes the parts of a rule.
    EXPECT_EQ(reminder->data.recurrenceRules[0].interval, 3);
    EXPECT_TRUE(reminder->data.recurrenceRules[0].text.contains("COUNT=1"));

    const EKReminderData copy = this->shown(*answer->completedCopyIdentifier);
    EXPECT_TRUE(copy.isCompleted);
    EXPECT_EQ(copy.completionDate, morning);
    EXPECT_EQ(copy.dueDateComponents, data.dueDateComponents);
    EXPECT_EQ(copy.notes, data.notes);
    EXPECT_THAT(copy.recurrenceRules, IsEmpty());
    EXPECT_THAT(copy.alarms, IsEmpty());

    // The last one leaves no copy behind.
    reminder->data.isCompleted = true;
    const auto last = this->driver.save(reminder);
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(last->completedCopyIdentifier, std::nullopt);
    EXPECT_THAT(this->driver.openTitles(), IsEmpty());
    EXPECT_THAT(this->completedTitles(), ElementsAre("Water the plants", "Water the plants"));
}

TYPED_TEST(EventStoreContract, CompletingAnOverdueSeriesMovesItToTodayInOneStep) {
    this->open();
    EKReminderData data = this->inList(aReminder("")
                                           .titled("Water the plants")
                                           .due({2026, 3, 13}, {7, 30}, "Europe/Paris")
                                           .alarmAt(at("Europe/Paris", {2026, 3, 13}, {7, 15}))
                                           .repeating("FREQ=DAILY;COUNT=20"));
    const EKReminderRef reminder = this->driver.add(data);
    const EKReminderData before = reminder->data;
    reminder->data.isCompleted = true;
    const auto answer = this->driver.save(reminder);
    ASSERT_TRUE(answer && answer->completedCopyIdentifier);
    EXPECT_EQ(reminder->data.dueDateComponents,
              DateComponents::fromDateTime({2026, 3, 27}, {7, 30}, TimeZone::named("Europe/Paris")));
    EXPECT_EQ(reminder->data.alarms.at(0).absoluteDate, at("Europe/Paris", {2026, 3, 27}, {7, 15}));
    EXPECT_TRUE(reminder->data.recurrenceRules.at(0).text.contains("COUNT=6"));
    EXPECT_THAT(this->completedTitles(), ElementsAre("Water the plants"));
    EXPECT_EQ(this->shown(*answer->completedCopyIdentifier).dueDateComponents, before.dueDateComponents);

    ASSERT_TRUE(this->driver.revert(*answer).has_value());
    const EKReminderData back = this->shown(reminder->calendarItemIdentifier());
    EXPECT_EQ(back.dueDateComponents, before.dueDateComponents);
    EXPECT_EQ(back.alarms.at(0).absoluteDate, before.alarms.at(0).absoluteDate);
    EXPECT_THAT(this->completedTitles(), IsEmpty());
}

TYPED_TEST(EventStoreContract, KeepsWhatWasChangedElsewhereInOtherProperties) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("old").priority(1)));
    this->house.changeElsewhere(reminder->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.priority = 9; });
    reminder->data.title = "new";
    ASSERT_TRUE(this->driver.save(reminder).has_value());
    EXPECT_EQ(reminder->data.priority, 9);
    EXPECT_EQ(this->shown(reminder->calendarItemIdentifier()).title, "new");
}

TYPED_TEST(EventStoreContract, RefusesToOverwriteWhatWasChangedElsewhere) {
    this->open();
    const EKReminderRef reminder =
        this->driver.add(this->inList(aReminder("").titled("old").due({2026, 3, 1})));
    this->house.changeElsewhere(reminder->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.title = "theirs"; });
    reminder->data.title = "ours";
    reminder->data.priority = 3;
    EXPECT_EQ(codeOf(this->driver.save(reminder)), EKError::Code::conflict);
    EXPECT_EQ(this->shown(reminder->calendarItemIdentifier()).title, "theirs");
    EXPECT_EQ(this->shown(reminder->calendarItemIdentifier()).priority, 0);

    // With the present values in hand it is no conflict any more.
    ASSERT_TRUE(reminder->refresh());
    EXPECT_EQ(reminder->data.title, "ours");
    EXPECT_TRUE(this->driver.save(reminder).has_value());
}

TYPED_TEST(EventStoreContract, SavesManyEachByItself) {
    this->open();
    const QString other = this->driver.addList("Work");
    const auto make = [this](EKReminderData data) { return this->driver.add(this->inList(std::move(data))); };
    const EKReminderRef flagged = make(aReminder("").titled("flagged"));
    const EKReminderRef noted = make(aReminder("").titled("noted"));
    const EKReminderRef contested = make(aReminder("").titled("contested"));
    const EKReminderRef gone = make(aReminder("").titled("gone"));
    const EKReminderRef moved = make(aReminder("").titled("moved"));
    const EKReminderRef done = make(aReminder("").titled("done").due({2026, 3, 27}).repeating("FREQ=DAILY"));
    const EKReminderRef same = make(aReminder("").titled("same"));
    const auto fresh = std::make_shared<EKReminder>(this->house.store);
    fresh->data = this->inList(aReminder("").titled("fresh"));
    const EKReminderRef again = this->house.store.calendarItem(noted->calendarItemIdentifier());
    this->house.changeElsewhere(contested->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.title = "theirs"; });
    this->house.removeElsewhere(gone->calendarItemIdentifier());

    flagged->data.isFlagged = true;
    noted->data.notes = "first";
    contested->data.title = "ours";
    gone->data.isFlagged = true;
    moved->data.calendarIdentifier = other;
    done->data.isCompleted = true;
    again->data.priority = 1;
    const auto results =
        this->driver.saveAll({flagged, noted, contested, gone, moved, done, same, fresh, again});
    ASSERT_EQ(results.size(), 9U);
    EXPECT_EQ(codeOf(results[2]), EKError::Code::conflict);
    EXPECT_EQ(codeOf(results[3]), EKError::Code::itemNotFound);
    for (const std::size_t i : {0U, 1U, 4U, 5U, 6U, 7U, 8U})
        EXPECT_TRUE(results[i].has_value()) << i;

    EXPECT_TRUE(this->shown(flagged->calendarItemIdentifier()).isFlagged);
    EXPECT_FALSE(flagged->hasChanges());
    EXPECT_EQ(this->shown(noted->calendarItemIdentifier()).notes, "first");
    EXPECT_EQ(this->shown(noted->calendarItemIdentifier()).priority, 1);
    EXPECT_EQ(this->shown(contested->calendarItemIdentifier()).title, "theirs");
    EXPECT_EQ(this->shown(results[4]->calendarItemIdentifier).calendarIdentifier, other);
    EXPECT_TRUE(results[5]->completedCopyIdentifier.has_value());
    EXPECT_EQ(this->shown(results[7]->calendarItemIdentifier).title, "fresh");

    ASSERT_TRUE(this->driver.revert(*results[0]).has_value());
    EXPECT_FALSE(this->shown(flagged->calendarItemIdentifier()).isFlagged);
    EXPECT_THAT(this->driver.saveAll({}), IsEmpty());
}

TYPED_TEST(EventStoreContract, DoesNotCompleteAnOccurrenceTwice) {
    this->open();
    const EKReminderRef reminder =
        this->driver.add(this->inList(aReminder("").titled("x").due({2026, 3, 27}).repeating("FREQ=DAILY")));
    this->house.changeElsewhere(reminder->calendarItemIdentifier(), [](EKReminderData& data) {
        data.dueDateComponents = DateComponents::fromDate({2026, 3, 28});
    });
    reminder->data.isCompleted = true;
    EXPECT_EQ(codeOf(this->driver.save(reminder)), EKError::Code::conflict);
    EXPECT_THAT(this->completedTitles(), IsEmpty());
}

TYPED_TEST(EventStoreContract, RefreshesAndResetsTheReminderInHand) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("old").priority(1)));
    reminder->data.notes = "mine";
    this->house.changeElsewhere(reminder->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.title = "theirs"; });
    ASSERT_TRUE(reminder->refresh());
    EXPECT_EQ(reminder->data.title, "theirs");
    EXPECT_EQ(reminder->data.notes, "mine");
    reminder->reset();
    EXPECT_EQ(reminder->data.notes, std::nullopt);

    this->house.removeElsewhere(reminder->calendarItemIdentifier());
    EXPECT_FALSE(reminder->refresh());
    EXPECT_EQ(reminder->data.title, "theirs");
}

TYPED_TEST(EventStoreContract, FindsNothingWhereAReminderWasRemoved) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("x")));
    const EKReminderRef same = this->house.store.calendarItem(reminder->calendarItemIdentifier());
    ASSERT_TRUE(this->driver.remove(reminder).has_value());
    EXPECT_EQ(this->house.store.calendarItem(reminder->calendarItemIdentifier()), nullptr);
    EXPECT_EQ(codeOf(this->driver.remove(same)), EKError::Code::itemNotFound);
    same->data.title = "y";
    EXPECT_EQ(codeOf(this->driver.save(same)), EKError::Code::itemNotFound);
    EXPECT_THAT(this->driver.openTitles(), IsEmpty());
}

TYPED_TEST(EventStoreContract, MovesAReminderToAnotherList) {
    this->open();
    const QString other = this->driver.addList("Work");
    const EKReminderRef reminder =
        this->driver.add(this->inList(aReminder("").titled("x").due({2026, 3, 27})));
    const QString identifier = reminder->calendarItemIdentifier();
    reminder->data.calendarIdentifier = other;
    reminder->data.title = "y";
    ASSERT_TRUE(this->driver.save(reminder).has_value());
    EXPECT_EQ(reminder->calendarItemIdentifier(), identifier);
    EXPECT_EQ(this->shown(identifier).calendarIdentifier, other);
    EXPECT_THAT(this->driver.openTitles(), ElementsAre("y"));

    reminder->data.calendarIdentifier = "nowhere";
    EXPECT_EQ(codeOf(this->driver.save(reminder)), EKError::Code::calendarNotFound);
    EXPECT_EQ(this->shown(identifier).calendarIdentifier, other);
}

TYPED_TEST(EventStoreContract, RefusesValuesThatMakeNoSense) {
    this->open();
    const auto codeFor = [&](auto change) {
        const auto reminder = std::make_shared<EKReminder>(this->house.store);
        reminder->data = this->inList(aReminder("").titled("x"));
        change(reminder->data);
        return codeOf(this->driver.save(reminder));
    };
    EXPECT_EQ(codeFor([](EKReminderData& data) { data.priority = 10; }), EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKReminderData& data) {
                  data.dueDateComponents = DateComponents{2026, 2, 30};
              }),
              EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKReminderData& data) {
                  data.recurrenceRules = {EKRecurrenceRule::parse("FREQ=SOMETIMES")};
              }),
              EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKReminderData& data) { data.calendarIdentifier = "nowhere"; }),
              EKError::Code::calendarNotFound);
    EXPECT_THAT(this->driver.openTitles(), IsEmpty());
}

TYPED_TEST(EventStoreContract, ChangesNothingInAReadOnlyList) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("x")));
    this->house.makeReadOnly(this->list);
    EXPECT_FALSE(this->house.store.calendarWithIdentifier(this->list)->allowsContentModifications);
    EXPECT_EQ(this->house.store.defaultCalendarForNewReminders(), std::nullopt);
    reminder->data.title = "y";
    EXPECT_EQ(codeOf(this->driver.save(reminder)), EKError::Code::readOnly);
    EXPECT_EQ(codeOf(this->driver.remove(reminder)), EKError::Code::readOnly);
    EXPECT_THAT(this->driver.openTitles(), ElementsAre("x"));
}

TYPED_TEST(EventStoreContract, KeepsStartAndDueDateTogether) {
    this->open();
    struct Case {
        DateComponents start;
        DateComponents due;
        DateComponents newDue;
        DateComponents expectedStart;
    };
    const auto day = [](int d) { return DateComponents::fromDate({2026, 4, d}); };
    const auto hour = [](int d, int h) { return DateComponents::fromDateTime({2026, 4, d}, {h, 0}); };
    const Case cases[] = {
        {day(5), day(5), day(9), day(9)},          // one and the same date
        {day(1), day(5), day(9), day(1)},          // still before
        {day(4), day(5), day(2), day(2)},          // would be after
        {hour(5, 8), hour(5, 9), day(7), day(5)},  // a day has no start time
    };
    for (const Case& each : cases) {
        EKReminderData data = this->inList(aReminder("").titled("x"));
        data.startDateComponents = each.start;
        data.dueDateComponents = each.due;
        const EKReminderRef reminder = this->driver.add(data);
        reminder->data.dueDateComponents = each.newDue;
        ASSERT_TRUE(this->driver.save(reminder).has_value());
        EXPECT_EQ(reminder->data.startDateComponents, each.expectedStart);
    }
}

TYPED_TEST(EventStoreContract, TakesChangesBackAndTakesThatBackInTurn) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("old").priority(3)));
    const EKReminderData original = reminder->data;
    reminder->data.title = "new";
    reminder->data.notes = "notes";
    auto done = this->driver.save(reminder);
    ASSERT_TRUE(done && done->change);
    this->house.changeElsewhere(original.calendarItemIdentifier,
                                [](EKReminderData& data) { data.priority = 7; });
    for (const char* title : {"old", "new", "old"}) {
        done = this->driver.revert(*done);
        ASSERT_TRUE(done.has_value());
        EXPECT_THAT(this->driver.openTitles(), ElementsAre(title));
    }
    EXPECT_EQ(this->shown(original.calendarItemIdentifier).notes, std::nullopt);
    EXPECT_EQ(this->shown(original.calendarItemIdentifier).priority, 7);
}

TYPED_TEST(EventStoreContract, BringsBackWhatWasRemovedAndRemovesWhatWasMade) {
    this->open();
    EKReminderData data = this->inList(aReminder("")
                                           .titled("x")
                                           .notes("n")
                                           .due({2026, 4, 1}, {9, 30}, "America/New_York")
                                           .alarmAt(at("UTC", {2026, 4, 1}, {13, 0}))
                                           .repeating("FREQ=WEEKLY"));
    data.url = "https://example.org/";
    data.location = "Home";
    data.isFlagged = true;
    const EKReminderRef reminder = this->driver.add(data);
    EKReminderData expected = reminder->data;
    const auto removed = this->driver.remove(reminder);
    ASSERT_TRUE(removed.has_value());
    const auto back = this->driver.revert(*removed);
    ASSERT_TRUE(back.has_value());
    expected.calendarItemIdentifier = back->calendarItemIdentifier;
    EXPECT_EQ(this->shown(back->calendarItemIdentifier), expected);
    ASSERT_TRUE(this->driver.revert(*back).has_value());
    EXPECT_THAT(this->driver.openTitles(), IsEmpty());
    EXPECT_EQ(codeOf(this->driver.revert(*back)), EKError::Code::itemNotFound);
}

TYPED_TEST(EventStoreContract, TakesACompletedOccurrenceBackTogetherWithItsCopy) {
    this->open();
    const EKReminderRef reminder =
        this->driver.add(this->inList(aReminder("").titled("x").due({2026, 3, 27}).repeating("FREQ=DAILY")));
    const EKReminderData before = reminder->data;
    reminder->data.isCompleted = true;
    const auto done = this->driver.save(reminder);
    ASSERT_TRUE(done.has_value());
    const auto undone = this->driver.revert(*done);
    ASSERT_TRUE(undone.has_value());
    EXPECT_EQ(this->shown(before.calendarItemIdentifier).dueDateComponents, before.dueDateComponents);
    EXPECT_THAT(this->completedTitles(), IsEmpty());
    const auto redone = this->driver.revert(*undone);
    ASSERT_TRUE(redone && redone->completedCopyIdentifier);
    EXPECT_EQ(this->shown(before.calendarItemIdentifier).dueDateComponents,
              DateComponents::fromDate({2026, 3, 28}));
    EXPECT_TRUE(this->shown(*redone->completedCopyIdentifier).isCompleted);
}

TYPED_TEST(EventStoreContract, RefusesToTakeBackWhatWasChangedElsewhereMeanwhile) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("old")));
    reminder->data.title = "ours";
    const auto done = this->driver.save(reminder);
    ASSERT_TRUE(done.has_value());
    this->house.changeElsewhere(reminder->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.title = "theirs"; });
    EXPECT_EQ(codeOf(this->driver.revert(*done)), EKError::Code::conflict);
    EXPECT_THAT(this->driver.openTitles(), ElementsAre("theirs"));
}

TYPED_TEST(EventStoreContract, TellsOfOwnChangesAndOfThoseOfOthers) {
    this->open();
    const EKReminderRef reminder = this->driver.add(this->inList(aReminder("").titled("x")));
    this->house.scheduler.runPosted();
    int told = 0;
    const Subscription subscription = this->house.store.observeChanges([&] { ++told; });
    reminder->data.title = "y";
    ASSERT_TRUE(this->driver.save(reminder).has_value());
    this->house.scheduler.runPosted();
    EXPECT_EQ(told, 1);
    this->house.changeElsewhere(reminder->calendarItemIdentifier(),
                                [](EKReminderData& data) { data.title = "z"; });
    EXPECT_EQ(told, 2);
    EXPECT_THAT(this->driver.openTitles(), ElementsAre("z"));
}

}  // namespace
}  // namespace kestrant
