#include "notch/NotchPanel.h"

#include "ScriptedPorts.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

using Phase = ScrollEvent::Phase;

ScrollEvent trackpad(double deltaY, Phase phase = Phase::changed, double deltaX = 0.0) {
    ScrollEvent event;
    event.deltaX = deltaX;
    event.deltaY = deltaY;
    event.hasPreciseDeltas = true;
    event.phase = phase;
    return event;
}

class NotchPanelTest : public ::testing::Test {
  protected:
    NotchPanelTest() {
        panel.onSwipeDown = [this] { return swipe("down"); };
        panel.onSwipeUp = [this] { return swipe("up"); };
    }
    bool swipe(const char* direction) {
        swipes << direction;
        return consumes;
    }

    ScriptedWindow window;
    NotchPanel panel{window};
    QStringList swipes;
    bool consumes = true;
};

TEST_F(NotchPanelTest, FivePointsMakeOneSwipeInAGesture) {
    EXPECT_FALSE(panel.scrollWheel(trackpad(-3.0, Phase::began)));
    EXPECT_FALSE(panel.scrollWheel(trackpad(-1.5)));
    EXPECT_EQ(swipes, QStringList());
    EXPECT_TRUE(panel.scrollWheel(trackpad(-0.5)));
    EXPECT_TRUE(panel.scrollWheel(trackpad(-40.0))) << "the rest of the gesture is swallowed";
    EXPECT_TRUE(panel.scrollWheel(trackpad(40.0)));
    EXPECT_EQ(swipes, QStringList{"down"});

    EXPECT_FALSE(panel.scrollWheel(trackpad(0.0, Phase::ended)));
    EXPECT_TRUE(panel.scrollWheel(trackpad(5.0, Phase::began)));
    EXPECT_EQ(swipes, QStringList({"down", "up"}));
}

TEST_F(NotchPanelTest, TheSignFollowsTheFingersAlsoWhenScrollingIsNatural) {
    ScrollEvent event = trackpad(6.0, Phase::began);
    event.directionInverted = true;
    panel.scrollWheel(event);
    EXPECT_EQ(swipes, QStringList{"down"});
}

TEST_F(NotchPanelTest, OnlyFingersOnATrackpadSwipe) {
    ScrollEvent wheel = trackpad(-30.0);
    wheel.hasPreciseDeltas = false;
    ScrollEvent coasting = trackpad(-30.0);
    coasting.isMomentum = true;
    for (const ScrollEvent& event :
         {wheel, coasting, trackpad(-6.0, Phase::changed, 6.0), trackpad(0, Phase::changed, 9)})
        EXPECT_FALSE(panel.scrollWheel(event));
    EXPECT_FALSE(panel.scrollWheel(trackpad(-4.9))) << "nothing had been gathered";
    EXPECT_EQ(swipes, QStringList());
}

TEST_F(NotchPanelTest, AGestureThatEndsOrBeginsAnewForgetsWhatWasGathered) {
    for (const Phase boundary : {Phase::ended, Phase::cancelled, Phase::began}) {
        panel.scrollWheel(trackpad(-4.0));
        panel.scrollWheel(trackpad(0.0, boundary));
        EXPECT_FALSE(panel.scrollWheel(trackpad(-4.0)));
        panel.scrollWheel(trackpad(0.0, Phase::ended));
    }
    EXPECT_EQ(swipes, QStringList());
}

TEST_F(NotchPanelTest, ASwipeThatNobodyConsumesIsPassedOnAndGathersAnew) {
    consumes = false;
    EXPECT_FALSE(panel.scrollWheel(trackpad(-6.0, Phase::began)));
    EXPECT_FALSE(panel.scrollWheel(trackpad(-4.0)));
    EXPECT_EQ(swipes, QStringList{"down"});
    consumes = true;
    EXPECT_TRUE(panel.scrollWheel(trackpad(-1.0)));
    EXPECT_EQ(swipes, QStringList({"down", "down"}));
}

TEST_F(NotchPanelTest, FourKeysAreCommandsAndTextUndoesItsOwnEdits) {
    struct Case {
        const char* characters;
        Qt::KeyboardModifiers modifiers;
        bool inText;
        const char* command;
    };
    const Qt::KeyboardModifiers command = Qt::ControlModifier;
    const Qt::KeyboardModifiers commandShift = Qt::ControlModifier | Qt::ShiftModifier;
    const Case cases[] = {
        {"n", command, false, "n"},
        {"N", command, true, "n"},
        {"f", command, true, "f"},
        {"z", command, false, "z"},
        {"Z", commandShift, false, "redo"},
        {"z", command, true, nullptr},
        {"Z", commandShift, true, nullptr},
        {"n", commandShift, false, nullptr},
        {"f", commandShift, false, nullptr},
        {"y", command, false, nullptr},
        {"n", Qt::NoModifier, false, nullptr},
        {"n", Qt::ShiftModifier, false, nullptr},
        {"n", command | Qt::AltModifier, false, nullptr},
        {"z", commandShift | Qt::MetaModifier, false, nullptr},
    };
    QStringList received;
    panel.onKeyboardCommand = [&](const QString& name) {
        received << name;
        return true;
    };
    for (const Case& c : cases) {
        received.clear();
        const bool consumed = panel.performKeyEquivalent({c.characters, c.modifiers, c.inText});
        EXPECT_EQ(received, c.command ? QStringList{c.command} : QStringList())
            << c.characters << c.modifiers;
        EXPECT_EQ(consumed, c.command != nullptr);
    }
    panel.onKeyboardCommand = [](const QString&) { return false; };
    EXPECT_FALSE(panel.performKeyEquivalent({"n", command, false}));
}

TEST_F(NotchPanelTest, TheWindowForgetsAPanelThatIsGone) {
    {
        ScriptedWindow other;
        NotchPanel passing(other);
        EXPECT_EQ(other.handler, &passing);
    }
    { const NotchPanel passing(window); }
    EXPECT_EQ(window.handler, nullptr);
}

}  // namespace
}  // namespace kestrant
