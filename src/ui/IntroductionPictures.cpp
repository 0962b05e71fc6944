#include "ui/PictureState.h"

#include <array>
#include <map>

namespace kestrant {
namespace {

/// A year in which reminders were completed.
void completeReminders(Stage& stage) {
    const std::array counts{9, 14, 11, 21, 17, 26, 12, 8, 23, 31, 19};
    std::map<QString, ReminderCompletionState> states;
    for (std::size_t month = 0; month < counts.size(); ++month) {
        for (int number = 0; number < counts[month]; ++number) {
            const QDate day(2026, int(month) + 1, 1 + number % 20);
            states.emplace(
                QStringLiteral("%1-%2").arg(month).arg(number),
                ReminderCompletionState::completed(stage.calendar.calendar().instantAt(day, QTime(12, 0))));
        }
    }
    if (!stage.ledger.reconcile(states, {}, stage.time.now()))
        qWarning("cannot write the record of completions");
}

}  // namespace

std::vector<PictureState> introductionPictures() {
    const auto named = [](const char* name) { return QString::fromUtf8(name); };
    return {
        {named("settings"), expanded([](Stage& stage) { stage.call("openSettings"); })},
        {named("settings-folder"), expanded([](Stage& stage) {
             stage.call("openSettings");
             stage.settings.dataStore()->chooseFolder(QStringLiteral("~/calendars"));
             QCoreApplication::processEvents();
             // Round to the last of the settings.
             stage.press(Qt::Key_Backtab);
             QCoreApplication::processEvents();
         })},
        {named("year-reveal"),
         [](Stage& stage) {
             stage.addReminders();
             stage.load();
             completeReminders(stage);
             stage.interaction.setInitialYearRevealIsArmed(true);
             stage.expand();
         }},
        {named("year-reveal-black"),
         [](Stage& stage) {
             stage.preferences.setNotchMaterial(QStringLiteral("black"));
             completeReminders(stage);
             stage.interaction.setInitialYearRevealIsArmed(true);
             stage.expand();
         }},
        {named("year-reveal-empty"),
         [](Stage& stage) {
             stage.interaction.setInitialYearRevealIsArmed(true);
             stage.expand();
         }},
        {named("first-tip"),
         expanded([](Stage& stage) { stage.preferences.setInitialCommandNTipPending(true); })},
        {named("onboarding-welcome"),
         [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::welcome); }},
        {named("onboarding-tutorial"),
         [](Stage& stage) {
             stage.introduce(OnboardingViewModel::Page::tutorial);
             OnboardingViewModel& model = *stage.onboarding.model();
             model.pointAtNotch(true);
             model.clickNotch();
             model.press(OnboardingViewModel::Gesture::newReminder);
         }},
        {named("onboarding-tutorial-hovering"),
         [](Stage& stage) {
             stage.preferences.setRequiresClickOrSwipeToExpand(true);
             stage.introduce(OnboardingViewModel::Page::tutorial);
             stage.onboarding.model()->pointAtNotch(true);
         }},
        {named("onboarding-panel"), [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::panel); }},
        {named("onboarding-panel-black"),
         [](Stage& stage) {
             stage.preferences.setNotchMaterial(QStringLiteral("black"));
             stage.preferences.setModuleOrder(KestrantModuleOrder::calendarFirst);
             stage.preferences.setLayoutRatio(KestrantLayoutRatio::r50_50);
             stage.introduce(OnboardingViewModel::Page::panel);
         }},
        {named("onboarding-habits"),
         [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::habits); }},
        {named("onboarding-habits-folder"),
         [](Stage& stage) {
             stage.introduce(OnboardingViewModel::Page::habits);
             stage.settings.dataStore()->setKind(QStringLiteral("folder"));
             stage.settings.dataStore()->chooseFolder(QStringLiteral("calendars"));
         }},
        {named("onboarding-ready"), [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::ready); }},
        {named("large-text"), expanded([](Stage& stage) {
             stage.appearance.setTextScale(1.5);
             stage.call("openSettings");
         })},
        {named("onboarding-high-contrast"),
         [](Stage& stage) {
             stage.appearance.setHighContrast(true);
             stage.appearance.setShowsFocus(true);
             stage.introduce(OnboardingViewModel::Page::panel);
         }},
    };
}

}  // namespace kestrant
