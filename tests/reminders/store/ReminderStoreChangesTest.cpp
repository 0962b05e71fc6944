#include "ReminderStoreFixture.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/model/ReminderConversion.h"

namespace kestrant {
namespace {

using Code = ReminderStoreError::Code;
using Operation = InMemoryEventStore::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

const QString a = QStringLiteral("a");
constexpr std::optional<Code> done = std::nullopt;

NewReminder newReminder(const char* title) {
    NewReminder reminder;
    reminder.title = QString::fromUtf8(title);
    return reminder;
}

class ReminderStoreChanges : public ReminderStoreTest {
  protected:
    /// The result of an operation, after all of its consequences.
    template <typename Change>
    std::optional<Code> outcome(Change change) {
        ended = {};
        change(ended);
        EXPECT_EQ(ended.calls, 0) << "never from within the call";
        scheduler.advance(1s);
        EXPECT_EQ(ended.calls, 1);
        return ended.error ? std::optional(ended.error->code) : std::nullopt;
    }
    std::optional<Code> create(const NewReminder& reminder) {
        return outcome([&](Outcome& end) { store->create(reminder, end.creation()); });
    }
    /// The list a new reminder went to.
    QString listOf(const NewReminder& reminder) {
        EXPECT_EQ(create(reminder), done);
        return database.reminder(ended.id)->calendarIdentifier;
    }
    std::optional<Code> edit(const ReminderEditDetails& details, std::optional<ReminderRepeat> repeat = {}) {
        return outcome([&](Outcome& end) { store->edit(a, details, repeat, end.completion()); });
    }
    std::optional<Code> rename(const char* title) {
        return outcome([&](Outcome& end) { store->rename(a, QString::fromUtf8(title), end.completion()); });
    }
    std::optional<Code> reschedule(Instant due, bool timed) {
        return outcome([&](Outcome& end) { store->reschedule(a, due, timed, end.completion()); });
    }
    std::optional<Code> move(const char* list) {
        return outcome([&](Outcome& end) { store->move(a, QString::fromUtf8(list), end.completion()); });
    }
    std::optional<Code> remove() {
        return outcome([&](Outcome& end) { store->remove(a, end.completion()); });
    }
    void dropLists() {
        database.dropCalendar(QStringLiteral("list"));
        database.dropCalendar(QStringLiteral("other"));
    }

    static std::vector<Instant> ringing(const EKReminderData& reminder) {
        std::vector<Instant> result;
        for (const EKAlarm& alarm : reminder.alarms)
            result.push_back(alarm.absoluteDate.value());
        return result;
    }

