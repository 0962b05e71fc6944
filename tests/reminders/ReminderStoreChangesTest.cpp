#include "ReminderStoreFixture.h"
#include "reminders/ReminderConversion.h"

namespace kestrant {
namespace {

using Code = ReminderStoreError::Code;
using Operation = InMemoryEventStore::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

const QString a = QStringLiteral("a");

NewReminder newReminder(const char* title) {
    NewReminder reminder;
    reminder.title = QString::fromUtf8(title);
    return reminder;
}

class ReminderStoreChanges : public ReminderStoreTest {
  protected:
    EKReminderData created(const NewReminder& reminder) {
        Outcome outcome;
        store->create(reminder, outcome.creation());
        scheduler.runPosted();
        EXPECT_TRUE(outcome.succeeded());
        return *database.reminder(outcome.id);
    }
    std::optional<Code> refusal(const NewReminder& reminder) {
        Outcome outcome;
        store->create(reminder, outcome.creation());
        EXPECT_EQ(outcome.calls, 0) << "never from within the call";
        scheduler.advance(1s);
        EXPECT_EQ(outcome.calls, 1);
        return outcome.error ? std::optional(outcome.error->code) : std::nullopt;
    }
    std::optional<Code> edited(const ReminderEditDetails& details) {
        Outcome outcome;
        store->edit(a, details, outcome.completion());
        scheduler.advance(1s);
        EXPECT_EQ(outcome.calls, 1);
        return outcome.error ? std::optional(outcome.error->code) : std::nullopt;
    }
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
    const EKReminderData written = created(reminder);
    EXPECT_EQ(written.title, QStringLiteral("Call the plumber"));
    EXPECT_EQ(written.priority, 1);
    EXPECT_EQ(written.calendarIdentifier, QStringLiteral("list"));
    EXPECT_EQ(written.dueDateComponents,
              (DateComponents{.year = 2026, .month = 3, .day = 29, .hour = 9, .minute = 0}));
    EXPECT_THAT(written.alarms, ElementsAre(EKAlarm::at(paris({2026, 3, 29}, {8, 45}))));
    EXPECT_EQ(announced, 1);
    EXPECT_THAT(revealed, ElementsAre(written.calendarItemIdentifier));
    EXPECT_THAT(visibleIDs(), ElementsAre(written.calendarItemIdentifier.toStdString()));
}

TEST_F(ReminderStoreChanges, ADateOnlyReminderIsWrittenAsADay) {
    loadedStore();
    NewReminder reminder = newReminder("x");
    reminder.dueDate = paris({2026, 3, 29}, {23, 30});
    reminder.dueAlertSchedule = DayRelativeToDueDate{-1, 9, 0};
    const EKReminderData written = created(reminder);
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDate({2026, 3, 29}));
    EXPECT_THAT(written.alarms, ElementsAre(EKAlarm::at(paris({2026, 3, 28}, {9, 0}))));
    EXPECT_EQ(written.priority, 5);
}

TEST_F(ReminderStoreChanges, ACreationThatMakesNoSenseIsRefused) {
    loadedStore();
    EXPECT_EQ(refusal(newReminder(" \n\t ")), Code::emptyTitle);
    NewReminder timeOnly = newReminder("x");
    timeOnly.dueDateIncludesTime = true;
    EXPECT_EQ(refusal(timeOnly), Code::dueDateRequired);
    NewReminder alertOnly = newReminder("x");
    alertOnly.dueAlertSchedule = DayRelativeToDueDate{0, 9, 0};
    EXPECT_EQ(refusal(alertOnly), Code::dueDateRequired);
    database.setFailure(Operation::save, diskFull());
    EXPECT_EQ(refusal(newReminder("x")), Code::database);
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
    EXPECT_EQ(listForNewReminder(id("locked"), {}, first, lists), locked)
        << "asked for by name: the database refuses";
}

TEST_F(ReminderStoreChanges, TheSelectedListIsPreferredToTheDefaultOne) {
    loadedStore().setDefaultListID(QStringLiteral("other"));
    EXPECT_EQ(created(newReminder("x")).calendarIdentifier, QStringLiteral("other"));
    store->setSelectedListID(QStringLiteral("list"));
    EXPECT_EQ(created(newReminder("x")).calendarIdentifier, QStringLiteral("list"));
    NewReminder chosen = newReminder("x");
    chosen.listID = QStringLiteral("other");
    EXPECT_EQ(created(chosen).calendarIdentifier, QStringLiteral("other"));
}

TEST_F(ReminderStoreChanges, WhereThereIsNoListOneIsMadeForAllWhoNeedIt) {
    database.dropCalendar(QStringLiteral("list"));
    database.dropCalendar(QStringLiteral("other"));
    preferences.setLanguage(Language::french);
    loadedStore();
    Outcome first;
    Outcome second;
    store->create(newReminder("x"), first.creation());
    store->create(newReminder("y"), second.creation());
    scheduler.advance(1s);
    EXPECT_TRUE(first.succeeded());
    EXPECT_TRUE(second.succeeded());
    ASSERT_EQ(store->lists().size(), 1U);
    EXPECT_EQ(store->lists().front().title, QStringLiteral("Rappels"));
    EXPECT_EQ(store->tasks().size(), 2U);
}

TEST_F(ReminderStoreChanges, AFirstListThatCannotBeMadeIsToldWithItsReason) {
    database.dropCalendar(QStringLiteral("list"));
    database.dropCalendar(QStringLiteral("other"));
    database.setFailure(Operation::saveCalendar, diskFull());
    loadedStore();
    Outcome outcome;
    store->create(newReminder("x"), outcome.creation());
    scheduler.advance(1s);
    ASSERT_TRUE(outcome.failedWith(Code::unableToCreateInitialList));
    EXPECT_EQ(outcome.error->message(),
              text("Kestrant couldn’t create the first list in Apple Reminders. The disk is full.",
                   "Kestrant n’a pas pu créer la première liste dans Apple Rappels. Le disque est plein."));
    EXPECT_EQ((ReminderStoreError{Code::unableToCreateInitialList, {}}.message().english),
              QStringLiteral("Kestrant couldn’t create the first list in Apple Reminders."));
}

TEST_F(ReminderStoreChanges, AnEditThatChangesNothingWritesNothing) {
    EKReminderData before = aReminder("a")
                                .titled(QStringLiteral("  spaced "))
                                .due({2026, 3, 29}, {9, 0, 30}, "America/New_York")
                                .starting({2026, 4, 1}, {9, 0})
                                .alarmAt(at("America/New_York", {2026, 3, 29}, {8, 0, 30}))
                                .notes(QStringLiteral("n"));
    before.alarms.front().sourceText = "BEGIN:VALARM";
    before.alarms.push_back(EKAlarm{.relativeOffset = -5min});
    put(before);
    loadedStore();
    const auto details = store->editDetails(a);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->dueAlertSchedule, ReminderAlertSchedule(RelativeToDueTime{-3600}));
    EXPECT_EQ(edited(*details), std::nullopt);
    EXPECT_EQ(stored("a"), before);
    EXPECT_EQ(store->editDetails(QStringLiteral("nobody")), std::nullopt);
}

