#include "notch/NotchPanelController.h"

#include <QPointer>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kestrant {

namespace {

constexpr Duration pollInterval = std::chrono::microseconds(1'000'000 / 60);
/// As long as a press on the notch may be meant for what was there before the panel opened or folded under
/// it: a pointer that comes to click has opened the panel on its way, and a double click presses twice.
constexpr Duration aimingTime = std::chrono::milliseconds(400);
/// Points within which a panel that is carried along snaps to the middle.
constexpr double snapDistance = 12.0;
/// Keeps a panel open that was opened without the pointer.
const QString openedByCommandRoute = QStringLiteral("panel.opened-by-command");

}  // namespace

NotchPanelController::NotchPanelController(const Environment& environment, NotchInteractionModel& model,
                                           NotchGeometry& geometry)
    : environment_(environment)
    , model_(model)
    , geometry_(geometry)
    , panel_(environment.window)
    , hasScreen_(NotchGeometry::chooseScreen(environment.screens).has_value()) {
    panel_.onPrimaryClick = [this](QPointF location, const QRectF& frame) {
        return primaryClick(location, frame);
    };
    panel_.onSwipeDown = [this] { return swipeDown(); };
    panel_.onSwipeUp = [this] { return swipeUp(); };
    panel_.onDrag = [this](double points, bool ended) { drag(points, ended); };
    panel_.onKeyboardCommand = [this](const QString& command) { return keyboardCommand(command); };
    panel_.window().setIgnoresMouseEvents(true);

    model_.setPointerPresenceProvider([this] { return pointerIsInside(); });
    QObject::connect(&model_, &NotchInteractionModel::phaseChanged, &lifetime_, [this] { phaseChanged(); });
    QObject::connect(&geometry_, &NotchGeometry::changed, &lifetime_, [this] { placePanel(); });
    cancellables_.push_back(environment_.screens.observeChanges([this] { screenParametersChanged(); }));
    placePanel();
}

NotchPanelController::~NotchPanelController() {
    model_.setPointerPresenceProvider(nullptr);
}

void NotchPanelController::setContentScrollsUpQuery(std::function<bool(QPointF)> query) {
    contentScrollsUp_ = std::move(query);
}

void NotchPanelController::placePanel() {
    panel_.setFrame(geometry_.panelFrame());
    panel_.window().setRestingArea(geometry_.footprint(NotchPhase::idle));
    panel_.window().setShape(geometry_.shape(model_.phase()));
}

void NotchPanelController::showPanel() {
    panel_.window().setPanelLevel();
    placePanel();
    panel_.window().orderFrontRegardless();
}

void NotchPanelController::present() {
    if (hasScreen_)
        showPanel();
    isPresented_ = true;
    evaluatePointer();
    if (!pointerTimer_.isPending())
        pointerTimer_ = environment_.scheduler.every(pollInterval, [this] { evaluatePointer(); });
}

void NotchPanelController::setSurfaces(std::vector<PanelSurface> surfaces) {
    if (surfaces == surfaces_)
        return;
    surfaces_ = std::move(surfaces);
    panel_.window().setSurfaces(surfaces_);
}

bool NotchPanelController::pointerIsInside() const {
    const std::optional<QPointF> location =
        hasScreen_ ? environment_.pointer.location() : std::optional<QPointF>();
    if (!location)
        return false;
    if (geometry_.isInteractive(*location, model_.phase()))
        return true;
    const QRectF frame = geometry_.panelFrame();
    const QPointF inPanel(location->x() - frame.left(), frame.bottom() - location->y());
    return model_.phase() == NotchPhase::expanded &&
           std::any_of(surfaces_.begin(), surfaces_.end(), [inPanel](const PanelSurface& surface) {
               return surface.kind != PanelSurface::Kind::popover && surface.frame.contains(inPanel);
           });
}

void NotchPanelController::evaluatePointer() {
    if (!isPresented_)
        return;
    followPointer();
    const bool inside = pointerIsInside();
    updateIgnoresMouseEvents(inside);
    if (inside) {
        model_.dismissRoute(openedByCommandRoute);
        model_.dismissRoute(NotchInteractionModel::toastRoute);
        model_.pointerEntered();
    } else {
        model_.pointerExited();
    }
}

void NotchPanelController::updateIgnoresMouseEvents(bool pointerInside) {
    const bool ignores = model_.phase() != NotchPhase::expanded && !pointerInside;
    if (panel_.window().ignoresMouseEvents() != ignores)
        panel_.window().setIgnoresMouseEvents(ignores);
}

void NotchPanelController::phaseChanged() {
    PanelWindow& window = panel_.window();
    window.setShape(geometry_.shape(model_.phase()));
    if (!isPresented_)
        return;
    window.setPanelLevel();
    window.orderFrontRegardless();
    if (model_.phase() == NotchPhase::expanded) {
        aiming_ = environment_.scheduler.after(aimingTime, [] {});
        updateIgnoresMouseEvents(true);
        window.makeKey();
    } else {
        aiming_.cancel();
        model_.dismissRoute(openedByCommandRoute);
        model_.dismissRoute(NotchInteractionModel::toastRoute);
        window.resignKey();
        updateIgnoresMouseEvents(pointerIsInside());
    }
}

