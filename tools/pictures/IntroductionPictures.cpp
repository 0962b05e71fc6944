#include "pictures/Picture.h"

namespace kestrant {
namespace {

using Exercise = OnboardingViewModel::Exercise;

/// The page on which things are tried out, with the panel open and these done.
void tryOut(Stage& stage, std::initializer_list<Exercise> done) {
    stage.introduce(OnboardingViewModel::Page::tutorial);
    stage.onboarding.model()->clickNotch();
    for (const Exercise exercise : done)
        stage.onboarding.model()->noteTried(exercise);
    QCoreApplication::processEvents();
    // Drawing is what lays out the cards.
    stage.onboarding.window()->grabWindow();
}

}  // namespace

std::vector<Picture> introductionPictures() {
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
        {named("first-tip"),
         expanded([](Stage& stage) { stage.preferences.initialCommandNTipPending.set(true); })},
        {named("onboarding-welcome"),
         [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::welcome); }},
        {named("onboarding-tutorial"),
         [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::tutorial); }},
        {named("onboarding-tutorial-completing"),
         [](Stage& stage) {
             tryOut(stage, {});
             RemindersViewModel& reminders = *stage.onboarding.trial()->reminders();
             reminders.toggleCompletion(reminders.cards()->taskIdAt(2));
         }},
        {named("onboarding-tutorial-dragging"),
         [](Stage& stage) {
             tryOut(stage, {Exercise::complete});
             stage.dragInIntroduction({200, 90}, {620, 80});
         }},
        {named("onboarding-tutorial-menu"),
         [](Stage& stage) {
             tryOut(stage, {Exercise::complete, Exercise::drag});
             stage.clickInIntroduction({210, 50}, Qt::RightButton);
         }},
        {named("onboarding-tutorial-adding"),
         [](Stage& stage) {
             tryOut(stage, {Exercise::complete, Exercise::drag, Exercise::menu});
             stage.onboarding.trial()->addReminder();
             QCoreApplication::processEvents();
         }},
        {named("onboarding-tutorial-all"),
         [](Stage& stage) {
             tryOut(stage,
                    {Exercise::complete, Exercise::drag, Exercise::menu, Exercise::add, Exercise::undo});
         }},
        {named("onboarding-panel"), [](Stage& stage) { stage.introduce(OnboardingViewModel::Page::panel); }},
        {named("onboarding-panel-black"),
         [](Stage& stage) {
             stage.preferences.notchMaterial.set(QStringLiteral("black"));
             stage.preferences.moduleOrder.set(KestrantModuleOrder::calendarFirst);
             stage.preferences.layoutRatio.set(KestrantLayoutRatio::r50_50);
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
