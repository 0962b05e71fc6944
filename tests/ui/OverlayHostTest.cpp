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

TEST(OverlayHost, LetsTheNativeWindowBeMadeBeforeItIsShown) {
    PanelProgram program;
    program.expand();
    bool visibleWhenCreated = true;
    QObject::connect(&program.view.overlays(), &OverlayHost::overlaySurfaceCreated, &program.view,
                     [&](QWindow* surface) { visibleWhenCreated = surface->isVisible(); });
    QSignalSpy shown(&program.view.overlays(), &OverlayHost::overlaySurfaceShown);
    program.call("openLists");
    EXPECT_FALSE(visibleWhenCreated);
    EXPECT_EQ(shown.count(), 1);
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

TEST(OverlayHost, ClosesFromTheTopLayerByLayer) {
    PanelProgram program;
    program.expand();
    program.call("openQuickAdd");
    QQuickWindow* quickAdd = program.view.overlays().surface(QStringLiteral("quickAdd"));
    program.view.overlays().present(QStringLiteral("menu"), QStringLiteral("MenuPopover.qml"),
                                    quickAdd->contentItem(), {{QStringLiteral("entries"), QVariantList()}});
    EXPECT_EQ(program.interaction.presentedOverlayIDs().size(), 2);

    QSignalSpy allClosed(&program.view.overlays(), &OverlayHost::allOverlaysClosed);
    program.click(*quickAdd, {60, 40});
    EXPECT_EQ(program.view.overlays().topmost(), QStringLiteral("quickAdd"));
    EXPECT_EQ(allClosed.count(), 0);
    program.click(program.view, {400, 200});
    EXPECT_EQ(program.view.overlays().topmost(), QString());
    EXPECT_EQ(allClosed.count(), 1);
}

TEST(OverlayHost, ClosesEverythingWhenThePanelFolds) {
    PanelProgram program;
    program.expand();
    program.call("openSettings");
    program.interaction.collapse(false);
    EXPECT_EQ(program.view.overlays().topmost(), QString());
    EXPECT_TRUE(program.interaction.presentedOverlayIDs().isEmpty());
}

TEST(OverlayHost, PassesKeysToASurfaceThatHasNotGotTheFocusYet) {
    PanelProgram program;
    program.expand();
    program.call("openQuickAdd");
    // The window system still takes the panel for the one that has the keyboard.
    program.view.requestActivate();
    QCoreApplication::processEvents();
    for (const QChar letter : QStringLiteral("tea")) {
        QKeyEvent down(QEvent::KeyPress, letter.toUpper().unicode(), Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&program.view, &down);
        QKeyEvent up(QEvent::KeyRelease, letter.toUpper().unicode(), Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&program.view, &up);
    }
    EXPECT_EQ(program.quickAdd.title(), QStringLiteral("tea"));
}

TEST(OverlayHost, StaysInItsPlaceAndGrowsWhenItsAnchorIsGone) {
    PanelProgram program;
    program.expand();
    auto anchor = std::make_unique<QQuickItem>(program.view.contentItem());
    anchor->setPosition({300, 100});
    anchor->setSize({100, 20});
    OverlayHost& overlays = program.view.overlays();
    overlays.present(QStringLiteral("surface"), QStringLiteral("Popover.qml"), anchor.get());
    QQuickWindow& surface = *overlays.surface(QStringLiteral("surface"));
    const QRect before = surface.geometry();
    anchor.reset();
    surface.contentItem()->childItems().constFirst()->setProperty("contentHeight", 150);
    EXPECT_EQ(surface.geometry(), before.adjusted(0, 0, 0, 50));
}

TEST(OverlayHost, KeepsThePanelOpenForTheWayBackAfterSaving) {
    PanelProgram program;
    program.expand();
    program.interaction.pointerEntered();
    program.call("openQuickAdd");
    program.interaction.pointerExited();
    program.quickAdd.setTitle(QStringLiteral("Call"));
    program.press(Qt::Key_Return);
    program.time.advance(std::chrono::milliseconds(1));
    ASSERT_FALSE(program.isOpen("quickAdd"));
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
