#include "ForeignClient.h"
#include "notch/NotchGeometry.h"
#include "platform/linux/desktop/ApplicationState.h"
#include "platform/linux/window/QtScreenProvider.h"
#include "platform/linux/x11/BackdropBlur.h"
#include "platform/linux/x11/Platform.h"
#include "platform/linux/x11/SurfaceManagement.h"
#include "platform/linux/x11/X11PanelWindow.h"
#include "platform/linux/x11/X11PointerProvider.h"
#include "support/ManualScheduler.h"
#include "support/TestEnvironment.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QRasterWindow>

#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <memory>
#include <optional>

namespace kestrant {
namespace {

constexpr uint32_t keyA = 'a';
constexpr uint32_t keyN = 'n';

constexpr QPoint onNotch(700, 10);
/// Inside the window, outside the resting notch.
constexpr QPoint besideNotch(400, 10);
constexpr QPoint belowNotch(700, 200);

class Surface : public QRasterWindow {
  public:
    QString typed;

  protected:
    void keyPressEvent(QKeyEvent* event) override { typed += event->text(); }
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(QRect(QPoint(), size()), Qt::black); }
};

class Handler : public PanelEventHandler {
  public:
    bool scrollWheel(const ScrollEvent&) override { return false; }
    bool leftMouseDown(QPointF location) override {
        clicks.push_back(location);
        return true;
    }
    void dragged(double, bool) override {}
    bool performKeyEquivalent(const KeyEquivalent& key) override {
        keys << key.charactersIgnoringModifiers;
        return key.modifiers == Qt::ControlModifier;
    }
    std::vector<QPointF> clicks;
    QStringList keys;
};

class PanelWindowTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        auto platform = preparePlatform({}, [] { return false; });
        ASSERT_TRUE(platform.has_value()) << platform.error().english.toStdString();
        static int argc = 1;
        static char name[] = "panel_window_tests";
        static char* argv[] = {name, nullptr};
        application = new QGuiApplication(argc, argv);
        QGuiApplication::setQuitOnLastWindowClosed(false);
    }
    static void TearDownTestSuite() { delete application; }

    void SetUp() override {
        other.waitForWindowManager();
        // What tests find below the panel.
        maximised = other.openWindow({0, 0, 1400, 900},
                                     {"_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ"});
        panel = std::make_unique<X11PanelWindow>(surface, scheduler);
        panel->setEventHandler(&handler);
        panel->setFrame(geometry.panelFrame());
        panel->setRestingArea(geometry.idleSize());
        panel->setIgnoresMouseEvents(true);
        setPhase(NotchPhase::idle);
        panel->orderFrontRegardless();
        ASSERT_TRUE(
            other.waitUntil([&] { return surface.isExposed() && other.windowAt(onNotch) == id(surface); }));
    }
    void TearDown() override { other.closeWindow(maximised); }

    void setPhase(NotchPhase phase) { panel->setShape(geometry.shape(phase)); }
    void expand() {
        panel->setIgnoresMouseEvents(false);
        setPhase(NotchPhase::expanded);
        panel->makeKey();
        ASSERT_TRUE(other.waitUntil(
            [&] { return QGuiApplication::focusWindow() == &surface && isFocused(surface); }));
    }
    [[nodiscard]] static xcb_window_t id(const QWindow& window) {
        return static_cast<xcb_window_t>(window.winId());
    }
    [[nodiscard]] bool isFocused(const QWindow& window) { return other.server().inputFocus() == id(window); }
    [[nodiscard]] bool isCutOut() {
        const XcbReply<xcb_shape_query_extents_reply_t> reply(xcb_shape_query_extents_reply(
            other.server().get(), xcb_shape_query_extents(other.server().get(), id(surface)), nullptr));
        return reply->bounding_shaped;
    }

    static QGuiApplication* application;
    ForeignClient other;
    xcb_window_t maximised = XCB_WINDOW_NONE;
    QtScreenProvider screens;
    NotchGeometry geometry{NotchGeometry::chooseScreen(screens).value()};
    ManualScheduler scheduler{Instant{}};
    Handler handler;
    Surface surface;
    std::unique_ptr<X11PanelWindow> panel;
};

QGuiApplication* PanelWindowTest::application = nullptr;

TEST_F(PanelWindowTest, TheChosenPlatformIsNotPassedOn) {
    EXPECT_EQ(QGuiApplication::platformName(), "xcb");
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
}

TEST_F(PanelWindowTest, HangsAtTheTopCentreAboveAMaximisedWindow) {
    EXPECT_EQ(surface.geometry(), QRect(230, 0, 940, 292));
    const XcbReply<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
        other.server().get(),
        xcb_translate_coordinates(other.server().get(), id(surface), other.server().root(), 0, 0), nullptr));
    EXPECT_EQ(QPoint(corner->dst_x, corner->dst_y), QPoint(230, 0));
    EXPECT_EQ(other.windowAt(onNotch), id(surface));

    const xcb_window_t later = other.openWindow({300, 0, 800, 400});
    EXPECT_EQ(other.windowAt(onNotch), id(surface)) << "a window that opens later stays below";
    other.closeWindow(later);
}

