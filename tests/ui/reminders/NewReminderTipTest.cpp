#include "notch/NotchPanelController.h"
#include "ui/PanelProgram.h"

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

constexpr char tip[] = "Ctrl N adds a reminder from here";

/// A program that has just been introduced.
struct IntroducedProgram : PanelProgram {
    IntroducedProgram() { preferences.initialCommandNTipPending.set(true); }

    void openAgain() {
        interaction.collapse(false);
        interaction.expand();
        QCoreApplication::processEvents();
    }
};

TEST(NewReminderTip, IsShownOnceTheYearIsOverAndLeavesTheKeyboardWhereItIs) {
    IntroducedProgram program;
    program.add(QStringLiteral("tea"));
    program.interaction.setInitialYearRevealIsArmed(true);
    program.expand();
    EXPECT_FALSE(program.shows(tip));
    program.press(Qt::Key_Escape);
    EXPECT_TRUE(program.shows(tip));
    program.press(Qt::Key_Space, QStringLiteral(" "));
    EXPECT_EQ(program.reminderStore.pendingCompletionIDs().size(), 1) << "the card has the keyboard";

    program.call("openSettings");
    EXPECT_EQ(findText(program.view.contentItem(), QString::fromUtf8(tip)), nullptr)
        << "nothing shines through beside a popover";
    program.view.overlays().dismissAll();
    EXPECT_TRUE(program.shows(tip));
    program.openAgain();
    EXPECT_TRUE(program.shows(tip)) << "it was not there long enough to be read";
    EXPECT_TRUE(program.preferences.initialCommandNTipPending());
}

TEST(NewReminderTip, GoesForGoodWithAClickOnItOrWithANewReminder) {
    const struct {
        const char* name;
        void (*act)(IntroducedProgram&);
    } ways[] = {
        {"a click on it",
         [](IntroducedProgram& program) {
             program.view.grabWindow();
             QQuickItem* words = findText(program.view.contentItem(), QString::fromUtf8(tip));
             program.click(words->mapToScene({words->width() / 2, words->height() / 2}));
             EXPECT_EQ(program.view.overlays().topmost(), QString()) << "nothing beneath it is clicked";
         }},
        {"the button", [](IntroducedProgram& program) { program.click("New reminder"); }},
        {"a reminder that was made some other way",
         [](IntroducedProgram& program) {
             program.notifications.post(QStringLiteral("kestrantReminderCreated"));
         }},
        {"the keyboard",
         [](IntroducedProgram& program) { program.notifications.post(notifications::newReminder); }},
    };
    for (const auto& [name, act] : ways) {
        SCOPED_TRACE(name);
        IntroducedProgram program;
        program.expand();
        ASSERT_TRUE(program.shows(tip));
        act(program);
        EXPECT_FALSE(program.preferences.initialCommandNTipPending());
        program.openAgain();
        EXPECT_FALSE(program.shows(tip));
    }
}

}  // namespace
