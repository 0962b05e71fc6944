#include "notch/NotchGeometry.h"

#include "ScriptedPorts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrant {
namespace {

const Screen external = plainScreen({0, 0, 1920, 1080});

TEST(NotchGeometryTest, MeasuresTheHousingOnlyWithinItsLimits) {
    struct Case {
        const char* what;
        Screen screen;
        QSizeF hardware, idle, hover;
        double cameraSafeWidth;
    };
    Screen oneSided = notchedScreen(185, 37);
    oneSided.auxiliaryTopRightArea.reset();
    Screen unknownWidth = notchedScreen(185, 37);
    unknownWidth.auxiliaryTopRightArea->moveLeft(std::numeric_limits<double>::quiet_NaN());
    const QSizeF fallback(194.0, 32.25);
    const Case cases[] = {
        {"no housing", external, fallback, {205.0, 32.75}, {257.0, 32.75}, 231.0},
        {"one auxiliary area", oneSided, fallback, {205.0, 32.75}, {257.0, 32.75}, 231.0},
        {"185 wide", notchedScreen(185, 37), {185.0, 37.0}, {196.0, 37.5}, {251.0, 37.5}, 222.0},
        {"too narrow", notchedScreen(120, 37), {194.0, 37.0}, {205.0, 37.5}, {257.0, 37.5}, 231.0},
        {"narrowest", notchedScreen(150, 28), {150.0, 28.0}, {161.0, 28.5}, {251.0, 28.5}, 220.0},
        {"widest", notchedScreen(280, 45), {280.0, 45.0}, {291.0, 45.5}, {343.0, 45.5}, 317.0},
        {"too wide, too low", notchedScreen(281, 24), fallback, {205.0, 32.75}, {257.0, 32.75}, 231.0},
        {"too high", notchedScreen(194, 50), fallback, {205.0, 32.75}, {257.0, 32.75}, 231.0},
        {"not a number", unknownWidth, {194.0, 37.0}, {205.0, 37.5}, {257.0, 37.5}, 231.0},
    };
    for (const Case& c : cases) {
        const NotchGeometry geometry(c.screen);
        EXPECT_EQ(geometry.hardwareNotchSize(), c.hardware) << c.what;
        EXPECT_EQ(geometry.idleSize(), c.idle) << c.what;
        EXPECT_EQ(geometry.hoverSize(), c.hover) << c.what;
        EXPECT_EQ(geometry.cameraSafeWidth(), c.cameraSafeWidth) << c.what;
    }
}

TEST(NotchGeometryTest, TheExpandedWidthFollowsTheScreenBetweenItsBounds) {
    const std::pair<double, double> widths[] = {{1512, 940}, {972, 940}, {971, 939}, {752, 720}, {700, 720}};
    for (const auto& [screenWidth, expanded] : widths)
        EXPECT_EQ(NotchGeometry(plainScreen({0, 0, screenWidth, 900})).expandedSize(),
                  QSizeF(expanded, 292.0));
}

TEST(NotchGeometryTest, ANotchedScreenIsChosenBeforeTheMainOne) {
    const Screen builtIn = notchedScreen(185, 37);
    Screen insetOnly = plainScreen({3000, 0, 1000, 800});
    insetOnly.topSafeAreaInset = 1.0;
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({external, builtIn, insetOnly})), builtIn);
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({external, insetOnly})), insetOnly);
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({external})), external);
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({})), std::nullopt);
}