    Outcome ended;
};

TEST_F(ReminderStoreChanges, ANewReminderIsWrittenAnnouncedAndRevealed) {
    loadedStore();
    int announced = 0;
    const Subscription observing =
        notifications.observe(QStringLiteral("kestrantReminderCreated"), [&] { ++announced; });
    std::vector<QString> revealed;
    QObject::connect(&*store, &ReminderStore::revealRequested, &*store,
                     [&](const ReminderRevealRequest& request) {
                         EXPECT_NE(store->task(request.reminderID), nullptr) << "its card is there";
                         revealed.push_back(request.reminderID);
                     });
    NewReminder reminder = newReminder("  Call the plumber\n");
    reminder.dueDate = paris({2026, 3, 29}, {9, 0}) + 30s;
    reminder.dueDateIncludesTime = true;
    reminder.dueAlertSchedule = RelativeToDueTime{-900};
    reminder.priority = NewReminderPriority::high;
    ASSERT_EQ(create(reminder), done);
    const EKReminderData written = *database.reminder(ended.id);
    EXPECT_EQ(written.title, QStringLiteral("Call the plumber"));
    EXPECT_EQ(written.priority, 1);
    EXPECT_EQ(written.calendarIdentifier, QStringLiteral("list"));
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDateTime({2026, 3, 29}, {9, 0}));
    EXPECT_THAT(ringing(written), ElementsAre(paris({2026, 3, 29}, {8, 45})));
    EXPECT_EQ(announced, 1);
    EXPECT_THAT(revealed, ElementsAre(ended.id));
    EXPECT_THAT(visibleIDs(), ElementsAre(ended.id.toStdString()));
}

TEST_F(ReminderStoreChanges, ACreationThatMakesNoSenseIsRefused) {
    loadedStore();
    EXPECT_EQ(create(newReminder(" \n\t ")), Code::emptyTitle);
    NewReminder timeOnly = newReminder("x");
    timeOnly.dueDateIncludesTime = true;
    EXPECT_EQ(create(timeOnly), Code::dueDateRequired);
    NewReminder alertOnly = newReminder("x");
    alertOnly.dueAlertSchedule = DayRelativeToDueDate{0, 9, 0};
    EXPECT_EQ(create(alertOnly), Code::dueDateRequired);
    NewReminder repeatOnly = newReminder("x");
    repeatOnly.repeat = ReminderRepeat::daily;
    EXPECT_EQ(create(repeatOnly), Code::repeatRequiresDueDate);
    database.setFailure(Operation::save, diskFull());
    EXPECT_EQ(create(newReminder("x")), Code::database);
    EXPECT_THAT(database.reminders(), IsEmpty());
}

TEST(ListForNewReminder, TakesTheFirstCandidateThatIsFound) {
    const auto list = [](const char* id, bool writable) {
        return EKCalendar{.calendarIdentifier = QString::fromUtf8(id),
                          .allowsContentModifications = writable};
    };
    const EKCalendar locked = list("locked", false);
    const EKCalendar first = list("first", true);
    const EKCalendar second = list("second", true);
    const std::vector lists{locked, first, second};
    const auto id = [](const char* text) { return std::optional(QString::fromUtf8(text)); };
    EXPECT_EQ(listForNewReminder(id("second"), id("first"), first, lists), second);
    EXPECT_EQ(listForNewReminder(id("gone"), id("second"), first, lists), second);
    EXPECT_EQ(listForNewReminder({}, id("gone"), second, lists), second);
    EXPECT_EQ(listForNewReminder({}, {}, locked, lists), first);
    EXPECT_EQ(listForNewReminder({}, {}, {}, lists), first);
    EXPECT_EQ(listForNewReminder({}, {}, locked, {locked}), std::nullopt);
    EXPECT_EQ(listForNewReminder(id("locked"), {}, first, lists), locked) << "the database will say no";
}

TEST_F(ReminderStoreChanges, TheSelectedListIsPreferredToTheDefaultOneWhileItExists) {
    putList("third");
    defaults.set(preferenceKeys::defaultReminderListID, QStringLiteral("other"));
    loadedStore();
    EXPECT_EQ(listOf(newReminder("x")), QStringLiteral("other"));
    store->setSelectedListID(QStringLiteral("third"));
    EXPECT_EQ(listOf(newReminder("x")), QStringLiteral("third"));
    NewReminder chosen = newReminder("x");
    chosen.listID = QStringLiteral("list");
    EXPECT_EQ(listOf(chosen), QStringLiteral("list"));
    database.dropCalendar(QStringLiteral("third"));
    EXPECT_EQ(listOf(newReminder("x")), QStringLiteral("other"));
}

TEST_F(ReminderStoreChanges, WhereThereIsNoListOneIsMadeForAllWhoNeedIt) {
    dropLists();
    preferences.setLanguage(Language::french);
    loadedStore();
    Outcome second;
    EXPECT_EQ(outcome([&](Outcome& first) {
                  store->create(newReminder("x"), first.creation());
                  store->create(newReminder("y"), second.creation());
              }),
              done);
    EXPECT_TRUE(second.succeeded());
    ASSERT_EQ(store->lists().size(), 1U);
    EXPECT_EQ(store->lists().front().title, QStringLiteral("Rappels"));
    EXPECT_EQ(store->tasks().size(), 2U);
}

TEST_F(ReminderStoreChanges, AFirstListThatCannotBeMadeIsToldWithItsReason) {
    dropLists();
    database.setFailure(Operation::saveCalendar, diskFull());
    loadedStore();
    ASSERT_EQ(create(newReminder("x")), Code::unableToCreateInitialList);
    EXPECT_EQ(ended.error->message(),
              text("Kestrant couldn’t create the first list in your reminders. The disk is full.",
                   "Kestrant n’a pas pu créer la première liste dans vos rappels. Le disque est plein."));
}

TEST_F(ReminderStoreChanges, AnEditThatChangesNothingWritesNothing) {
    EKReminderData unusual = aReminder("a")
                                 .titled(QStringLiteral("  spaced "))
                                 .due({2026, 3, 29}, {9, 0, 30}, "America/New_York")
                                 .starting({2026, 4, 1}, {9, 0})
                                 .alarmAt(at("America/New_York", {2026, 3, 29}, {8, 0, 30}))
                                 .notes(QStringLiteral("n"));
    unusual.alarms.push_back(EKAlarm{.relativeOffset = -5min});
    put(unusual);
    const EKReminderData before = stored("a");
    const auto details = loadedStore().editDetails(a);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->dueAlertSchedule, ReminderAlertSchedule(RelativeToDueTime{-3600}));
    EXPECT_EQ(edit(*details), done);
    EXPECT_EQ(stored("a"), before);
}

