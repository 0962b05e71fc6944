#include "platform/linux/wayland/WaylandPanelWindow.h"

#include "notch/NotchContainerShape.h"
#include "platform/linux/window/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QRegion>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <cmath>
#include <utility>

namespace kestrant {
namespace {

/// As long as the focus may wander after it was asked for.
constexpr Duration askingTime = std::chrono::milliseconds(300);
/// Until a surface that the compositor took away is made anew; its screen goes a moment later.
constexpr Duration appearingDelay = std::chrono::milliseconds(100);

ScrollEvent::Phase phaseOf(Qt::ScrollPhase phase) {
    switch (phase) {
    case Qt::ScrollBegin:
        return ScrollEvent::Phase::began;
    case Qt::ScrollUpdate:
        return ScrollEvent::Phase::changed;
    case Qt::ScrollEnd:
        return ScrollEvent::Phase::ended;
    case Qt::NoScrollPhase:
    case Qt::ScrollMomentum:
        break;
    }
    return ScrollEvent::Phase::none;
}

}  // namespace

WaylandPanelWindow::WaylandPanelWindow(QWindow& window, Scheduler& scheduler)
    : DesktopPanelWindow(window)
    , scheduler_(scheduler) {
    // Has Qt give no role to windows that bypass the window manager. It looks there for every frame.
    qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
    window.setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    QSurfaceFormat format = window.format();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this] { appear(); });
    // Qt goes on with a screen that stands in for missing ones.
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this](const QScreen* gone) {
        if (gone == roleScreen_)
            disappear();
    });
}

WaylandPanelWindow::~WaylandPanelWindow() = default;

bool WaylandPanelWindow::keyWasTakenAway() const {
    return isKey_ && hasKey_ && !isAskingForKey() && !window().isActive();
}

void WaylandPanelWindow::setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) {
    scrollsNaturally_ = isNatural.value_or(desktopScrollsNaturally()) != isInverted;
}

std::optional<QPointF> WaylandPanelWindow::location() const {
    return pointer_ ? std::optional(flipped(frame().topLeft() + inPanel(*pointer_))) : std::nullopt;
}

QScreen* WaylandPanelWindow::screen() const {
    QScreen* const below = QGuiApplication::screenAt(frame().center().toPoint());
    return below && !below->name().isEmpty() ? below : nullptr;
}

void WaylandPanelWindow::reappear() {
    disappear();
    appear();
}

void WaylandPanelWindow::setIsBelowBars(bool isBelow) {
    place_.isBelowBars = isBelow;
    if (role_)
        role_->setPlace(place_);
    window().requestUpdate();
}

void WaylandPanelWindow::setYieldsToFullScreen(bool yields) {
    place_.isBelowFullScreen = yields;
    if (role_)
        role_->setPlace(place_);
    window().requestUpdate();
}

void WaylandPanelWindow::setExtent(QSizeF size) {
    extent_ = size;
    placeWindow();
}

void WaylandPanelWindow::placeWindow() {
    if (frame().isEmpty())
        return;
    const QSize wanted = placeOf(extent_).size();
    const QSize size(std::max(size_.width(), wanted.width()), wanted.height());
    if (screen() != roleScreen_)
        disappear();
    // The shell hangs it from the middle by itself.
    if (const QScreen* below = screen()) {
        const double fromMiddle = frame().center().x() - QRectF(below->geometry()).center().x();
        place_.left = std::abs(fromMiddle) < 1
                          ? std::nullopt
                          : std::optional(static_cast<int>(frame().center().x() - below->geometry().left() -
                                                           size.width() / 2.0));
    }
    if (role_)
        role_->setPlace(place_);
    if (size != size_) {
        size_ = size;
        if (role_)
            role_->setSize(size_);
        window().resize(size_);
        applyShapes();
    }
    appear();
}

void WaylandPanelWindow::applyShapes() {
    QRegion reached;
    const auto add = [&](const std::vector<QRect>& rectangles) {
        for (const QRect& rectangle : rectangles)
            reached += rectangle;
    };
    if (ignoresMouseEvents()) {
        add(pixelRectangles(NotchContainerShape{restingArea()}, window().width(), 1));
    } else {
        add(pixelRectangles(shape(), window().width(), 1));
        for (const PanelSurface& surface : surfaces())
            add(roundedPixelRectangles(surface.frame.translated(-inPanel(QPointF())), surface.cornerRadius,
                                       1));
    }
    // An empty region would be the whole window.
    if (reached.isEmpty())
        reached = QRect(-1, -1, 1, 1);
    if (reached == window().mask())
        return;
    window().setMask(reached);
    window().requestUpdate();
}

void WaylandPanelWindow::appear() {
    if (!isWanted_ || role_)
        return;
    roleScreen_ = screen();
    if (!roleScreen_ || !shell_.isBound())
        return;
    window().create();
    role_ = std::make_unique<LayerShell::Surface>(shell_, window(), roleScreen_, size_, place_, [this] {
        appearing_ = scheduler_.after(appearingDelay, [this] { reappear(); });
    });
    if (isKey_)
        role_->setWantsKeyboard(true);
    window().show();
    applyShapes();
}

void WaylandPanelWindow::disappear() {
    if (!role_)
        return;
    pointer_.reset();
    role_.reset();
    roleScreen_ = nullptr;
    window().hide();
    window().destroy();
}

void WaylandPanelWindow::orderFrontRegardless() {
    isWanted_ = true;
    appear();
}

void WaylandPanelWindow::orderOut() {
    isWanted_ = false;
    disappear();
}

void WaylandPanelWindow::makeKey() {
    isKey_ = true;
    hasKey_ = window().isActive();
    asking_ = scheduler_.after(askingTime, [this] {
        if (keyWasTakenAway())
            Q_EMIT keyTakenWhileAsking();
    });
    if (role_)
        role_->setWantsKeyboard(true);
}

void WaylandPanelWindow::resignKey() {
    isKey_ = false;
    asking_ = {};
    if (!role_)
        return;
    if (!shell_.keepsKeyboard()) {
        role_->setWantsKeyboard(false);
    } else if (window().isActive()) {
        reappear();
    }
}

bool WaylandPanelWindow::scrolled(QEvent* event) {
    const auto& wheel = *static_cast<QWheelEvent*>(event);
    if (!handler() || wheel.phase() == Qt::NoScrollPhase)
        return false;
    const QPointF delta = wheel.pixelDelta();
    return handler()->scrollWheel({.deltaX = delta.x(),
                                   .deltaY = delta.y(),
                                   .hasPreciseDeltas = true,
                                   .isMomentum = wheel.phase() == Qt::ScrollMomentum,
                                   .directionInverted = scrollsNaturally_,
                                   .phase = phaseOf(wheel.phase())});
}

bool WaylandPanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window()) {
        switch (event->type()) {
        case QEvent::Enter:
            pointer_ = static_cast<QEnterEvent*>(event)->position();
            break;
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            pointer_ = static_cast<QMouseEvent*>(event)->position();
            break;
        case QEvent::Leave:
            pointer_.reset();
            break;
        case QEvent::FocusIn:
            hasKey_ = true;
            break;
        case QEvent::Wheel:
            if (scrolled(event))
                return true;
            break;
        default:
            break;
        }
    }
    return DesktopPanelWindow::eventFilter(watched, event);
}

}  // namespace kestrant
