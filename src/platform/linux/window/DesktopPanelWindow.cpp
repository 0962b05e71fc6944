#include "platform/linux/window/DesktopPanelWindow.h"

#include "platform/linux/window/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace kestrant {
namespace {

bool isEditingText() {
    QObject* focus = QGuiApplication::focusObject();
    if (!focus)
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QGuiApplication::sendEvent(focus, &query);
    return query.value(Qt::ImEnabled).toBool();
}

}  // namespace

DesktopPanelWindow::DesktopPanelWindow(QWindow& window) : window_(window) {
    window_.installEventFilter(this);
}

bool DesktopPanelWindow::desktopScrollsNaturally() {
    return qgetenv("XDG_CURRENT_DESKTOP").contains("GNOME");
}

QPointF DesktopPanelWindow::inPanel(QPointF inWindow) const {
    return inWindow - QPointF((window_.width() - frame_.width()) / 2, 0);
}

QRect DesktopPanelWindow::placeOf(QSizeF extent) const {
    const QSizeF size = extent.isEmpty() ? frame_.size() : extent;
    // As much wider on either side, to the pixel.
    const double beside = std::ceil((size.width() - frame_.width()) / 2);
    return QRectF(frame_.left() - beside, frame_.top(), frame_.width() + 2 * beside, std::ceil(size.height()))
        .toRect();
}

void DesktopPanelWindow::setFrame(const QRectF& frame) {
    frame_ = flipped(frame).toRect();
    placeWindow();
}

void DesktopPanelWindow::setShape(const NotchContainerShape& shape) {
    shape_ = shape;
    applyShapes();
}

void DesktopPanelWindow::setRestingArea(QSizeF size) {
    restingArea_ = size;
    applyShapes();
}

void DesktopPanelWindow::setSurfaces(const std::vector<PanelSurface>& surfaces) {
    surfaces_ = surfaces;
    applyShapes();
}

void DesktopPanelWindow::setIgnoresMouseEvents(bool ignores) {
    ignoresMouseEvents_ = ignores;
    applyShapes();
}

bool DesktopPanelWindow::mousePressed(QEvent* event) {
    const auto* press = static_cast<QMouseEvent*>(event);
    pressed();
    if (press->button() != Qt::LeftButton || !handler_)
        return false;
    const QPointF place = inPanel(press->position());
    const bool isOnSurface = std::any_of(surfaces_.begin(), surfaces_.end(), [place](const auto& surface) {
        return surface.frame.contains(place);
    });
    if (isOnSurface || !QRectF(QPointF(), frame_.size()).contains(place))
        return false;
    if (press->modifiers() == Qt::AltModifier) {
        dragStart_ = press->globalPosition().x();
        return true;
    }
    return handler_->leftMouseDown({place.x(), frame_.height() - place.y()});
}

void DesktopPanelWindow::mouseDragged(QEvent* event) {
    if (!dragStart_ || !handler_)
        return;
    const bool ended = event->type() == QEvent::MouseButtonRelease;
    const double points = static_cast<QMouseEvent*>(event)->globalPosition().x() - *dragStart_;
    if (ended)
        dragStart_.reset();
    if (ended || knowsPlaces())
        handler_->dragged(points, ended);
}

bool DesktopPanelWindow::keyPressed(QEvent* event) {
    const auto* press = static_cast<QKeyEvent*>(event);
    if (!handler_ || press->key() < Qt::Key_Space || press->key() > Qt::Key_ydiaeresis)
        return false;
    return handler_->performKeyEquivalent(
        {QString(QChar(press->key())), press->modifiers(), isEditingText()});
}

bool DesktopPanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &window_)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        pressConsumed_ = mousePressed(event);
        return pressConsumed_;
    case QEvent::MouseMove:
        mouseDragged(event);
        return dragStart_.has_value();
    case QEvent::MouseButtonRelease:
        mouseDragged(event);
        return pressConsumed_;
    case QEvent::MouseButtonDblClick:
        return pressConsumed_;
    case QEvent::KeyPress:
        return keyPressed(event);
    case QEvent::Close:
        event->ignore();
        return true;
    case QEvent::Resize:
        applyShapes();
        return false;
    default:
        return false;
    }
}

}  // namespace kestrant
