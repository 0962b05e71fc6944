#include "pictures/Picture.h"

#include <array>
#include <map>

namespace kestrant {

void completeReminders(Stage& stage) {
    const TimeZone zone = stage.currentZone.zone();
    const QDate today = zone.dayOf(stage.time.now());
    std::map<QString, ReminderCompletionState> states;
    std::uint32_t random = 20'261'121;
    for (QDate day(2025, 9, 3); day < today; day = day.addDays(1)) {
        random = random * 1'664'525 + 1'013'904'223;
        const std::array most{4, 6, 4, 4, 5, 2, 2};
        const int count = int(random >> 16) % (most[std::size_t(day.dayOfWeek() - 1)] + 1);
        for (int number = 0; number < count; ++number) {
            const QTime time(7 + (number * 5 + day.day()) % 14, day.day());
            states.emplace(QStringLiteral("%1-%2").arg(day.toJulianDay()).arg(number),
                           ReminderCompletionState::completed(zone.instantAt(day, time)));
        }
    }
    if (!stage.ledger.reconcile(states, {}, stage.time.now()))
        qWarning("cannot write the record of completions");
    struct Done {
        const char* english;
        const char* french;
        QTime time;
    };
    const auto lists = stage.database.calendars(EKEntityType::reminder);
    if (lists.empty())
        return;
    std::size_t list = 0;
    for (const Done& each :
         {Done{"Water the plants", "Arroser les plantes", QTime(7, 40)},
          Done{"Print the form for the residence permit", "Imprimer le formulaire du titre de séjour",
               QTime(8, 15)},
          Done{"Answer the landlord", "Répondre au propriétaire", QTime(12, 30)},
          Done{"Oat milk, basil, lemons", "Lait d’avoine, basilic, citrons", QTime(14, 22)}}) {
        EKReminderData data;
        data.title = stage.localizer(text(each.english, each.french));
        data.calendarIdentifier = lists[list++ % lists.size()].calendarIdentifier;
        data.isCompleted = true;
        data.completionDate = zone.instantAt(today, each.time);
        stage.database.putReminder(data);
    }
}

namespace {

/// The recap of that year, at one of its views.
std::function<void(Stage&)> recap(
    const char* view, std::function<void(Stage&)> then = [](Stage&) {}) {
    return [view, then = std::move(then)](Stage& stage) {
        stage.addReminders();
        completeReminders(stage);
        stage.load();
        stage.time.advance(std::chrono::seconds(1));
        stage.expand();
        stage.recap.open();
        stage.recap.setView(QString::fromUtf8(view));
        stage.time.advance(Duration(0));
        stage.view.grabWindow();
        then(stage);
        QCoreApplication::processEvents();
    };
}

/// The year that is shown after the introduction.
std::function<void(Stage&)> yearReveal(const char* material) {
    return [material](Stage& stage) {
        stage.preferences.notchMaterial.set(QString::fromUtf8(material));
        stage.addReminders();
        completeReminders(stage);
        stage.load();
        stage.time.advance(std::chrono::seconds(1));
        stage.interaction.setInitialYearRevealIsArmed(true);
        stage.expand();
    };
}

}  // namespace

std::vector<Picture> recapPictures() {
    const auto named = [](const char* name) { return QString::fromUtf8(name); };
    return {
        {named("recap"), recap("overview")},
        {named("recap-day"), recap("day")},
        {named("recap-week"), recap("week")},
        {named("recap-month"), recap("month",
                                     [](Stage& stage) {
                                         stage.moveMouseTo({432, 180});
                                     })},
        {named("recap-year"), recap("year")},
        {named("recap-year-before"), recap("year", [](Stage& stage) { stage.recap.showPrevious(); })},
        {named("recap-focus"), recap("month",
                                     [](Stage& stage) {
                                         stage.appearance.setShowsFocus(true);
                                         stage.press(Qt::Key_Down);
                                         stage.press(Qt::Key_Left);
                                         stage.press(Qt::Key_Left);
                                     })},
        {named("recap-camera"), recap("week",
                                      [](Stage& stage) {
                                          stage.recap.close();
                                          Screen screen = stage.geometry.screen();
                                          screen.topSafeAreaInset = 32;
                                          stage.geometry.update(screen);
                                          stage.recap.open();
                                          stage.recap.setView(QStringLiteral("week"));
                                      })},
        {named("recap-high-contrast"), recap("overview",
                                             [](Stage& stage) {
                                                 stage.appearance.setHighContrast(true);
                                                 stage.appearance.setShowsFocus(true);
                                             })},
        {named("recap-large-text"), recap("week", [](Stage& stage) { stage.appearance.setTextScale(1.5); })},
        {named("recap-share"), recap("week", [](Stage& stage) { stage.call("openRecapShare"); })},
        {named("recap-share-year"), recap("year", [](Stage& stage) { stage.call("openRecapShare"); })},
        {named("recap-share-links"),
         recap("week",
               [](Stage& stage) {
                   stage.call("openRecapShare");
                   stage.overlayContent("recapShare")->setProperty("showsLinks", true);
               })},
        {named("recap-empty"), expanded([](Stage& stage) { stage.recap.open(); })},
        {named("recap-month-empty"), expanded([](Stage& stage) {
             stage.recap.open();
             stage.recap.setView(QStringLiteral("month"));
         })},
        {named("celebration"), recap("overview",
                                     [](Stage& stage) {
                                         stage.recap.close();
                                         stage.celebration.show({CelebrationReason::dayDone, 7, 7});
                                     })},
        {named("announcement"), expanded([](Stage& stage) {
             // Installed long ago.
             stage.preferences.announcementInstallationDate.set(1.0);
             stage.interaction.collapse(false);
             stage.interaction.expand();
             stage.time.advance(std::chrono::seconds(1));
         })},
        {named("year-reveal"), yearReveal("glass")},
        {named("year-reveal-black"), yearReveal("black")},
        {named("year-reveal-empty"),
         [](Stage& stage) {
             stage.interaction.setInitialYearRevealIsArmed(true);
             stage.expand();
         }},
    };
}

}  // namespace kestrant