TEST_F(PanelWindowTest, AtRestOnlyTheNotchTakesThePointer) {
    for (const QPoint place : {besideNotch, belowNotch})
        EXPECT_EQ(other.windowAt(place), maximised);

    other.click(besideNotch);
    ASSERT_TRUE(other.waitUntil([&] { return !other.clicked.empty(); }));
    EXPECT_EQ(other.clicked, std::vector<xcb_window_t>{maximised});
    other.click(onNotch);
    ASSERT_TRUE(other.waitUntil([&] { return !handler.clicks.empty(); }));
    EXPECT_EQ(handler.clicks, std::vector<QPointF>{QPointF(470, 282)});
}

TEST_F(PanelWindowTest, ExpandedItTakesThePointerWithinItsOutline) {
    expand();
    for (const QPoint place : {onNotch, besideNotch, belowNotch, QPoint(241, 200)})
        EXPECT_EQ(other.windowAt(place), id(surface));
    for (const QPoint place : {QPoint(238, 200), QPoint(232, 8), QPoint(245, 288), QPoint(700, 293)})
        EXPECT_EQ(other.windowAt(place), maximised) << "past an ear, a side, a corner, the lower edge";
}

TEST_F(PanelWindowTest, TheFocusIsTakenOnlyForTheExpandedPanelAndGivenBack) {
    other.type(keyA);
    ASSERT_TRUE(other.waitUntil([&] { return other.typed.size() == 1; }))
        << "showing the panel took no focus";

    expand();
    other.type(keyA);
    other.type(keyN, true);
    ASSERT_TRUE(other.waitUntil([&] { return handler.keys.contains("N"); }));
    EXPECT_EQ(surface.typed, "a");
    EXPECT_EQ(handler.keys, QStringList({"A", "N"}));

    panel->resignKey();
    ASSERT_TRUE(other.waitUntil(
        [&] { return other.focused == maximised && other.server().inputFocus() == maximised; }));
    other.type(keyA);
    ASSERT_TRUE(other.waitUntil([&] { return other.typed.size() == 2; }));
}

TEST_F(PanelWindowTest, AFocusThatHasMovedOnIsLeftAlone) {
    expand();
    const xcb_window_t next = other.openWindow({0, 500, 300, 200});
    bool resigned = false;
    observeApplicationState(&screens, [&](bool isActive) { resigned = !isActive; });
    ASSERT_TRUE(other.waitUntil([&] { return resigned; })) << "the application hears of it";
    panel->resignKey();
    other.type(keyA);
    ASSERT_TRUE(other.waitUntil([&] { return !other.typed.empty(); }));
    EXPECT_EQ(other.server().inputFocus(), next);
    other.closeWindow(next);
}

TEST_F(PanelWindowTest, AFocusThatWasGivenBackAndAskedForAgainWasNotTakenAway) {
    const auto isActive = [] { return QGuiApplication::applicationState() == Qt::ApplicationActive; };
    expand();
    panel->resignKey();
    EXPECT_FALSE(panel->keyWasTakenAway());
    ASSERT_TRUE(other.waitUntil([&] { return !isActive(); }));
    panel->makeKey();
    EXPECT_FALSE(panel->keyWasTakenAway());
    panel->resignKey();
    panel->makeKey();
    EXPECT_FALSE(panel->keyWasTakenAway());
    ASSERT_TRUE(other.waitUntil([&] { return isActive() && isFocused(surface); }));
    EXPECT_FALSE(panel->keyWasTakenAway());

    const xcb_window_t next = other.openWindow({0, 500, 300, 200});
    ASSERT_TRUE(other.waitUntil([&] { return !isActive(); }));
    EXPECT_FALSE(panel->keyWasTakenAway()) << "it may still be wandering";
    bool told = false;
    QObject::connect(panel.get(), &X11PanelWindow::keyTakenWhileAsking, [&] { told = true; });
    scheduler.advance(std::chrono::milliseconds(300));
    EXPECT_TRUE(panel->keyWasTakenAway());
    EXPECT_TRUE(told);
    other.closeWindow(next);
}

TEST_F(PanelWindowTest, TheFocusIsGivenUpAlsoWhenItsFormerHolderIsGone) {
    const xcb_window_t passing = other.openWindow({0, 500, 300, 200});
    expand();
    other.closeWindow(passing);
    ASSERT_TRUE(other.waitUntil([&] { return !other.server().isViewable(passing); }));
    panel->resignKey();
    EXPECT_TRUE(other.waitUntil([&] { return !isFocused(surface); }));
}