TEST_F(ReminderStoreChanges, AnEditWritesEveryDetail) {
    put(aReminder("a")
            .due({2026, 3, 29}, {9, 0})
            .alarmAt(paris({2026, 3, 29}, {8, 45}))
            .notes(QStringLiteral("n")));
    ReminderEditDetails details = *loadedStore().editDetails(a);
    details.title = QStringLiteral(" New title ");
    details.dueDate = paris({2026, 4, 1}, {23, 30});
    details.dueDateIncludesTime = false;
    details.dueAlertSchedule = DayRelativeToDueDate{0, 7, 30};
    details.priority = 9;
    details.listID = QStringLiteral("other");
    details.notes.clear();
    EXPECT_EQ(edit(details), done);
    const EKReminderData written = stored("a");
    EXPECT_EQ(written.title, QStringLiteral("New title"));
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDate({2026, 4, 1}));
    EXPECT_THAT(ringing(written), ElementsAre(paris({2026, 4, 1}, {7, 30})));
    EXPECT_EQ(written.priority, 9);
    EXPECT_EQ(written.calendarIdentifier, QStringLiteral("other"));
    EXPECT_EQ(written.notes, std::nullopt);
}

TEST_F(ReminderStoreChanges, ARefusedChangeWritesNothingAndLeavesTheCard) {
    put(aReminder("a"));
    const EKReminderData before = stored("a");
    putList("locked", false);
    const ReminderEditDetails good = *loadedStore().editDetails(a);
    ReminderEditDetails untitled = good;
    untitled.title = QStringLiteral(" ");
    ReminderEditDetails alertOnly = good;
    alertOnly.dueAlertSchedule = RelativeToDueTime{0};
    ReminderEditDetails nowhere = good;
    nowhere.listID = QStringLiteral("gone");
    EXPECT_EQ(edit(untitled), Code::emptyTitle);
    EXPECT_EQ(rename("\t"), Code::emptyTitle);
    EXPECT_EQ(edit(alertOnly), Code::dueDateRequired);
    EXPECT_EQ(edit(nowhere), Code::listUnavailable);
    EXPECT_EQ(edit(good, ReminderRepeat::daily), Code::repeatRequiresDueDate);
    EXPECT_EQ(move("gone"), Code::listUnavailable);
    EXPECT_EQ(move("locked"), Code::database);
    database.setFailure(Operation::save, diskFull());
    EXPECT_EQ(rename("x"), Code::database);
    database.setFailure(Operation::remove, diskFull());
    EXPECT_EQ(remove(), Code::database);
    EXPECT_EQ(stored("a"), before);
    ASSERT_NE(store->task(a), nullptr);
    EXPECT_EQ(store->task(a)->title, a);
}

TEST_F(ReminderStoreChanges, SmallChangesReachTheDatabaseAndTheScreen) {
    put(aReminder("a"));
    loadedStore();
    EXPECT_EQ(rename(" x "), done);
    EXPECT_EQ(move("other"), done);
    ASSERT_NE(store->task(a), nullptr);
    EXPECT_EQ(store->task(a)->title, QStringLiteral("x"));
    EXPECT_EQ(store->task(a)->listID, QStringLiteral("other"));
    EXPECT_EQ(remove(), done);
    EXPECT_THAT(visibleIDs(), IsEmpty());
    EXPECT_EQ(rename("y"), Code::reminderNotFound);
    EXPECT_EQ(remove(), Code::reminderNotFound);
    EXPECT_EQ(store->editDetails(a), std::nullopt);
}

