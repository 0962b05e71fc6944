#include "pictures/Picture.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <chrono>

namespace kestrant {
namespace {

/// Opens the menu of a card or row at a point of it.
void openMenu(Stage& stage, const char* function, int index, QPoint at) {
    QMetaObject::invokeMethod(stage.content(), function, Q_ARG(QVariant, index), Q_ARG(QVariant, at.x()),
                              Q_ARG(QVariant, at.y()));
    // Gives the menu the keyboard focus.
    QCoreApplication::processEvents();
}

/// Chooses an entry of the menu of a calendar row, counted from 1.
void chooseForRow(Stage& stage, const TextPair& title, int entry) {
    int row = 0;
    while (stage.days.rows()->rowAt(row).title != stage.localizer(title))
        ++row;
    openMenu(stage, "openRowMenu", row, {60, 20});
    for (int press = 0; press < entry; ++press)
        stage.press(Qt::Key_Down);
    stage.press(Qt::Key_Return);
    stage.time.advance(Duration(0));
    QCoreApplication::processEvents();
}

/// Lets an event say everything that an event can say.
void fillIn(Stage& stage, const QString& identifier) {
    const EKEventRef event = stage.database.event(identifier);
    EKEventData& data = event->data;
    data.url = QStringLiteral("https://meet.example.org/piano-lesson");
    data.location = stage.localizer(text("8 Mill Lane", "8, rue du Moulin"));
    data.notes = stage.localizer(
        text("Bring the second book. The scores are at https://scores.example.org/spring",
             "Apporter le second cahier. Les partitions : https://scores.example.org/printemps"));
    data.alarms = {EKAlarm::at(data.startDate - std::chrono::minutes(15))};
    stage.database.save(event, EKSpan::thisEvent, [](const auto&) {});
    stage.time.advance(std::chrono::milliseconds(400));
}

void fillDisk(Stage& stage, InMemoryEventStore::Operation operation) {
    stage.database.setFailure(
        operation, EKError{EKError::Code::storage, text("The disk is full; nothing was written.",
                                                        "Le disque est plein ; rien n’a été écrit.")});
}

/// At rest, with as much to say as there is.
void rest(Stage& stage) {
    stage.addReminders();
    stage.load();
    stage.preferences.restingContent.set(RestingContent::everything);
    stage.show();
}

}  // namespace

std::vector<Picture> panelPictures() {
    const auto named = [](const char* name) { return QString::fromUtf8(name); };
    const TextPair visit = text("Dinner at Tomas’s", "Dîner chez Tomas");
    const TextPair slides =
        text("Review slides for Tuesday’s planning", "Relire les diapos de la réunion de mardi");
    const TextPair lesson = text("Piano lesson", "Cours de piano");
    const TextPair dinner = text("Dinner with Maren", "Dîner avec Maren");
    return {
        {named("resting"),
         [](Stage& stage) {
             stage.addReminders();
             stage.load();
             stage.show();
         }},
        {named("hovering"),
         [](Stage& stage) {
             stage.addReminders();
             stage.load();
             stage.preferences.requiresClickOrSwipeToExpand.set(true);
             stage.interaction.pointerEntered();
             stage.show();
         }},
        {named("resting-event"),
         [](Stage& stage) {
             rest(stage);
             stage.panel.resting()->setEvent(RestingEvent{
                 stage.localizer(text("Design review", "Point d’équipe")), QColor(0x3d9bff), 12});
         }},
        {named("resting-overdue"),
         [](Stage& stage) {
             rest(stage);
             stage.preferences.showCalendar.set(false);
         }},
        {named("resting-ringing"),
         [](Stage& stage) {
             rest(stage);
             stage.panel.resting()->ring(stage.card(2));
         }},
        {named("expanded"), expanded([](Stage& stage) {
             stage.moveMouseTo({600, 80});
         })},
        {named("filtered"), expanded([](Stage& stage) { stage.reminders.setShowsTodayOnly(true); })},
        {named("one-list"), expanded([](Stage& stage) {
             stage.reminders.setSelectedListId(stage.reminderStore.lists().at(2).id);
             stage.time.advance(Duration(0));
         })},
        {named("search"), expanded([](Stage& stage) {
             stage.call("openSearch");
             stage.type(QStringLiteral("re"));
         })},
        {named("completing"), expanded([](Stage& stage) {
             stage.reminders.toggleCompletion(stage.card(1));
             stage.reminders.toggleCompletion(stage.card(2));
             stage.reminders.toggleCompletion(stage.card(4));
         })},
        {named("keyboard"), expanded([](Stage& stage) {
             stage.press(Qt::Key_Right);
             stage.press(Qt::Key_Down);
         })},
        {named("scrolled"), expanded([](Stage& stage) { stage.press(Qt::Key_End); })},
        {named("narrow"), expanded(), 700},
        {named("black"),
         expanded([](Stage& stage) { stage.preferences.notchMaterial.set(QStringLiteral("black")); })},
        {named("high-contrast"), expanded([](Stage& stage) {
             stage.appearance.setHighContrast(true);
             stage.press(Qt::Key_Right);
             stage.press(Qt::Key_Left);
         })},
        {named("empty"),
         [](Stage& stage) {
             stage.database.putCalendar({.title = QStringLiteral("Home")});
             completeReminders(stage);
             stage.load();
             stage.expand();
         }},
        {named("all-done"), expanded([](Stage& stage) {
             stage.reminders.setSelectedListId(stage.reminderStore.lists().at(4).id);
             stage.reminders.setShowsTodayOnly(true);
             stage.time.advance(Duration(0));
         })},
        {named("nothing-found"),
         expanded([](Stage& stage) { stage.reminders.setSearchQuery(QStringLiteral("xylophone")); })},
        {named("loading"),
         [](Stage& stage) {
             stage.reminderStore.requestAccess();
             stage.calendarStore.requestAccess();
             stage.expand();
         }},
        {named("denied"),
         [](Stage& stage) {
             stage.database.setAuthorizationStatus(EKAuthorizationStatus::denied);
             stage.reminderStore.requestAccess();
             stage.calendarStore.requestAccess();
             stage.time.advance(Duration(0));
             stage.expand();
         }},
        {named("failed"),
         [](Stage& stage) {
             stage.database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
             stage.database.setFailure(
                 InMemoryEventStore::Operation::requestAccess,
                 EKError{EKError::Code::storage,
                         text("The folder “Reminders” cannot be read: permission denied.",
                              "Le dossier « Reminders » est illisible : permission refusée.")});
             stage.reminderStore.requestAccess();
             stage.calendarStore.requestAccess();
             stage.time.advance(Duration(0));
             stage.expand();
         }},
        {named("first-reminder"),
         [](Stage& stage) {
             stage.database.putCalendar({.title = QStringLiteral("Home")});
             stage.load();
             stage.expand();
         }},
        {named("nothing-to-show"), expanded([](Stage& stage) {
             stage.preferences.showReminders.set(false);
             stage.preferences.showCalendar.set(false);
         })},
        {named("lists"), expanded([](Stage& stage) { stage.call("openLists"); })},
        {named("sort"), expanded([](Stage& stage) { stage.call("openSort"); })},
        {named("card-menu"), expanded([](Stage& stage) {
             openMenu(stage, "openCardMenu", 5, {120, 40});
             stage.press(Qt::Key_Down);
         })},
        {named("quick-add"), expanded([](Stage& stage) {
             stage.call("openQuickAdd");
             stage.type(stage.localizer(text("Call the plumber", "Appeler le plombier")));
         })},
        {named("quick-add-date"), expanded([](Stage& stage) {
             stage.call("openQuickAdd");
             stage.quickAdd.setTitle(stage.localizer(text("Call the plumber", "Appeler le plombier")));
             stage.quickAdd.dueDay()->setIsoDay(QStringLiteral("2026-11-24"));
             stage.quickAdd.setTimeText(QStringLiteral("9:30"));
             stage.overlayContent("quickAdd")->setProperty("picksDate", true);
         })},
        {named("quick-add-failed"), expanded([](Stage& stage) {
             stage.call("openQuickAdd");
             stage.database.setFailure(
                 InMemoryEventStore::Operation::save,
                 EKError{EKError::Code::storage, text("The disk is full; nothing was written.",
                                                      "Le disque est plein ; rien n’a été écrit.")});
             stage.quickAdd.setTitle(stage.localizer(text("Call the plumber", "Appeler le plombier")));
             stage.quickAdd.submit();
             stage.time.advance(Duration(0));
         })},
        {named("calendar-first"), expanded([](Stage& stage) {
             stage.preferences.moduleOrder.set(KestrantModuleOrder::calendarFirst);
             stage.preferences.layoutRatio.set(KestrantLayoutRatio::r50_50);
         })},
        {named("calendar-only"), expanded([](Stage& stage) { stage.preferences.showReminders.set(false); })},
        {named("reminders-only"), expanded([](Stage& stage) { stage.preferences.showCalendar.set(false); })},
        {named("full-calendar"), expanded([](Stage& stage) { stage.showFullCalendar(); })},
        {named("full-calendar-only"), expanded([](Stage& stage) {
             stage.preferences.showReminders.set(false);
             stage.showFullCalendar();
         })},
        {named("calendar-scrolled"), expanded([](Stage& stage) {
             stage.focusCalendar();
             stage.press(Qt::Key_Right);
             stage.press(Qt::Key_Right);
             stage.press(Qt::Key_Right);
             stage.press(Qt::Key_Down);
         })},
        {named("calendar-empty"), expanded([](Stage& stage) {
             for (const EKEventData& event : stage.database.allEvents())
                 stage.database.dropEvent(event.calendarItemIdentifier);
             stage.preferences.showRemindersInCalendar.set(false);
             stage.time.advance(std::chrono::seconds(1));
         })},
        {named("calendar-connecting"),
         [](Stage& stage) {
             stage.addReminders();
             stage.reminderStore.requestAccess();
             stage.time.advance(Duration(0));
             stage.database.setAuthorizationStatus(EKAuthorizationStatus::notDetermined);
             stage.calendarStore.requestAccess();
             stage.expand();
         }},
        {named("calendar-denied"),
         [](Stage& stage) {
             stage.addReminders();
             stage.reminderStore.requestAccess();
             stage.time.advance(Duration(0));
             stage.database.setAuthorizationStatus(EKAuthorizationStatus::denied);
             stage.calendarStore.requestAccess();
             stage.expand();
         }},
        {named("row-menu"), expanded([](Stage& stage) {
             openMenu(stage, "openRowMenu", 4, {60, 20});
             stage.press(Qt::Key_Down);
         })},
        {named("reminder-row-menu"), expanded([](Stage& stage) {
             openMenu(stage, "openRowMenu", 5, {60, 20});
             stage.press(Qt::Key_Down);
         })},
        {named("drag"), expanded([](Stage& stage) {
             stage.drag({360, 70}, {744, 124});
         })},
        {named("drag-full-calendar"), expanded([](Stage& stage) {
             stage.showFullCalendar();
             stage.drag({360, 70}, {780, 190});
         })},
        {named("event-details"), expanded([lesson](Stage& stage) {
             for (const EKEventData& event : stage.database.allEvents()) {
                 if (event.title == stage.localizer(lesson))
                     fillIn(stage, event.eventIdentifier);
             }
             chooseForRow(stage, lesson, 2);
         })},
        {named("edit-event"), expanded([visit](Stage& stage) {
             chooseForRow(stage, visit, 1);
             stage.calendarEdit.setLocation(stage.localizer(text("8 Mill Lane", "8, rue du Moulin")));
             stage.calendarEdit.setNotes(stage.localizer(
                 text("Bring the wine and the board game.", "Apporter le vin et le jeu de société.")));
         })},
        {named("edit-event-day"), expanded([visit](Stage& stage) {
             chooseForRow(stage, visit, 1);
             stage.press(Qt::Key_Tab);
             stage.press(Qt::Key_Tab);
             stage.press(Qt::Key_Space);
             QCoreApplication::processEvents();
             stage.press(Qt::Key_Down);
         })},
        {named("edit-event-failed"), expanded([visit](Stage& stage) {
             chooseForRow(stage, visit, 1);
             stage.type(stage.localizer(text(", with Maren", ", avec Maren")));
             for (const EKEventData& event : stage.database.allEvents())
                 stage.database.dropEvent(event.calendarItemIdentifier);
             stage.press(Qt::Key_Return);
             stage.time.advance(Duration(0));
         })},
        {named("edit-reminder"), expanded([slides](Stage& stage) {
             chooseForRow(stage, slides, 2);
             stage.reminderEdit.setNotes(stage.localizer(
                 text("They are in the shared folder.", "Elles sont dans le dossier partagé.")));
         })},
        {named("delete-event"), expanded([visit](Stage& stage) { chooseForRow(stage, visit, 3); })},
        {named("delete-event-failed"), expanded([visit](Stage& stage) {
             chooseForRow(stage, visit, 3);
             fillDisk(stage, InMemoryEventStore::Operation::remove);
             stage.press(Qt::Key_Tab);
             stage.press(Qt::Key_Return);
             stage.time.advance(Duration(0));
         })},
        {named("detach-reminder"), expanded([slides](Stage& stage) { chooseForRow(stage, slides, 3); })},
        {named("quick-add-event"), expanded([dinner](Stage& stage) {
             stage.quickAdd.setType(QStringLiteral("event"));
             stage.call("openQuickAdd");
             stage.type(stage.localizer(dinner));
         })},
        {named("quick-add-event-failed"), expanded([dinner](Stage& stage) {
             stage.quickAdd.setType(QStringLiteral("event"));
             stage.call("openQuickAdd");
             stage.type(stage.localizer(dinner));
             stage.newEvent.times()->setEndTime(QStringLiteral("14:00"));
             stage.press(Qt::Key_Return);
         })},
    };
}

}  // namespace kestrant
