#include "platform/linux/x11/X11PanelWindow.h"

#include "platform/linux/x11/SurfaceManagement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <xcb/shape.h>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

/// As long as the focus may wander after it was asked for; longer where a compositor and the server have to
/// agree on it.
constexpr Duration askingTime = std::chrono::milliseconds(300);
constexpr Duration xwaylandAskingTime = std::chrono::milliseconds(1000);
constexpr Duration confirmingDelay = std::chrono::milliseconds(150);
constexpr Duration pointerLookDelay = std::chrono::milliseconds(50);

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
    : DesktopPanelWindow(window)
    , scheduler_(scheduler)
    , server_(X11Connection::ofApplication())
    , isXWayland_(server_.isXWayland())
    , scroll_(server_, desktopScrollsNaturally())
    , gestures_(scheduler,
                [this](const ScrollEvent& event) { return handler() && handler()->scrollWheel(event); }) {
    if (isXWayland_)
        scrim_.emplace();
    configureSurface(window);
    keepContentInPlace(server_, window);
    qGuiApp->installNativeEventFilter(this);
    connect(&compositor_, &CompositorWatcher::changed, this, [this] {
        applyShapes();
        Q_EMIT isCompositingChanged();
    });
    connect(&window, &QWindow::screenChanged, this, [this] { applyShapes(); });
}

X11PanelWindow::~X11PanelWindow() {
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

void X11PanelWindow::setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) {
    scroll_.setAssumeNaturalScrolling(isNatural.value_or(desktopScrollsNaturally()) != isInverted);
}

bool X11PanelWindow::isManaged() const {
    return !window().flags().testFlag(Qt::BypassWindowManagerHint);
}

void X11PanelWindow::setExtent(QSizeF size) {
    // A window manager that is asked to move a window takes its time, in which it would jump about.
    extent_ = isManaged() ? size.expandedTo(extent_) : size;
    placeWindow();
}

void X11PanelWindow::placeWindow() {
    if (frame().isEmpty())
        return;
    window().setGeometry(placeOf(extent_));
    applyShapes();
}

void X11PanelWindow::applyShapes() {
    const double scale = window().devicePixelRatio();
    std::vector<QRect> drawn = pixelRectangles(shape(), window().width(), scale);
    std::vector<QRect> reached = drawn;
    for (const PanelSurface& surface : surfaces()) {
        const QRectF frame = surface.frame.translated(-inPanel(QPointF()));
        const std::vector<QRect> pixels = roundedPixelRectangles(frame, surface.cornerRadius, scale);
        reached.insert(reached.end(), pixels.begin(), pixels.end());
        if (surface.kind != PanelSurface::Kind::gap)
            drawn.insert(drawn.end(), pixels.begin(), pixels.end());
    }
    if (ignoresMouseEvents())
        reached = pixelRectangles(NotchContainerShape{restingArea()}, window().width(), scale);
    if (compositor_.isCompositing())
        drawn.clear();
    else if (drawn.empty())
        drawn.emplace_back(-1, -1, 1, 1);
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
    const auto id = static_cast<xcb_window_t>(window().winId());
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
    if (isManaged() && window().isVisible())
        server_.tellWindowManager(static_cast<xcb_window_t>(window().winId()), "_NET_WM_STATE",
                                  {add, server_.atom("_NET_WM_STATE_ABOVE"), XCB_ATOM_NONE, 1});
}

void X11PanelWindow::orderFrontRegardless() {
    isWanted_ = true;
    if (isCovered())
        return;
    if (!window().isVisible())
        window().show();
    window().raise();
    applyShapes();
}

void X11PanelWindow::orderOut() {
    isWanted_ = false;
    window().hide();
}

void X11PanelWindow::setYieldsToFullScreen(bool yields) {
    if (yields == fullScreen_.has_value())
        return;
    if (yields)
        fullScreen_.emplace();
    else
        fullScreen_.reset();
    followFullScreen();
}