TEST_F(ReminderStoreChanges, AnotherDueDateTakesTheAlertAlongAndKeepsItsZone) {
    put(aReminder("a")
            .due({2026, 3, 28}, {9, 0}, "America/New_York")
            .starting({2026, 3, 20}, {9, 0})
            .alarmAt(at("America/New_York", {2026, 3, 28}, {8, 0}))
            .alarmAt(paris({2026, 3, 1})));
    loadedStore();
    EXPECT_EQ(reschedule(paris({2026, 4, 2}, {18, 0}), true), done);
    EKReminderData written = stored("a");
    EXPECT_EQ(written.dueDateComponents,
              DateComponents::fromDateTime({2026, 4, 2}, {12, 0}, TimeZone::named("America/New_York")));
    EXPECT_THAT(ringing(written), ElementsAre(paris({2026, 4, 2}, {17, 0}), paris({2026, 3, 1})));
    EXPECT_EQ(written.startDateComponents, DateComponents::fromDateTime({2026, 3, 20}, {9, 0}));

    EXPECT_EQ(reschedule(paris({2026, 3, 10}), false), done);
    written = stored("a");
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDate({2026, 3, 10}));
    EXPECT_EQ(written.startDateComponents, written.dueDateComponents) << "it cannot start after it is due";
}

TEST_F(ReminderStoreChanges, AnotherDueDateMayComeWithAnotherAlert) {
    put(aReminder("a").due({2026, 3, 28}, {9, 0}).alarmAt(paris({2026, 3, 28}, {8, 0})));
    loadedStore();
    const auto rescheduleWith = [&](const std::optional<ReminderAlertSchedule>& alert) {
        return outcome([&](Outcome& end) {
            store->reschedule(a, paris({2026, 3, 11}), false, alert, end.completion());
        });
    };
    EXPECT_EQ(rescheduleWith(DayRelativeToDueDate{-1, 18, 0}), done);
    EXPECT_THAT(ringing(stored("a")), ElementsAre(paris({2026, 3, 10}, {18, 0})));
    EXPECT_EQ(rescheduleWith(std::nullopt), done);
    EXPECT_THAT(stored("a").alarms, IsEmpty());
}

TEST_F(ReminderStoreChanges, AReminderRepeatsFromItsDueDateOnAsChosen) {
    const std::vector<EKRecurrenceRule> own = {EKRecurrenceRule::parse(QStringLiteral("FREQ=DAILY;COUNT=3"))};
    const std::vector<EKRecurrenceRule> weekly = {EKRecurrenceRule::every(EKRecurrenceFrequency::weekly)};
    put(aReminder("a").due({2026, 3, 29}).repeating(own.front().text));
    ReminderEditDetails details = *loadedStore().editDetails(a);
    EXPECT_EQ(store->recurrenceRules(a), own);
    details.title = QStringLiteral("x");
    EXPECT_EQ(edit(details), done);
    EXPECT_EQ(stored("a").recurrenceRules, own) << "not asked to change them";
    EXPECT_EQ(edit(details, ReminderRepeat::weekly), done);
    EXPECT_EQ(stored("a").recurrenceRules, weekly);
    EXPECT_EQ(stored("a").startDateComponents, stored("a").dueDateComponents) << "what others count from";
    EXPECT_EQ(store->task(a)->recurrenceRules, weekly);
    EXPECT_EQ(edit(details, ReminderRepeat::none), done);
    EXPECT_FALSE(store->task(a)->isRecurring());

    NewReminder reminder = newReminder("new");
    reminder.dueDate = paris({2026, 3, 29});
    reminder.repeat = ReminderRepeat::weekly;
    EXPECT_EQ(create(reminder), done);
    EXPECT_EQ(database.reminder(ended.id)->recurrenceRules, weekly);
}

TEST_F(ReminderStoreChanges, WithoutADueDateThereIsNoAlertAndNoRepetition) {
    EKAlarm place = EKAlarm::at(paris({2026, 3, 29}, {8, 45}));
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    EKReminderData reminder =
        aReminder("a").due({2026, 3, 29}, {9, 0}).alarmAt(paris({2026, 3, 29}, {8, 45}));
    reminder.alarms.push_back(place);
    reminder.recurrenceRules = recurrenceRules(ReminderRepeat::daily);
    put(reminder);
    loadedStore();
    EXPECT_EQ(outcome([&](Outcome& end) { store->clearDueDate(a, end.completion()); }), done);
    EXPECT_EQ(stored("a").dueDateComponents, std::nullopt);
    ASSERT_EQ(stored("a").alarms.size(), 1U);
    EXPECT_EQ(stored("a").alarms.front().structuredLocation, place.structuredLocation);
    EXPECT_THAT(stored("a").recurrenceRules, IsEmpty());
}

}  // namespace
}  // namespace kestrant