TEST(NotchGeometryTest, TheWantedScreenIsChosenWhileItIsThere) {
    const auto named = [](const char* name, const QRectF& frame) {
        Screen result = plainScreen(frame);
        result.name = QString::fromLatin1(name);
        return result;
    };
    const Screen main = named("eDP-1", {0, 0, 1600, 900});
    const Screen other = named("DP-2", {1600, 0, 1920, 1080});
    const ScriptedScreens screens({main, other});
    const PanelPlacement byName{.screenName = QStringLiteral("DP-2")};
    const PanelPlacement byPointer{.followsPointer = true};
    EXPECT_EQ(NotchGeometry::chooseScreen(screens, byName), other);
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({main}), byName), main) << "it is away";
    EXPECT_EQ(NotchGeometry::chooseScreen(screens, byPointer, QPointF(2000, 500)), other);
    EXPECT_EQ(NotchGeometry::chooseScreen(screens, byPointer), main) << "the pointer is nowhere";
    EXPECT_EQ(NotchGeometry::chooseScreen(ScriptedScreens({plainScreen({})}), {}), plainScreen({}))
        << "a screen without a name is not the one without a wish";
}

TEST(NotchGeometryTest, ItHangsWhereItIsPlaced) {
    Screen screen = plainScreen({100, 0, 1600, 900});
    screen.visibleFrame = QRectF(100, 40, 1600, 830);
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        const char* what;
        PanelPlacement placement;
        QRectF panel, resting;
    };
    const Case cases[] = {
        {"a little to the right", {.offset = 50}, {480, 608, 940, 292}, {847.5, 867.25, 205, 34.75}},
        {"left", {.offset = -infinity}, {100, 608, 940, 292}, {467.5, 867.25, 205, 34.75}},
        {"beyond the right", {.offset = 900}, {760, 608, 940, 292}, {1127.5, 867.25, 205, 34.75}},
        {"below the bar", {.isBelowBar = true}, {430, 578, 940, 292}, {797.5, 837.25, 205, 34.75}},
        {"a strip", {.restingLook = RestingLook::strip}, {430, 608, 940, 292}, {797.5, 896, 205, 6}},
    };
    NotchGeometry geometry(screen);
    for (const Case& c : cases) {
        geometry.setPlacement(c.placement);
        EXPECT_EQ(geometry.panelFrame(), c.panel) << c.what;
        EXPECT_EQ(geometry.interactiveRect(NotchPhase::idle), c.resting) << c.what;
    }
    geometry.setPlacement({.restingLook = RestingLook::hidden});
    EXPECT_FALSE(geometry.isInteractive({900, 900}, NotchPhase::idle)) << "there is nothing to point at";
    EXPECT_TRUE(geometry.isInteractive({900, 900}, NotchPhase::expanded));
}

TEST(NotchGeometryTest, AreasHangFromTheTopCentreOfAScreenAnywhere) {
    // A screen left of and above the main one: its top edge is at y = 1980.
    const NotchGeometry geometry(plainScreen({-1600, 1080, 1600, 900}));
    EXPECT_EQ(geometry.panelFrame(), QRectF(-1270, 1688, 940, 292));
    EXPECT_EQ(geometry.interactiveRect(NotchPhase::expanded), QRectF(-1272, 1686, 944, 296));
    EXPECT_EQ(geometry.interactiveRect(NotchPhase::idle), QRectF(-902.5, 1947.25, 205, 34.75));
    EXPECT_EQ(geometry.interactiveRect(NotchPhase::hovering), QRectF(-928.5, 1947.25, 257, 34.75));

    EXPECT_TRUE(geometry.isInteractive({-800, 1980}, NotchPhase::idle)) << "pressed against the top edge";
    EXPECT_FALSE(geometry.isInteractive({-910, 1970}, NotchPhase::idle));
    EXPECT_TRUE(geometry.isInteractive({-910, 1970}, NotchPhase::hovering));
    EXPECT_FALSE(geometry.isInteractive({-800, 1700}, NotchPhase::hovering));
    EXPECT_TRUE(geometry.isInteractive({-800, 1700}, NotchPhase::expanded));
}

TEST(NotchGeometryTest, TheRestingBodyCoincidesWithTheHousing) {
    const NotchGeometry geometry(notchedScreen(185, 37));
    const NotchContainerShape shape = geometry.shape(NotchPhase::idle);
    EXPECT_EQ(shape.size.width() - 2 * shape.topEarRadius, 185.0);
}

}  // namespace
}  // namespace kestrant
