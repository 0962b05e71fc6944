#include "ui/items/Glass.h"

#include "ui/PanelProgram.h"

#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QUrl>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

using namespace kestrant;
using namespace kestrant::test;

namespace {

QColor over(const QColor& above, const QColor& below) {
    const auto mixed = [&](float a, float b) { return a * above.alphaF() + b * (1 - above.alphaF()); };
    return QColor::fromRgbF(mixed(above.redF(), below.redF()), mixed(above.greenF(), below.greenF()),
                            mixed(above.blueF(), below.blueF()));
}

/// WCAG 2.1, relative luminance and contrast ratio.
double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& text, const QColor& ground) {
    const auto [dark, light] = std::minmax({luminance(text), luminance(ground)});
    return (light + 0.05) / (dark + 0.05);
}

TEST(Glass, KeepsEveryTextReadableOverEveryWallpaper) {
    PanelProgram program;
    QQmlComponent component(program.view.engine());
    component.setData("import QtQml; import Kestrant; QtObject { property QtObject theme: Theme }", QUrl());
    const std::unique_ptr<QObject> holder(component.create());
    ASSERT_NE(holder, nullptr) << component.errorString().toStdString();
    const auto* theme = holder->property("theme").value<QObject*>();
    const auto token = [&](const char* name) {
        const QColor color = theme->property(name).value<QColor>();
        EXPECT_TRUE(color.isValid()) << name;
        return color;
    };
    struct Case {
        const char* text;
        /// What lies between the text and the body; empty for nothing.
        std::vector<const char*> grounds;
    };
    const std::vector<Case> cases{
        {"text", {}},
        {"secondaryText", {}},
        {"accentText", {}},
        {"overdue", {}},
        {"text", {"card"}},
        {"secondaryText", {"card"}},
        {"overdue", {"card"}},
        {"flag", {"card"}},
        {"accentText", {"card"}},
        {"text", {"cardActive"}},
        {"secondaryTextActive", {"cardActive"}},
        {"overdueActive", {"cardActive"}},
        {"flag", {"cardActive"}},
        {"chipText", {"control"}},
        {"secondaryText", {"control"}},
        {"text", {"controlHovered"}},
        {"text", {"controlOn"}},
        {"nowText", {"nowFill", "nowElapsed"}},
        {"text", {"nowFill", "nowElapsed"}},
        {"secondaryTextActive", {"nowFill", "nowElapsed"}},
        {"text", {"targetFill"}},
        {"secondaryText", {"field"}},
    };
    for (const PanelGround ground :
         {PanelGround::black, PanelGround::shaded, PanelGround::blended, PanelGround::blurred}) {
        for (const auto& [position, body] : groundStops(ground, program.panel.expandedHeight())) {
            for (const QColor& wallpaper : {QColor(Qt::white), QColor(Qt::black), QColor(0xf0c040)}) {
                for (const Case& each : cases) {
                    QColor below = over(body, wallpaper);
                    for (const char* name : each.grounds)
                        below = over(token(name), below);
                    EXPECT_GE(contrast(token(each.text), below), 4.5)
                        << each.text << " on " << (each.grounds.empty() ? "the body" : each.grounds.back())
                        << ", ground " << int(ground) << " at " << position << " over "
                        << wallpaper.name().toStdString();
                }
            }
        }
    }
    for (const auto& [position, body] : groundStops(PanelGround::black, program.panel.expandedHeight()))
        EXPECT_EQ(body, QColor(Qt::black)) << position;
    EXPECT_LT(groundStops(PanelGround::blurred, 292).back().second.alpha(), 255);
}

}  // namespace
