#include "notch/NotchPanelController.h"

#include <QPointer>

#include <array>
#include <cmath>
#include <utility>

namespace kestrant {

namespace {

constexpr Duration pollInterval = std::chrono::microseconds(1'000'000 / 60);
/// Keeps a panel open that was opened without the pointer.
const QString openedByCommandRoute = QStringLiteral("panel.opened-by-command");

}  // namespace

NotchPanelController::NotchPanelController(const Environment& environment, NotchInteractionModel& model,
                                           NotchGeometry& geometry)
    : environment_(environment)
    , model_(model)
    , geometry_(geometry)
    , panel_(environment.window) {
    panel_.onPrimaryClick = [this](QPointF location, const QRectF& frame) {
        return primaryClick(location, frame);
    };
    panel_.onSwipeDown = [this] { return swipeDown(); };
    panel_.onSwipeUp = [this] { return swipeUp(); };
    panel_.onKeyboardCommand = [this](const QString& command) { return keyboardCommand(command); };
    panel_.window().setIgnoresMouseEvents(true);

    model_.setPointerPresenceProvider([this] { return pointerIsInside(); });
    QObject::connect(&model_, &NotchInteractionModel::phaseChanged, &lifetime_, [this] { phaseChanged(); });
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
    panel_.window().setRestingArea(geometry_.idleSize());
    panel_.window().setShape(geometry_.shape(model_.phase()));
}

void NotchPanelController::present() {
    panel_.window().setPanelLevel();
    placePanel();
    panel_.window().orderFrontRegardless();
    isPresented_ = true;
    evaluatePointer();
    if (!pointerTimer_.isPending())
        pointerTimer_ = environment_.scheduler.every(pollInterval, [this] { evaluatePointer(); });
}

bool NotchPanelController::pointerIsInside() const {
    const std::optional<QPointF> location = environment_.pointer.location();
    return location && geometry_.isInteractive(*location, model_.phase());
}

void NotchPanelController::evaluatePointer() {
    if (!isPresented_)
        return;
    const bool inside = pointerIsInside();
    updateIgnoresMouseEvents(inside);
    if (inside) {
        model_.dismissRoute(openedByCommandRoute);
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
        updateIgnoresMouseEvents(true);
        window.makeKey();
    } else {
        model_.dismissRoute(openedByCommandRoute);
        window.resignKey();
        updateIgnoresMouseEvents(pointerIsInside());
    }
}

void NotchPanelController::screenParametersChanged() {
    const std::optional<Screen> screen = NotchGeometry::chooseScreen(environment_.screens);
    if (!screen)
        return;
    geometry_.update(*screen);
    placePanel();
    evaluatePointer();
}

void NotchPanelController::applicationResignedActive() {
    model_.dismissRoute(openedByCommandRoute);
    const bool nothingIsOpen = model_.presentedOverlayIDs().isEmpty() && model_.presentedRouteIDs().isEmpty();
    if (nothingIsOpen || model_.isShowingInitialYearReveal())
        model_.collapse(false);
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

bool NotchPanelController::primaryClick(QPointF locationInWindow, const QRectF& frame) {
    if (model_.phase() != NotchPhase::expanded) {
        model_.expand();
        return true;
    }
    const double fromCentre = locationInWindow.x() - frame.width() / 2;
    const double fromTop = frame.height() - locationInWindow.y();
    if (2 * std::abs(fromCentre) > geometry_.cameraSafeWidth() || fromTop > geometry_.idleSize().height())
        return false;
    fold(true);
    return true;
}

bool NotchPanelController::swipeDown() {
    if (model_.phase() == NotchPhase::expanded)
        return false;
    model_.expand();
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
