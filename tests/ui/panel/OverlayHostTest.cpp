#include "ui/PanelProgram.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

TEST(OverlayHost, TellsTheInteractionModelWhatIsOpen) {
    PanelProgram program;
    program.expand();
    program.call("openSort");
    EXPECT_EQ(program.interaction.presentedOverlayIDs(), QSet<QString>{QStringLiteral("sort")});
    program.press(Qt::Key_Escape);
    EXPECT_EQ(program.interaction.presentedOverlayIDs(), QSet<QString>{});
    EXPECT_TRUE(program.panel.isExpanded());
}

TEST(OverlayHost, ReplacesAnOverlayThatDoesNotLieBeneathTheNewOne) {
    PanelProgram program;
    program.expand();
    program.call("openSort");
    program.call("openLists");
    EXPECT_EQ(program.interaction.presentedOverlayIDs(), QSet<QString>{QStringLiteral("lists")});
    program.call("openLists");
    EXPECT_EQ(program.view.overlays().topmost(), QString());
}

/// The middle of an item, in the scene.
QPointF middleOf(const QQuickItem& item) {
    return item.mapToScene({item.width() / 2, item.height() / 2});
}

TEST(OverlayHost, APressBesideClosesWhatLiesAboveIt) {
    PanelProgram program;
    for (const char* title : {"One", "Two", "Three", "Four", "Five", "Six"})
        program.database.putReminder({.title = QString::fromLatin1(title)});
    program.expand();
    program.settle();
    OverlayHost& overlays = program.view.overlays();
    program.call("openQuickAdd");
    QQuickItem* quickAdd = overlays.surface(QStringLiteral("quickAdd"));
    overlays.present(QStringLiteral("menu"), QStringLiteral("MenuPopover.qml"), quickAdd,
                     {{QStringLiteral("entries"), QVariantList{QVariantMap{{"title", "One"}}}}});
    EXPECT_EQ(program.interaction.presentedOverlayIDs().size(), 2);
    const QQuickItem* menu = overlays.surface(QStringLiteral("menu"));
    const auto sceneRect = [](const QQuickItem& item) { return item.mapRectToScene(item.boundingRect()); };
    EXPECT_FALSE(sceneRect(*quickAdd).intersects(sceneRect(*menu))) << "what it opened from stays in sight";

    QSignalSpy allClosed(&overlays, &OverlayHost::allOverlaysClosed);
    program.click(quickAdd->mapToScene({4, 4}));
    EXPECT_EQ(overlays.topmost(), QStringLiteral("quickAdd"));
    EXPECT_EQ(allClosed.count(), 0);
    program.click(quickAdd->mapToScene({4, 4}));
    EXPECT_EQ(overlays.topmost(), QStringLiteral("quickAdd")) << "a press on it changes nothing";
    for (qreal x = 4; x < quickAdd->width(); x += 60) {
        program.click(quickAdd->mapToScene({x, 4}));
        EXPECT_TRUE(quickAdd->hasActiveFocus()) << "nor anything beneath, " << x << " from its edge";
    }
    program.click({400, 700});
    EXPECT_EQ(overlays.topmost(), QString());
    EXPECT_EQ(allClosed.count(), 1);
}

TEST(OverlayHost, AnotherControlOfTheToolbarIsReachedWithOnePressAndNothingElseIs) {
    PanelProgram program;
    program.database.putReminder({.title = QStringLiteral("Water")});
    program.expand();
    program.settle();
    program.click("Sort");
    EXPECT_EQ(program.view.overlays().topmost(), QStringLiteral("sort"));
    program.click("Settings");
    EXPECT_EQ(program.view.overlays().topmost(), QStringLiteral("settings"));
    program.click("Settings");
    EXPECT_EQ(program.view.overlays().topmost(), QString()) << "its own button only closes it";

    program.click("Sort");
    const QQuickItem* circle = findText(program.view.contentItem(), QStringLiteral("Water"));
    ASSERT_NE(circle, nullptr);
    program.click(middleOf(*circle));
    program.click(middleOf(*circle));
    EXPECT_EQ(program.view.overlays().topmost(), QString());
    EXPECT_FALSE(program.isOpen("edit")) << "the press that closed the menu is no half of a double click";
}

