#include "notch/NotchGeometry.h"
#include "platform/linux/desktop/DesktopSettings.h"
#include "platform/linux/desktop/TouchpadDirection.h"
#include "platform/linux/window/CameraHousing.h"

#include <gtest/gtest.h>

#include <utility>

using namespace kestrant;

namespace {

template <std::size_t size>
QByteArray bytes(const char (&text)[size]) {
    return QByteArray(text, size - 1);
}

const QByteArray largeLaptop = bytes("apple,j316s\0apple,t6000\0apple,arm-platform\0");
const QByteArray smallLaptop = bytes("apple,j413\0apple,t8112\0apple,arm-platform\0");

TEST(CameraHousings, AreTheSettingsElseTheModels) {
    struct Case {
        const char* what;
        QString setting;
        QByteArray compatible;
        QSizeF display;
        std::optional<QSizeF> expected;
    };
    const Case cases[] = {
        {"an unknown machine", {}, {}, {1512, 982}, {}},
        {"a full picture at twice the points", {}, largeLaptop, {1728, 1117}, QSizeF(185, 37)},
        {"a full picture, one pixel a point", {}, largeLaptop, {3456, 2234}, QSizeF(370, 74)},
        {"a picture below the housing", {}, largeLaptop, {1728, 1080}, {}},
        {"a smaller display", {}, smallLaptop, {1280, 832}, QSizeF(163, 32)},
        {"a setting", "200x34.5", largeLaptop, {1728, 1117}, QSizeF(200, 34.5)},
        {"a setting on an unknown machine", " 180 × 32 ", {}, {1920, 1080}, QSizeF(180, 32)},
        {"switched off", "none", largeLaptop, {1728, 1117}, {}},
        {"an empty size", "0x0", largeLaptop, {1728, 1117}, {}},
        {"no size at all", "wide", largeLaptop, {1728, 1117}, QSizeF(185, 37)},
    };
    for (const Case& one : cases) {
        const auto housing =
            CameraHousings{one.setting, one.compatible}.of({.frame = QRectF({}, one.display)});
        EXPECT_EQ(housing, one.expected) << one.what;
    }
    EXPECT_TRUE(isBuiltIn("eDP-1"));
    EXPECT_FALSE(isBuiltIn("HDMI-1"));
    EXPECT_FALSE(isBuiltIn("XWAYLAND0"));
}

TEST(CameraHousings, GiveTheNotchItsSizeWhereverTheDisplayLies) {
    const Screen screen =
        withCameraHousing({.name = "eDP-1", .frame = QRectF(1920, -37, 1728, 1117)}, QSizeF(185, 37));
    const NotchGeometry geometry(screen);
    EXPECT_EQ(geometry.hardwareNotchSize(), QSizeF(185, 37));
    EXPECT_EQ(geometry.idleSize(), QSizeF(196, 37.5));
    EXPECT_EQ(screen.auxiliaryTopLeftArea, QRectF(1920, 1043, 771.5, 37));
    EXPECT_EQ(screen.auxiliaryTopRightArea, QRectF(2876.5, 1043, 771.5, 37));
}

TEST(DesktopSettingsPage, IsAnInstalledProgramOfTheDesktop) {
    const auto installed = [](const QStringList& programs) {
        return [programs](const QString& name) {
            return programs.contains(name) ? QStringLiteral("/usr/bin/") + name : QString();
        };
    };
    const auto page = desktopSettingsPage("ubuntu:GNOME", installed({"gnome-control-center"}));
    ASSERT_TRUE(page);
    EXPECT_EQ(page->executable, QStringLiteral("/usr/bin/gnome-control-center"));
    EXPECT_EQ(page->program, text("Settings", "Paramètres"));
    EXPECT_EQ(desktopSettingsPage("KDE", installed({"systemsettings5"}))->executable,
              QStringLiteral("/usr/bin/systemsettings5"));
    EXPECT_FALSE(desktopSettingsPage("GNOME", installed({"systemsettings"})));
    EXPECT_FALSE(desktopSettingsPage("XFCE", installed({"gnome-control-center"})));
    EXPECT_FALSE(desktopSettingsPage("", installed({"gnome-control-center"})));
}

TEST(TouchpadDirection, IsAskedOfTheDesktopThatRuns) {
    EXPECT_EQ(touchpadQuestion("ubuntu:GNOME").command.value(2),
              QStringLiteral("org.gnome.desktop.peripherals.touchpad"));
    EXPECT_EQ(touchpadQuestion("sway").command.first(), QStringLiteral("swaymsg"));
    EXPECT_TRUE(touchpadQuestion("KDE").isKnown);
    EXPECT_TRUE(touchpadQuestion("KDE").command.isEmpty());
    EXPECT_FALSE(touchpadQuestion("weston").isKnown);
}

TEST(TouchpadDirection, IsReadFromEachDesktopsAnswer) {
    const std::pair<const char*, std::optional<bool>> cases[] = {
        {"true\n", true},
        {"false\n", false},
        {"", {}},
        {"No such schema\n", {}},
        {R"({"option": "input:touchpad:natural_scroll", "int": 1, "set": true})", true},
        {R"({"option": "input:touchpad:natural_scroll", "bool": false})", false},
        {R"([{"type": "pointer", "libinput": {"natural_scroll": "disabled"}},
             {"type": "touchpad", "libinput": {"natural_scroll": "enabled"}}])",
         true},
        {R"([{"type": "touchpad", "libinput": {"natural_scroll": "disabled"}}])", false},
        {R"([{"type": "touchpad"}])", {}},
        {R"([{"type": "keyboard"}])", {}},
    };
    for (const auto& [answer, expected] : cases)
        EXPECT_EQ(touchpadAnswer(answer), expected) << answer;
}

}  // namespace