bool X11PanelWindow::isCovered() const {
    return fullScreen_ && !isKey_ && fullScreen_->covers(static_cast<xcb_window_t>(window().winId()));
}

void X11PanelWindow::followFullScreen() {
    if (!isWanted_)
        return;
    if (isCovered())
        window().hide();
    else
        orderFrontRegardless();
}

void X11PanelWindow::askForKey(Attempt attempt) {
    asking_ = scheduler_.after(isXWayland_ ? xwaylandAskingTime : askingTime, [this, attempt] {
        if (!keyWasTakenAway())
            return;
        // A compositor may return the focus to a window of its own that had it before the panel was opened
        // again. Some never let X clients have it of their own accord; the pointer still works then.
        if (!isXWayland_)
            Q_EMIT keyTakenWhileAsking();
        else if (attempt == Attempt::first)
            askForKey(Attempt::last);
        else
            focus_.wasRefused();
    });
    focus_.take(window());
    if (isXWayland_ && !isManaged())
        confirming_ = scheduler_.after(confirmingDelay, [this] {
            if (isKey_)
                focus_.confirm(window());
        });
}

void X11PanelWindow::makeKey() {
    isKey_ = true;
    if (fullScreen_)
        followFullScreen();
    setAcceptsFocus(window(), true);
    askForKey();
}

void X11PanelWindow::resignKey() {
    isKey_ = false;
    setAcceptsFocus(window(), false);
    focus_.giveBack();
    if (fullScreen_)
        followFullScreen();
}

void X11PanelWindow::pressed() {
    // No window manager gives the focus to a window it does not manage when it is clicked.
    if (isKey_ && !focus_.isOurs())
        askForKey();
}

bool X11PanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window()) {
        if (event->type() == QEvent::Wheel)
            return consumedScroll_ != 0 && static_cast<QWheelEvent*>(event)->timestamp() == consumedScroll_;
        if (event->type() == QEvent::Enter) {
            scroll_.refresh();
            watchPointerLeave();
        } else if (event->type() == QEvent::Leave) {
            gestures_.endAll();
        }
    }
    return DesktopPanelWindow::eventFilter(watched, event);
}

void X11PanelWindow::watchPointerLeave() {
    if (scrim_ && !isManaged())
        scrim_->spreadBelow(static_cast<xcb_window_t>(window().winId()));
}

void X11PanelWindow::focusArrived(const xcb_focus_in_event_t& event) {
    // One that follows the pointer is nobody's.
    if (event.detail == XCB_NOTIFY_DETAIL_POINTER)
        return;
    focus_.arrived();
    // A request for the focus may be granted after the panel has folded.
    if (!isKey_ && event.event == static_cast<xcb_window_t>(window().winId()))
        focus_.giveBack();
}

bool X11PanelWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & ~0x80) == XCB_FOCUS_IN)
        focusArrived(reinterpret_cast<const xcb_focus_in_event_t&>(event));
    if (fullScreen_ && fullScreen_->handle(event))
        fullScreenLook_ = scheduler_.after(Duration::zero(), [this] { followFullScreen(); });
    if (scrim_ && scrim_->handle(event))
        // While the panel changes its size the pointer may be beside it for a moment.
        pointerLook_ = scheduler_.after(pointerLookDelay, [this] {
            const XcbReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
                server_.get(), xcb_query_pointer(server_.get(), server_.root()), nullptr));
            if (pointer && pointer->child == static_cast<xcb_window_t>(window().winId()))
                watchPointerLeave();
        });
    if (scroll_.isHierarchyChange(event)) {
        scroll_.refresh();
    } else if (const auto* motion = scroll_.motionEvent(event);
               motion && motion->event == static_cast<xcb_window_t>(window().winId())) {
        if (const auto sample = scroll_.sample(*motion); sample && gestures_.add(*sample))
            consumedScroll_ = motion->time;
    }
    return false;
}

}  // namespace kestrant