TEST(OverlayHost, TheKeyboardStaysInTheUppermostOverlayAndGoesBackToWhereItWas) {
    PanelProgram program;
    program.expand();
    QQuickItem* before = program.view.activeFocusItem();
    ASSERT_NE(before, nullptr);
    // The settings begin on none of their controls.
    for (const char* open : {"openQuickAdd", "openSettings"}) {
        program.call(open);
        const QQuickItem* overlay = program.view.overlays().surface(program.view.overlays().topmost());
        for (const int key : {Qt::Key_Tab, Qt::Key_Backtab}) {
            program.press(key);
            const QQuickItem* first = program.view.activeFocusItem();
            int steps = 0;
            do {
                program.press(key);
                ASSERT_TRUE(overlay->isAncestorOf(program.view.activeFocusItem())) << open;
            } while (program.view.activeFocusItem() != first && ++steps < 50);
            EXPECT_LT(steps, 50) << "the last is followed by the first";
            EXPECT_GT(steps, 1);
        }
        program.press(Qt::Key_Escape);
        EXPECT_EQ(program.view.activeFocusItem(), before);
    }
}

TEST(OverlayHost, TellsWhatIsOpenInTheWindowAndHowMuchRoomItNeeds) {
    PanelProgram program;
    program.expand();
    OverlayHost& overlays = program.view.overlays();
    const QSizeF open = program.view.extent();
    EXPECT_GE(open.height(), program.panel.expandedHeight() + 68);
    overlays.setRoomHeight(900);
    program.call("openSettings");
    ASSERT_EQ(overlays.surfaces().size(), 1U);
    const PanelSurface settings = overlays.surfaces().front();
    EXPECT_EQ(settings.kind, PanelSurface::Kind::popover);
    EXPECT_LE(settings.frame.right(), program.panel.expandedWidth() - 16);
    EXPECT_LE(settings.frame.bottom(), overlays.roomHeight());
    EXPECT_GE(program.view.extent().height(), settings.frame.bottom());
    program.press(Qt::Key_Escape);
    EXPECT_TRUE(overlays.surfaces().empty());

    overlays.setToast({300, 304, 340, 40});
    ASSERT_EQ(overlays.surfaces().size(), 2U);
    EXPECT_EQ(overlays.surfaces()[0].frame, QRectF(300, 304, 340, 40));
    EXPECT_EQ(overlays.surfaces()[1].frame, QRectF(300, 292, 340, 12)) << "the way to it";
    program.interaction.collapse(false);
    EXPECT_LT(program.view.extent().width(), 400) << "at rest the window is no larger than what it shows";
}

TEST(OverlayHost, ClosesEverythingWhenThePanelFolds) {
    PanelProgram program;
    program.expand();
    program.call("openSettings");
    program.interaction.collapse(false);
    EXPECT_EQ(program.view.overlays().topmost(), QString());
    EXPECT_TRUE(program.interaction.presentedOverlayIDs().isEmpty());
}

TEST(OverlayHost, StaysInItsPlaceAndGrowsWhenItsAnchorIsGone) {
    PanelProgram program;
    program.expand();
    auto anchor = std::make_unique<QQuickItem>(program.view.contentItem());
    anchor->setPosition({300, 100});
    anchor->setSize({100, 20});
    OverlayHost& overlays = program.view.overlays();
    overlays.present(QStringLiteral("surface"), QStringLiteral("Popover.qml"), anchor.get());
    QQuickItem& surface = *overlays.surface(QStringLiteral("surface"));
    const QRectF before(surface.position(), surface.size());
    anchor.reset();
    surface.setProperty("contentHeight", 150);
    EXPECT_EQ(QRectF(surface.position(), surface.size()), before.adjusted(0, 0, 0, 50));
}

TEST(OverlayHost, KeepsThePanelOpenForTheWayBackAfterSaving) {
    PanelProgram program;
    program.expand();
    program.interaction.pointerEntered();
    for (const bool pointerIsAway : {false, true}) {
        program.call("openQuickAdd");
        if (pointerIsAway)
            program.interaction.pointerExited();
        program.quickAdd.setTitle(QStringLiteral("Call"));
        program.press(Qt::Key_Return);
        program.time.advance(std::chrono::milliseconds(1));
        program.settle();
        ASSERT_FALSE(program.isOpen("quickAdd"));
    }
    EXPECT_TRUE(program.interaction.presentedRouteIDs().contains(NotchInteractionModel::toastRoute))
        << "a message that nobody sees yet holds it open, also in place of another";
    program.interaction.pointerExited();
    program.time.advance(std::chrono::milliseconds(300));
    EXPECT_TRUE(program.panel.isExpanded());
}

TEST(OverlayHost, TellsNobodyOfItsSurfacesAtTheEndOfThePanel) {
    auto program = std::make_unique<PanelProgram>();
    int told = 0;
    QObject::connect(&program->view.overlays(), &OverlayHost::allOverlaysClosed, qApp, [&] { ++told; });
    program->expand();
    program->call("openSort");
    program.reset();
    EXPECT_EQ(told, 0);
}

}  // namespace
