#pragma once

#include "ui/PanelView.h"
#include "ui/Program.h"

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
        : view({interaction, localizer, appearance, panel, reminders, days, quickAdd, settings, newEvent,
                calendarEdit, reminderEdit, history, yearReveal},
               loading) {
        // As the platform does: the uppermost surface, at last the panel, gets the focus.
        OverlayHost& overlays = view.overlays();
        QObject::connect(&overlays, &OverlayHost::overlaySurfaceShown, &view,
                         [](QWindow* surface) { surface->requestActivate(); });
        QObject::connect(&overlays, &OverlayHost::allOverlaysClosed, &view,
                         [this] { view.requestActivate(); });
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
    /// The surface that has the keyboard: the uppermost overlay, else the panel.
    [[nodiscard]] QQuickWindow& keyWindow() {
        QQuickWindow* surface = view.overlays().surface(view.overlays().topmost());
        return surface ? *surface : view;
    }
    void press(int key, const QString& text = {}) {
        QQuickWindow& window = keyWindow();
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window, &down);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window, &up);
        QCoreApplication::processEvents();
    }
    void click(QQuickWindow& window, QPointF at) {
        QTest::mouseClick(&window, Qt::LeftButton, {}, at.toPoint());
        QCoreApplication::processEvents();
    }
    /// Clicks on the middle of the control of the panel that is spoken like this.
    void click(const char* spokenName) {
        view.grabWindow();
        QQuickItem* control = findText(view.contentItem(), QString::fromUtf8(spokenName), "spokenName");
        ASSERT_NE(control, nullptr) << spokenName;
        click(view, control->mapToScene({control->width() / 2, control->height() / 2}));
    }
    void call(const char* function) {
        QMetaObject::invokeMethod(view.rootObject()->property("content").value<QQuickItem*>(), function);
        QCoreApplication::processEvents();
    }
    /// Whether a text is to be read on the surface that has the keyboard.
    [[nodiscard]] bool shows(const char* text) {
        return findText(keyWindow().contentItem(), QString::fromUtf8(text)) != nullptr;
    }
    [[nodiscard]] bool isOpen(const char* overlay) {
        return view.overlays().isPresented(QString::fromUtf8(overlay));
    }

    PanelView view;
};

}  // namespace kestrant::test