TEST_F(PanelWindowTest, WhatIsOpenOnItTakesThePointerWhateverTheSizeOfTheWindow) {
    using Kind = PanelSurface::Kind;
    panel->setExtent({1068, 600});
    EXPECT_EQ(surface.geometry(), QRect(166, 0, 1068, 600));
    expand();
    // A popover that hangs out of the panel, and a message below it.
    panel->setSurfaces({{Kind::toast, {370, 304, 200, 40}, 20},
                        {Kind::gap, {370, 292, 200, 12}, 0},
                        {Kind::popover, {600, 100, 300, 400}, 18}});
    ASSERT_TRUE(other.waitUntil([&] { return other.windowAt({700, 320}) == id(surface); }));
    for (const QPoint place : {QPoint(700, 320), QPoint(900, 490), onNotch, besideNotch})
        EXPECT_EQ(other.windowAt(place), id(surface)) << place.x() << ' ' << place.y();
    for (const QPoint place : {QPoint(700, 350), QPoint(550, 320), QPoint(831, 499), QPoint(1140, 300)})
        EXPECT_EQ(other.windowAt(place), maximised) << "where only shadows are";
    EXPECT_EQ(other.windowAt({700, 297}), maximised) << "without a compositor nothing can be there";
    other.setCompositing(true);
    ASSERT_TRUE(other.waitUntil([&] { return panel->isCompositing(); }));
    EXPECT_EQ(other.windowAt({700, 297}), id(surface)) << "the way to the message";
    EXPECT_EQ(other.windowAt({700, 350}), maximised);
    other.setCompositing(false);

    other.click(belowNotch);
    ASSERT_TRUE(other.waitUntil([&] { return !handler.clicks.empty(); }));
    EXPECT_EQ(handler.clicks, std::vector<QPointF>{QPointF(470, 92)}) << "places are the panel's";

    panel->setSurfaces({});
    panel->setIgnoresMouseEvents(true);
    setPhase(NotchPhase::idle);
    panel->setExtent({294, 57});
    EXPECT_EQ(surface.geometry(), QRect(553, 0, 294, 57));
    ASSERT_TRUE(other.waitUntil([&] { return other.windowAt(belowNotch) == maximised; }));
    EXPECT_EQ(other.windowAt(onNotch), id(surface));
    EXPECT_EQ(other.windowAt({570, 20}), maximised);
}

TEST_F(PanelWindowTest, AClickBringsTheFocusBackToASurfaceThatLostIt) {
    expand();
    other.click({100, 800});
    ASSERT_TRUE(other.waitUntil([&] { return other.server().inputFocus() == maximised; }));
    other.click(belowNotch);
    EXPECT_TRUE(other.waitUntil([&] { return isFocused(surface); }));
}

TEST_F(PanelWindowTest, ItIsCutOutExceptWhileACompositorBlends) {
    EXPECT_TRUE(isCutOut());
    other.setCompositing(true);
    ASSERT_TRUE(other.waitUntil([&] { return panel->isCompositing(); }));
    EXPECT_FALSE(isCutOut());
    EXPECT_EQ(other.windowAt(besideNotch), maximised);
    other.setCompositing(false);
    ASSERT_TRUE(other.waitUntil([&] { return !panel->isCompositing(); }));
    EXPECT_TRUE(isCutOut());
}

TEST_F(PanelWindowTest, ThePointerIsToldWithItsYUpwards) {
    const X11PointerProvider pointer;
    other.movePointer({700, 10});
    EXPECT_EQ(pointer.location(), QPointF(700, 890));
    EXPECT_TRUE(geometry.isInteractive(pointer.location().value(), NotchPhase::idle));
}

TEST_F(PanelWindowTest, AsksForBlurWhereTheCompositorOffersIt) {
    constexpr auto property = "_KDE_NET_WM_BLUR_BEHIND_REGION";
    const X11Connection& server = other.server();
    const auto region = [&] { return server.property(id(surface), property); };
    BackdropBlur blur(surface);
    blur.setShape(geometry.shape(NotchPhase::expanded));
    EXPECT_FALSE(blur.isOffered());
    EXPECT_TRUE(region().empty());

    server.setProperty(server.root(), property, XCB_ATOM_CARDINAL, {0});
    server.flush();
    EXPECT_TRUE(other.waitUntil([&] { return blur.isOffered() && !region().empty(); }));
    // Rectangles, the first of which is the upper edge between the tips of the ears.
    EXPECT_EQ(region().size() % 4, 0u);
    EXPECT_EQ(region()[1], 0u);
    blur.setShape(std::nullopt);
    EXPECT_TRUE(other.waitUntil([&] { return region().empty(); }));

    blur.setShape(geometry.shape(NotchPhase::expanded));
    xcb_delete_property(server.get(), server.root(), server.atom(property));
    server.flush();
    EXPECT_TRUE(other.waitUntil([&] { return !blur.isOffered() && region().empty(); }));
}

}  // namespace
}  // namespace kestrant

int main(int argc, char** argv) {
    kestrant::test::useTestEnvironment();
    // What is tested is the platform that the program chooses.
    qunsetenv("QT_QPA_PLATFORM");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