void NotchPanelController::screenParametersChanged() {
    const std::optional<Screen> screen = chosenScreen();
    hasScreen_ = screen.has_value();
    if (!screen)
        return;
    geometry_.update(*screen);
    if (isPresented_)
        showPanel();
    else
        placePanel();
    evaluatePointer();
}

std::optional<Screen> NotchPanelController::chosenScreen() const {
    const PanelPlacement& placement = geometry_.placement();
    return NotchGeometry::chooseScreen(environment_.screens, placement,
                                       placement.followsPointer ? environment_.pointer.location()
                                                                : std::nullopt);
}

void NotchPanelController::setPlacement(const PanelPlacement& placement) {
    if (placement == geometry_.placement())
        return;
    geometry_.setPlacement(placement);
    screenParametersChanged();
}

void NotchPanelController::followPointer() {
    if (!geometry_.placement().followsPointer || model_.phase() != NotchPhase::idle)
        return;
    const std::optional<QPointF> pointer = environment_.pointer.location();
    if (pointer && hasScreen_ && !geometry_.screen().frame.contains(*pointer)) {
        if (const auto screen = chosenScreen(); screen && *screen != geometry_.screen())
            geometry_.update(*screen);
    }
}

void NotchPanelController::drag(double points, bool ended) {
    if (!dragStart_)
        dragStart_ = geometry_.offset();
    PanelPlacement placement = geometry_.placement();
    placement.offset = *dragStart_ + points;
    if (std::abs(placement.offset) < snapDistance)
        placement.offset = 0.0;
    geometry_.setPlacement(placement);
    if (!ended)
        return;
    dragStart_.reset();
    if (moved_)
        moved_(geometry_.offset());
}

void NotchPanelController::applicationResignedActive() {
    model_.dismissRoute(openedByCommandRoute);
    model_.dismissRoute(NotchInteractionModel::toastRoute);
    const bool nothingIsOpen = model_.presentedOverlayIDs().isEmpty() && model_.presentedRouteIDs().isEmpty();
    if (nothingIsOpen || model_.isShowingInitialYearReveal()) {
        model_.collapse(false);
        if (!model_.isExpanded())
            model_.ignorePointerUntilItLeaves();
    }
}

void NotchPanelController::popoverClosed() {
    model_.dismissOverlays();
    environment_.scheduler.post([this, alive = QPointer<QObject>(&lifetime_)] {
        if (alive)
            evaluatePointer();
    });
}

void NotchPanelController::toggle() {
    if (model_.phase() == NotchPhase::expanded) {
        fold(pointerIsInside());
        return;
    }
    if (!model_.expansionEnabled())
        return;
    model_.presentRoute(openedByCommandRoute);
    model_.expand();
}

void NotchPanelController::fold(bool pointerInside) {
    if (!model_.presentedOverlayIDs().isEmpty())
        model_.dismissOverlays();
    model_.collapse(pointerInside);
}

void NotchPanelController::setLockedHandler(std::function<void()> handler) {
    locked_ = std::move(handler);
}

void NotchPanelController::open() {
    if (model_.expansionEnabled())
        model_.expand();
    else if (locked_)
        locked_();
}

bool NotchPanelController::primaryClick(QPointF locationInWindow, const QRectF& frame) {
    const bool isExpanded = model_.phase() == NotchPhase::expanded;
    const double fromCentre = locationInWindow.x() - frame.width() / 2;
    const double fromTop = frame.height() - locationInWindow.y();
    if (isExpanded &&
        (2 * std::abs(fromCentre) > geometry_.cameraSafeWidth() || fromTop > geometry_.idleSize().height()))
        return false;
    if (aiming_.isPending())
        return true;
    if (isExpanded) {
        fold(true);
        aiming_ = environment_.scheduler.after(aimingTime, [] {});
    } else {
        open();
    }
    return true;
}

bool NotchPanelController::swipeDown() {
    if (model_.phase() == NotchPhase::expanded)
        return false;
    open();
    return true;
}

bool NotchPanelController::swipeUp() {
    if (model_.phase() != NotchPhase::expanded)
        return false;
    const std::optional<QPointF> location = environment_.pointer.location();
    if (location && contentScrollsUp_ && contentScrollsUp_(*location - panel_.frame().topLeft()))
        return false;
    fold(pointerIsInside());
    return true;
}

bool NotchPanelController::keyboardCommand(const QString& command) {
    static const std::array<std::pair<QString, QString>, 4> notificationOf{{
        {QStringLiteral("n"), notifications::newReminder},
        {QStringLiteral("f"), notifications::findReminder},
        {QStringLiteral("z"), notifications::undoReminderAction},
        {QStringLiteral("redo"), notifications::redoReminderAction},
    }};
    for (const auto& [name, notification] : notificationOf) {
        if (name == command) {
            environment_.notifications.post(notification);
            return true;
        }
    }
    return false;
}

}  // namespace kestrant
