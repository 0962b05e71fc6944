#include "pictures/Picture.h"

namespace kestrant {
namespace {

const TextPair slides =
    text("Review slides for Tuesday’s planning", "Relire les diapos de la réunion de mardi");
const TextPair knives = text("Sharpen the kitchen knives", "Aiguiser les couteaux de cuisine");
const TextPair lease = text("Send the signed lease back to Maren", "Renvoyer le bail signé à Maren");

/// The identifier of the reminder with this title.
QString idOf(const Stage& stage, const TextPair& title) {
    for (const ReminderTask& task : stage.reminderStore.tasks()) {
        if (task.title == title.in(stage.localizer.language()))
            return task.id;
    }
    return {};
}

int rowOf(Stage& stage, const TextPair& title) {
    return stage.reminders.cards()->rowOf(idOf(stage, title));
}

void callFor(Stage& stage, const char* function, const TextPair& title) {
    QMetaObject::invokeMethod(stage.content(), function, Q_ARG(QVariant, rowOf(stage, title)));
    QCoreApplication::processEvents();
}

/// Opens the menu of a card and chooses an entry, counted from 1.
void chooseForCard(Stage& stage, const TextPair& title, int entry) {
    QMetaObject::invokeMethod(stage.content(), "openCardMenu", Q_ARG(QVariant, rowOf(stage, title)),
                              Q_ARG(QVariant, 120), Q_ARG(QVariant, 40));
    QCoreApplication::processEvents();
    for (int press = 0; press < entry; ++press)
        stage.press(Qt::Key_Down);
    stage.press(Qt::Key_Return);
    QCoreApplication::processEvents();
}

void letReload(Stage& stage) {
    stage.time.advance(std::chrono::milliseconds(400));
}

}  // namespace

std::vector<Picture> reminderPictures() {
    const auto named = [](const char* name) { return QString::fromUtf8(name); };
    return {
        {named("quick-add-understood"), expanded([](Stage& stage) {
             stage.call("openQuickAdd");
             stage.type(stage.localizer(
                 text("Call the plumber tomorrow 9am !! #home", "Appeler le plombier demain 9h !! #maison")));
             stage.quickAdd.setRepeatId(QStringLiteral("weekly"));
         })},
        {named("quick-add-offered"), expanded([](Stage& stage) {
             stage.call("openQuickAdd");
             stage.type(stage.localizer(text("Class with Kenji mon and thu at 8am Tokyo time",
                                             "Cours avec Kenji lundi et jeudi à 8h heure de Tokyo")));
         })},
        {named("edit-repeating"), expanded([](Stage& stage) {
             EKReminderRef reminder = stage.database.calendarItem(idOf(stage, slides));
             reminder->data.recurrenceRules = {
                 EKRecurrenceRule::parse(QStringLiteral("FREQ=WEEKLY;BYDAY=TU,TH;UNTIL=20270331"))};
             stage.database.save(reminder, [](const auto&) {});
             letReload(stage);
             callFor(stage, "editCard", slides);
         })},
        {named("edit-repeat-choices"), expanded([](Stage& stage) {
             callFor(stage, "editCard", slides);
             for (int tab = 0; tab < 4; ++tab)
                 stage.press(Qt::Key_Tab);
             stage.press(Qt::Key_Space);
             stage.press(Qt::Key_Down);
         })},
        {named("edit-undated"), expanded([](Stage& stage) { callFor(stage, "editCard", knives); })},
        {named("due"), expanded([](Stage& stage) { callFor(stage, "editDueDate", slides); })},
        {named("due-all-day"), expanded([](Stage& stage) {
             callFor(stage, "editDueDate", lease);
             stage.press(Qt::Key_PageDown);
             stage.reminderEdit.alert()->setId(QStringLiteral("day -1"));
             stage.reminderEdit.alert()->setTime(QStringLiteral("18:30"));
         })},
        {named("due-failed"), expanded([](Stage& stage) {
             callFor(stage, "editDueDate", lease);
             stage.press(Qt::Key_Right);
             stage.reminderEdit.setDueTime(QStringLiteral("25"));
             stage.press(Qt::Key_Return);
         })},
        {named("move-to-list"), expanded([](Stage& stage) {
             chooseForCard(stage, slides, 4);
             stage.press(Qt::Key_Down);
         })},
        {named("undo-offer"), expanded([](Stage& stage) {
             stage.reminders.remove(idOf(stage, slides));
             letReload(stage);
         })},
        {named("undo-failed"), expanded([](Stage& stage) {
             stage.reminders.remove(idOf(stage, slides));
             letReload(stage);
             stage.database.setFailure(InMemoryEventStore::Operation::revert,
                                       EKError{EKError::Code::storage, text("Full.", "Plein.")});
             stage.history.undo();
             letReload(stage);
         })},
        {named("flagged"), expanded([](Stage& stage) { stage.reminders.setShowsFlaggedOnly(true); })},
        {named("flags-failed"), expanded([](Stage& stage) {
             stage.scripts.fail();
             stage.reminderStore.reloadFlags();
             letReload(stage);
             stage.reminders.setShowsFlaggedOnly(true);
         })},
        {named("feedback"), expanded([](Stage& stage) {
             stage.call("openSettings");
             QMetaObject::invokeMethod(stage.overlayContent("settings")
                                           ->findChild<QQuickItem*>(QStringLiteral("settings.feedback")),
                                       "clicked");
             QCoreApplication::processEvents();
             stage.type(stage.localizer(text("The month view could show week numbers.",
                                             "La vue du mois pourrait afficher les semaines.")));
         })},
    };
}

}  // namespace kestrant
