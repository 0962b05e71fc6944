#include "platform/linux/x11/X11PanelWindow.h"

#include "platform/linux/x11/ScreenCoordinates.h"
#include "platform/linux/x11/SurfaceManagement.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <xcb/shape.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kestrant {

namespace {

/// As long as the focus may wander after it was asked for.
constexpr Duration askingTime = std::chrono::milliseconds(300);

/// Desktops under which touchpads scroll naturally unless told otherwise: the best guess until their settings
/// are known.
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

/// Has the server keep what is drawn where it is on the screen when the window grows or shrinks about the
/// middle of its top edge, and nothing at all where it grows, until the new picture comes.
void keepContentInPlace(const X11Connection& server, const QWindow& window) {
    constexpr uint32_t transparent = 0;
    const uint32_t values[] = {transparent, XCB_GRAVITY_NORTH};
    xcb_change_window_attributes(server.get(), static_cast<xcb_window_t>(window.winId()),
                                 XCB_CW_BACK_PIXEL | XCB_CW_BIT_GRAVITY, values);
}

}  // namespace

X11PanelWindow::X11PanelWindow(QWindow& window, Scheduler& scheduler)
    : window_(window)
    , scheduler_(scheduler)
    , server_(X11Connection::ofApplication())
    , isXWayland_(server_.isXWayland())
    , scroll_(server_, desktopScrollsNaturally())
    , gestures_(scheduler,
                [this](const ScrollEvent& event) { return handler_ && handler_->scrollWheel(event); }) {
    configureSurface(window_);
    keepContentInPlace(server_, window_);
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

void X11PanelWindow::setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) {
    scroll_.setAssumeNaturalScrolling(isNatural.value_or(desktopScrollsNaturally()) != isInverted);
}

bool X11PanelWindow::isManaged() const {
    return !window_.flags().testFlag(Qt::BypassWindowManagerHint);
}

QPointF X11PanelWindow::inPanel(QPointF inWindow) const {
    return inWindow - QPointF((window_.width() - frame_.width()) / 2, 0);
}

void X11PanelWindow::setFrame(const QRectF& frame) {
    frame_ = flipped(frame).toRect();
    placeWindow();
}

void X11PanelWindow::setExtent(QSizeF size) {
    // A window manager that is asked to move a window takes its time, in which it would jump about.
    extent_ = isManaged() ? size.expandedTo(extent_) : size;
    placeWindow();
}

void X11PanelWindow::placeWindow() {
    if (frame_.isEmpty())
        return;
    const QSizeF size = extent_.isEmpty() ? frame_.size() : extent_;
    // As much wider on either side, to the pixel.
    const double beside = std::ceil((size.width() - frame_.width()) / 2);
    window_.setGeometry(
        QRectF(frame_.left() - beside, frame_.top(), frame_.width() + 2 * beside, std::ceil(size.height()))
            .toRect());
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

void X11PanelWindow::setSurfaces(const std::vector<PanelSurface>& surfaces) {
    surfaces_ = surfaces;
    applyShapes();
}

void X11PanelWindow::applyShapes() {
    const double scale = window_.devicePixelRatio();
    std::vector<QRect> drawn = pixelRectangles(shape_, window_.width(), scale);
    std::vector<QRect> reached = drawn;
    for (const PanelSurface& surface : surfaces_) {
        const QRectF frame = surface.frame.translated(-inPanel(QPointF()));
        const std::vector<QRect> pixels = roundedPixelRectangles(frame, surface.cornerRadius, scale);
        reached.insert(reached.end(), pixels.begin(), pixels.end());
        if (surface.kind != PanelSurface::Kind::gap)
            drawn.insert(drawn.end(), pixels.begin(), pixels.end());
    }
    if (ignoresMouseEvents_)
        reached = pixelRectangles(NotchContainerShape{restingArea_}, window_.width(), scale);
    if (compositor_.isCompositing())
        drawn.clear();
    // A compositor has work with every request, whether or not it changes something.
    setRegion(XCB_SHAPE_SK_BOUNDING, std::move(drawn), bounding_);
    setRegion(XCB_SHAPE_SK_INPUT, std::move(reached), input_);
    server_.flush();
}

void X11PanelWindow::setRegion(xcb_shape_kind_t kind, std::vector<QRect> rectangles,
                               std::optional<std::vector<QRect>>& present) {
    if (present == rectangles)
        return;
    present = std::move(rectangles);
    const auto id = static_cast<xcb_window_t>(window_.winId());
    if (kind == XCB_SHAPE_SK_BOUNDING && present->empty()) {
        xcb_shape_mask(server_.get(), XCB_SHAPE_SO_SET, kind, id, 0, 0, XCB_PIXMAP_NONE);
        return;
    }
    const std::vector<xcb_rectangle_t> region = toServer(*present);
    xcb_shape_rectangles(server_.get(), XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0,
                         static_cast<uint32_t>(region.size()), region.data());
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
    applyShapes();
}

void X11PanelWindow::orderOut() {
    window_.hide();
}

void X11PanelWindow::setIgnoresMouseEvents(bool ignores) {
    ignoresMouseEvents_ = ignores;
    applyShapes();
}

void X11PanelWindow::askForKey() {
    asking_ = scheduler_.after(askingTime, [this] {
        if (keyWasTakenAway())
            Q_EMIT keyTakenWhileAsking();
    });
    focus_.take(window_);
}

void X11PanelWindow::makeKey() {
    isKey_ = true;
    setAcceptsFocus(window_, true);
    askForKey();
}

void X11PanelWindow::resignKey() {
    isKey_ = false;
    setAcceptsFocus(window_, false);
    focus_.giveBack();
}

bool X11PanelWindow::mousePressed(QEvent* event) {
    const auto* press = static_cast<QMouseEvent*>(event);
    // No window manager gives the focus to a window it does not manage when it is clicked.
    if (isKey_ && !focus_.isOurs())
        askForKey();
    if (press->button() != Qt::LeftButton || !handler_)
        return false;
    const QPointF place = inPanel(press->position());
    const bool isOnSurface = std::any_of(surfaces_.begin(), surfaces_.end(), [place](const auto& surface) {
        return surface.frame.contains(place);
    });
    if (isOnSurface || !QRectF(QPointF(), frame_.size()).contains(place))
        return false;
    return handler_->leftMouseDown({place.x(), frame_.height() - place.y()});
}

bool X11PanelWindow::keyPressed(QEvent* event) {
    const auto* press = static_cast<QKeyEvent*>(event);
    if (!handler_ || press->key() < Qt::Key_Space || press->key() > Qt::Key_ydiaeresis)
        return false;
    return handler_->performKeyEquivalent(
        {QString(QChar(press->key())), press->modifiers(), isEditingText()});
}

bool X11PanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &window_)
        return false;
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
