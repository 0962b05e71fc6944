#pragma once

#include "ui/Program.h"
#include "ui/panel/PanelView.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QTest>

#include <gtest/gtest.h>

namespace kestrant::test {

/// The first visible text item that shows this text.
inline QQuickItem* findText(QQuickItem* item, const QString& text, const char* property = "text") {
    if (!item->isVisible())
        return nullptr;
    if (item->property(property).toString() == text)
        return item;
    for (QQuickItem* child : item->childItems()) {
        if (QQuickItem* found = findText(child, text, property))
            return found;
    }
    return nullptr;
}

/// The program with its window.
struct PanelProgram : Program {
    explicit PanelProgram(PanelView::Loading loading = PanelView::Loading::immediate)
        : view({interaction, localizer, appearance, *this, settings}, loading) {
        // As wide as the panel, so that places in one are places in the other, and high enough for all
        // overlays.
        view.resize(view.width(), 800);
        appearance.setReducedMotion(true);
    }

    /// Opens the panel and lets it lay out its content.
    void expand() {
        load();
        interaction.expand();
        view.show();
        QCoreApplication::processEvents();
    }
    /// Lets reloads pass and the views follow.
    void settle() {
        Program::settle();
        // Drawing is what makes views lay out their items.
        view.grabWindow();
        QCoreApplication::processEvents();
    }
    /// What has the keyboard: the uppermost overlay, else the panel.
    [[nodiscard]] QQuickItem& keyItem() {
        QQuickItem* surface = view.overlays().surface(view.overlays().topmost());
        return surface ? *surface : *view.contentItem();
    }
    void press(int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(&view, &down);
        QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
        QCoreApplication::sendEvent(&view, &up);
        QCoreApplication::processEvents();
    }
    void click(QPointF at) {
        QTest::mouseClick(&view, Qt::LeftButton, {}, at.toPoint());
        QCoreApplication::processEvents();
    }
    /// Clicks on the middle of the control of the panel that is spoken like this.
    void click(const char* spokenName) {
        view.grabWindow();
        QQuickItem* control = findText(view.contentItem(), QString::fromUtf8(spokenName), "spokenName");
        ASSERT_NE(control, nullptr) << spokenName;
        click(control->mapToScene({control->width() / 2, control->height() / 2}));
    }
    void call(const char* function) {
        QMetaObject::invokeMethod(view.rootObject()->property("content").value<QQuickItem*>(), function);
        QCoreApplication::processEvents();
    }
    /// Whether a text is to be read on the surface that has the keyboard.
    [[nodiscard]] bool shows(const char* text) {
        return findText(&keyItem(), QString::fromUtf8(text)) != nullptr;
    }
    [[nodiscard]] bool isOpen(const char* overlay) {
        return view.overlays().isPresented(QString::fromUtf8(overlay));
    }

    PanelView view;
};

}  // namespace kestrant::test