TEST_F(ReminderStoreChanges, AnEditWritesEveryDetail) {
    put(aReminder("a")
            .due({2026, 3, 29}, {9, 0})
            .alarmAt(paris({2026, 3, 29}, {8, 45}))
            .notes(QStringLiteral("n")));
    loadedStore();
    ReminderEditDetails details = *store->editDetails(a);
    details.title = QStringLiteral(" New title ");
    details.dueDate = paris({2026, 4, 1});
    details.dueDateIncludesTime = false;
    details.dueAlertSchedule = DayRelativeToDueDate{0, 7, 30};
    details.priority = 9;
    details.listID = QStringLiteral("other");
    details.notes.clear();
    EXPECT_EQ(edited(details), std::nullopt);
    const EKReminderData written = stored("a");
    EXPECT_EQ(written.title, QStringLiteral("New title"));
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDate({2026, 4, 1}));
    EXPECT_THAT(written.alarms, ElementsAre(EKAlarm::at(paris({2026, 4, 1}, {7, 30}))));
    EXPECT_EQ(written.priority, 9);
    EXPECT_EQ(written.calendarIdentifier, QStringLiteral("other"));
    EXPECT_EQ(written.notes, std::nullopt);
    details = *store->editDetails(a);
    EXPECT_EQ(details.title, QStringLiteral("New title"));
}

TEST_F(ReminderStoreChanges, AnEditThatMakesNoSenseIsRefusedAndWritesNothing) {
    put(aReminder("a"));
    loadedStore();
    const EKReminderData before = stored("a");
    const ReminderEditDetails good = *store->editDetails(a);
    ReminderEditDetails details = good;
    details.title = QStringLiteral(" ");
    EXPECT_EQ(edited(details), Code::emptyTitle);
    details = good;
    details.dueAlertSchedule = RelativeToDueTime{0};
    EXPECT_EQ(edited(details), Code::dueDateRequired);
    details = good;
    details.listID = QStringLiteral("gone");
    EXPECT_EQ(edited(details), Code::listUnavailable);
    database.setFailure(Operation::save, diskFull());
    details = good;
    details.title = QStringLiteral("x");
    EXPECT_EQ(edited(details), Code::database);
    EXPECT_EQ(stored("a"), before);
    EXPECT_EQ(store->task(a)->title, a);
    database.dropReminder(a);
    EXPECT_EQ(edited(good), Code::reminderNotFound);
}

