#include "platform/linux/X11PanelWindow.h"

#include "platform/linux/OverlaySurface.h"
#include "platform/linux/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <xcb/shape.h>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

/// Desktops under which touchpads scroll naturally unless told otherwise; asked only of devices that do not
/// tell.
bool desktopScrollsNaturally() {
    return qgetenv("XDG_CURRENT_DESKTOP").contains("GNOME");
}

bool isEditingText() {
    QObject* focus = QGuiApplication::focusObject();
    if (!focus)
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QGuiApplication::sendEvent(focus, &query);
    return query.value(Qt::ImEnabled).toBool();
}

std::vector<xcb_rectangle_t> toServer(const std::vector<QRect>& rectangles) {
    std::vector<xcb_rectangle_t> result;
    result.reserve(rectangles.size());
    for (const QRect& rectangle : rectangles)
        result.push_back({static_cast<int16_t>(rectangle.x()), static_cast<int16_t>(rectangle.y()),
                          static_cast<uint16_t>(rectangle.width()),
                          static_cast<uint16_t>(rectangle.height())});
    return result;
}

}  // namespace

X11PanelWindow::X11PanelWindow(QWindow& window, Scheduler& scheduler)
    : window_(window)
    , server_(X11Connection::ofApplication())
    , scroll_(server_, desktopScrollsNaturally())
    , gestures_(scheduler,
                [this](const ScrollEvent& event) { return handler_ && handler_->scrollWheel(event); }) {
    configureSurface(window_);
    window_.installEventFilter(this);
    qGuiApp->installNativeEventFilter(this);
    connect(&compositor_, &CompositorWatcher::changed, this, [this] {
        applyShapes();
        Q_EMIT isCompositingChanged();
    });
    connect(&window_, &QWindow::screenChanged, this, [this] { applyShapes(); });
}