TEST_F(ReminderStoreChanges, AnotherDueDateTakesTheAlertAlongAndKeepsItsZone) {
    put(aReminder("a")
            .due({2026, 3, 28}, {9, 0}, "America/New_York")
            .starting({2026, 3, 20}, {9, 0})
            .alarmAt(at("America/New_York", {2026, 3, 28}, {8, 0}))
            .alarmAt(paris({2026, 3, 1})));
    loadedStore();
    Outcome outcome;
    store->reschedule(a, paris({2026, 4, 2}, {18, 0}), true, outcome.completion());
    scheduler.advance(1s);
    EXPECT_TRUE(outcome.succeeded());
    EKReminderData written = stored("a");
    EXPECT_EQ(
        written.dueDateComponents,
        (DateComponents{
            .year = 2026, .month = 4, .day = 2, .hour = 12, .minute = 0, .timeZone = "America/New_York"}));
    EXPECT_THAT(written.alarms,
                ElementsAre(EKAlarm::at(paris({2026, 3, 1})), EKAlarm::at(paris({2026, 4, 2}, {17, 0}))));
    EXPECT_EQ(written.startDateComponents, DateComponents::fromDateTime({2026, 3, 20}, {9, 0}));

    store->reschedule(a, paris({2026, 3, 10}), false, {});
    scheduler.advance(1s);
    written = stored("a");
    EXPECT_EQ(written.dueDateComponents, DateComponents::fromDate({2026, 3, 10}));
    EXPECT_EQ(written.startDateComponents, written.dueDateComponents) << "it cannot start after it is due";
}

TEST_F(ReminderStoreChanges, WithoutADueDateThereIsNoAlert) {
    EKAlarm place = EKAlarm::at(paris({2026, 3, 29}, {8, 45}));
    place.structuredLocation = EKStructuredLocation{QStringLiteral("Home")};
    EKReminderData reminder =
        aReminder("a").due({2026, 3, 29}, {9, 0}).alarmAt(paris({2026, 3, 29}, {8, 45}));
    reminder.alarms.push_back(place);
    put(reminder);
    loadedStore();
    Outcome outcome;
    store->clearDueDate(a, outcome.completion());
    scheduler.advance(1s);
    EXPECT_TRUE(outcome.succeeded());
    EXPECT_EQ(stored("a").dueDateComponents, std::nullopt);
    EXPECT_THAT(stored("a").alarms, ElementsAre(place));
}

TEST_F(ReminderStoreChanges, SmallChangesReachTheDatabaseAndTheScreen) {
    put(aReminder("a"));
    putList("locked", false);
    loadedStore();
    Outcome renamed;
    Outcome moved;
    Outcome movedNowhere;
    Outcome movedIntoLocked;
    Outcome emptied;
    store->rename(a, QStringLiteral(" x "), renamed.completion());
    scheduler.runPosted();
    store->move(a, QStringLiteral("other"), moved.completion());
    scheduler.runPosted();
    store->move(a, QStringLiteral("gone"), movedNowhere.completion());
    store->move(a, QStringLiteral("locked"), movedIntoLocked.completion());
    store->rename(a, QString(), emptied.completion());
    scheduler.runPosted();
    EXPECT_TRUE(renamed.succeeded());
    EXPECT_TRUE(moved.succeeded());
    EXPECT_TRUE(movedNowhere.failedWith(Code::listUnavailable));
    EXPECT_TRUE(movedIntoLocked.failedWith(Code::database));
    EXPECT_TRUE(emptied.failedWith(Code::emptyTitle));
    ASSERT_NE(store->task(a), nullptr);
    EXPECT_EQ(store->task(a)->title, QStringLiteral("x"));
    EXPECT_EQ(store->task(a)->listID, QStringLiteral("other"));
}

TEST_F(ReminderStoreChanges, ADeletedReminderIsGoneAndCannotBeDeletedTwice) {
    put(aReminder("a"));
    loadedStore();
    Outcome removed;
    Outcome again;
    Outcome afterwards;
    store->remove(a, removed.completion());
    store->remove(a, again.completion());
    scheduler.runPosted();
    EXPECT_TRUE(removed.succeeded());
    EXPECT_TRUE(again.failedWith(Code::reminderNotFound));
    EXPECT_THAT(visibleIDs(), IsEmpty());
    store->remove(a, afterwards.completion());
    scheduler.runPosted();
    EXPECT_TRUE(afterwards.failedWith(Code::reminderNotFound));
}

TEST_F(ReminderStoreChanges, TwoRequestsToRevealTheSameCardDiffer) {
    loadedStore().reveal(a);
    const auto first = store->reminderRevealRequest();
    store->reveal(a);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->reminderID, a);
    EXPECT_NE(first, store->reminderRevealRequest());
}

}  // namespace
}  // namespace kestrant