X11PanelWindow::~X11PanelWindow() {
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

bool X11PanelWindow::isManaged() const {
    return !window_.flags().testFlag(Qt::BypassWindowManagerHint);
}

void X11PanelWindow::adoptOverlay(QWindow& surface) {
    configureOverlaySurface(surface, window_);
    surface.installEventFilter(this);
    overlays_.emplace_back(&surface);
    // Before it goes: a focus that falls back to nobody is passed on by the window manager.
    connect(&surface, &QWindow::visibleChanged, this, [this, &surface](bool visible) {
        passFocusOn_ = !visible && focus_.isOurs();
        if (passFocusOn_)
            focusTopmostExcept(&surface);
    });
}

void X11PanelWindow::focusOverlay(QWindow& surface) {
    focus_.take(surface);
}

void X11PanelWindow::focusPanel() {
    if (focus_.isOurs())
        focusTopmostExcept(nullptr);
}

void X11PanelWindow::focusTopmostExcept(const QWindow* closing) {
    std::erase_if(overlays_, [](const QPointer<QWindow>& overlay) { return !overlay; });
    const auto topmost = std::find_if(overlays_.rbegin(), overlays_.rend(), [closing](const auto& overlay) {
        return overlay != closing && overlay->isVisible();
    });
    if (topmost != overlays_.rend())
        focus_.take(**topmost);
    else if (isKey_)
        focus_.take(window_);
}

void X11PanelWindow::setFrame(const QRectF& frame) {
    window_.setGeometry(flipped(frame).toRect());
    applyShapes();
}

void X11PanelWindow::setShape(const NotchContainerShape& shape) {
    shape_ = shape;
    applyShapes();
}

void X11PanelWindow::setRestingArea(QSizeF size) {
    restingArea_ = size;
    applyShapes();
}

std::vector<QRect> X11PanelWindow::pixelsOf(const NotchContainerShape& shape) const {
    return pixelRectangles(shape, window_.width(), window_.devicePixelRatio());
}

void X11PanelWindow::applyShapes() {
    const auto id = static_cast<xcb_window_t>(window_.winId());
    if (compositor_.isCompositing()) {
        xcb_shape_mask(server_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id, 0, 0, XCB_PIXMAP_NONE);
    } else {
        const auto drawn = toServer(pixelsOf(shape_));
        xcb_shape_rectangles(server_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                             XCB_CLIP_ORDERING_YX_BANDED, id, 0, 0, static_cast<uint32_t>(drawn.size()),
                             drawn.data());
    }
    const auto reached = toServer(pixelsOf(ignoresMouseEvents_ ? NotchContainerShape{restingArea_} : shape_));
    xcb_shape_rectangles(server_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_YX_BANDED, id,
                         0, 0, static_cast<uint32_t>(reached.size()), reached.data());
    server_.flush();
}

void X11PanelWindow::setPanelLevel() {
    constexpr uint32_t add = 1;
    if (isManaged() && window_.isVisible())
        server_.tellWindowManager(static_cast<xcb_window_t>(window_.winId()), "_NET_WM_STATE",
                                  {add, server_.atom("_NET_WM_STATE_ABOVE"), XCB_ATOM_NONE, 1});
}

void X11PanelWindow::orderFrontRegardless() {
    if (!window_.isVisible())
        window_.show();
    window_.raise();
    // Nothing but their order keeps popovers above the panel when no window manager looks after them.
    for (const QPointer<QWindow>& overlay : overlays_) {
        if (overlay && overlay->isVisible())
            overlay->raise();
    }
    applyShapes();
}

void X11PanelWindow::orderOut() {
    window_.hide();
}

void X11PanelWindow::setIgnoresMouseEvents(bool ignores) {
    ignoresMouseEvents_ = ignores;
    applyShapes();
}

void X11PanelWindow::makeKey() {
    isKey_ = true;
    if (isManaged())
        setAcceptsFocus(window_, true);
    focus_.take(window_);
}

void X11PanelWindow::resignKey() {
    isKey_ = false;
    if (isManaged())
        setAcceptsFocus(window_, false);
    focus_.giveBack();
}

bool X11PanelWindow::mousePressed(QEvent* event) {
    const auto* press = static_cast<QMouseEvent*>(event);
    // No window manager gives the focus to a window it does not manage when it is clicked.
    if (isKey_ && !focus_.isOurs())
        focus_.take(window_);
    if (press->button() != Qt::LeftButton || !handler_)
        return false;
    const QPointF location(press->position().x(), window_.height() - press->position().y());
    return handler_->leftMouseDown(location);
}

bool X11PanelWindow::keyPressed(QEvent* event) {
    const auto* press = static_cast<QKeyEvent*>(event);
    if (!handler_ || press->key() < Qt::Key_Space || press->key() > Qt::Key_ydiaeresis)
        return false;
    return handler_->performKeyEquivalent(
        {QString(QChar(press->key())), press->modifiers(), isEditingText()});
}

bool X11PanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &window_) {
        auto& overlay = *static_cast<QWindow*>(watched);
        if (event->type() == QEvent::MouseButtonPress && !focus_.isOurs())
            focus_.take(overlay);
        // And once more when it has gone: a window manager that managed it has meanwhile chosen someone.
        if (event->type() == QEvent::Hide && std::exchange(passFocusOn_, false) && isManaged())
            focusTopmostExcept(&overlay);
        return false;
    }
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        pressConsumed_ = mousePressed(event);
        return pressConsumed_;
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
        return pressConsumed_;
    case QEvent::KeyPress:
        return keyPressed(event);
    case QEvent::Wheel:
        return consumedScroll_ != 0 && static_cast<QWheelEvent*>(event)->timestamp() == consumedScroll_;
    case QEvent::Enter:
        scroll_.refresh();
        return false;
    case QEvent::Leave:
        gestures_.endAll();
        return false;
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

void X11PanelWindow::focusArrived(const xcb_focus_in_event_t& event) {
    // One that follows the pointer is nobody's.
    if (event.detail == XCB_NOTIFY_DETAIL_POINTER)
        return;
    focus_.arrived();
    // A request for the focus may be granted after the panel has folded.
    if (!isKey_ && event.event == static_cast<xcb_window_t>(window_.winId()))
        focus_.giveBack();
}

bool X11PanelWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & ~0x80) == XCB_FOCUS_IN)
        focusArrived(reinterpret_cast<const xcb_focus_in_event_t&>(event));
    if (scroll_.isHierarchyChange(event)) {
        scroll_.refresh();
    } else if (const auto* motion = scroll_.motionEvent(event);
               motion && motion->event == static_cast<xcb_window_t>(window_.winId())) {
        if (const auto sample = scroll_.sample(*motion); sample && gestures_.add(*sample))
            consumedScroll_ = motion->time;
    }
    return false;
}

}  // namespace kestrant
