#include "notch/NotchInteractionModel.h"

#include "cues/SensoryFeedback.h"
#include "preferences/Preferences.h"

#include <utility>

namespace kestrant {

namespace {
constexpr double popoverSaveGrace = 0.35;
constexpr double overlayDismissalSettling = 0.05;
}  // namespace

const QString NotchInteractionModel::initialYearRevealRoute =
    QStringLiteral("onboarding.initial-year-reveal");
const QString NotchInteractionModel::toastRoute = QStringLiteral("panel.toast");

NotchInteractionModel::NotchInteractionModel(Scheduler& scheduler, const Preferences& preferences,
                                             const SensoryFeedback& feedback, QObject* parent)
    : QObject(parent)
    , scheduler_(scheduler)
    , preferences_(preferences)
    , feedback_(feedback) {}

void NotchInteractionModel::setPhase(NotchPhase phase) {
    if (phase_ == phase)
        return;
    phase_ = phase;
    Q_EMIT phaseChanged();
}

void NotchInteractionModel::setIsShowingInitialYearReveal(bool showing) {
    if (isShowingInitialYearReveal_ == showing)
        return;
    isShowingInitialYearReveal_ = showing;
    Q_EMIT isShowingInitialYearRevealChanged();
}

void NotchInteractionModel::setCalendarWindowFrame(const QRectF& frame) {
    if (calendarWindowFrame_ == frame)
        return;
    calendarWindowFrame_ = frame;
    Q_EMIT calendarWindowFrameChanged();
}

bool NotchInteractionModel::pointInCalendarWindow(double x, double y, double screenHeight) const {
    return calendarWindowFrame_ != QRectF() && calendarWindowFrame_.contains(QPointF(x, screenHeight - y));
}

void NotchInteractionModel::setPointerPresenceProvider(std::function<bool()> provider) {
    pointerPresenceProvider_ = std::move(provider);
}

void NotchInteractionModel::setOverlayDismissalHandler(std::function<void()> handler) {
    overlayDismissalHandler_ = std::move(handler);
}

void NotchInteractionModel::presentOverlay(const QString& id) {
    if (presentedOverlayIDs_.contains(id))
        return;
    presentedOverlayIDs_.insert(id);
    collapseTask_.cancel();
    Q_EMIT presentedOverlaysChanged();
}

void NotchInteractionModel::dismissOverlay(const QString& id) {
    if (presentedOverlayIDs_.remove(id))
        Q_EMIT presentedOverlaysChanged();
}

void NotchInteractionModel::presentRoute(const QString& id) {
    if (presentedRouteIDs_.contains(id))
        return;
    presentedRouteIDs_.insert(id);
    collapseTask_.cancel();
    Q_EMIT presentedRoutesChanged();
}

void NotchInteractionModel::dismissRoute(const QString& id) {
    if (presentedRouteIDs_.remove(id))
        Q_EMIT presentedRoutesChanged();
}

void NotchInteractionModel::beginReminderDrag(const QString& id) {
    if (activeReminderDragIDs_.contains(id))
        return;
    activeReminderDragIDs_.insert(id);
    Q_EMIT activeReminderDragsChanged();
}

void NotchInteractionModel::endReminderDrag(const QString& id) {
    if (activeReminderDragIDs_.remove(id))
        Q_EMIT activeReminderDragsChanged();
}

void NotchInteractionModel::setSearchIsFocused(bool focused) {
    if (searchIsFocused_ == focused)
        return;
    searchIsFocused_ = focused;
    if (focused)
        collapseTask_.cancel();
    Q_EMIT searchIsFocusedChanged();
}

bool NotchInteractionModel::isHeldOpen() const {
    return !presentedOverlayIDs_.isEmpty() || !presentedRouteIDs_.isEmpty() || searchIsFocused_;
}

bool NotchInteractionModel::pointerIsInsideNow() const {
    return pointerPresenceProvider_ ? pointerPresenceProvider_() : pointerIsInside_;
}

void NotchInteractionModel::pointerEntered() {
    if (pointerIsInside_ || ignoresPointer_)
        return;
    popoverSaveGraceTask_.cancel();
    pointerIsInside_ = true;
    collapseTask_.cancel();
    if (phase_ != NotchPhase::idle)
        return;

    hoverClosureAlreadySounded_ = false;
    feedback_.performHaptic(HapticPattern::alignment);
    setPhase(NotchPhase::hovering);
    feedback_.play(Cue::dragStart);

    if (preferences_.requiresClickOrSwipeToExpand())
        return;
    const double delay = preferences_.hoverExpandDelay();
    if (delay <= 0.0)
        expand();
    else
        expandTask_ = scheduler_.after(seconds(delay), [this] { expand(); });
}

void NotchInteractionModel::pointerExited() {
    ignoresPointer_ = false;
    const bool wasInside = std::exchange(pointerIsInside_, false);
    expandTask_.cancel();
    if (isHeldOpen())
        return;
    if (phase_ == NotchPhase::hovering) {
        feedback_.performHaptic(HapticPattern::alignment);
        setPhase(NotchPhase::idle);
        if (!std::exchange(hoverClosureAlreadySounded_, false))
            feedback_.play(Cue::drop);
    } else if (wasInside || phase_ == NotchPhase::expanded) {
        scheduleCollapse();
    }
}

void NotchInteractionModel::scheduleCollapse() {
    if (phase_ != NotchPhase::expanded || isHeldOpen() || popoverSaveGraceTask_.isPending() ||
        collapseTask_.isPending())
        return;
    collapseTask_ = scheduler_.after(seconds(preferences_.autoCloseDelay()), [this] { collapse(false); });
}

void NotchInteractionModel::expand() {
    if (!expansionEnabled_ || phase_ == NotchPhase::expanded)
        return;
    ignoresPointer_ = false;
    expandTask_.cancel();
    collapseTask_.cancel();
    hoverClosureAlreadySounded_ = false;
    if (std::exchange(initialYearRevealIsArmed_, false))
        setIsShowingInitialYearReveal(true);
    if (isShowingInitialYearReveal_)
        presentRoute(initialYearRevealRoute);
    setPhase(NotchPhase::expanded);
    feedback_.performHaptic(HapticPattern::generic);
    feedback_.play(feedback_.soundProfile() == SoundProfile::full ? Cue::expand : Cue::dragStart);
}

void NotchInteractionModel::collapse(bool pointerInside) {
    if (!activeReminderDragIDs_.isEmpty())
        return;
    expandTask_.cancel();
    collapseTask_.cancel();
    popoverSaveGraceTask_.cancel();
    if (phase_ == NotchPhase::idle)
        return;

    const bool wasExpanded = phase_ == NotchPhase::expanded;
    pointerIsInside_ = pointerInside;
    hoverClosureAlreadySounded_ = wasExpanded && pointerInside;
    setPhase(pointerInside ? NotchPhase::hovering : NotchPhase::idle);
    if (isShowingInitialYearReveal_)
        dismissRoute(initialYearRevealRoute);
    if (wasExpanded) {
        feedback_.performHaptic(HapticPattern::levelChange);
        feedback_.play(feedback_.soundProfile() == SoundProfile::full ? Cue::collapse : Cue::drop);
    }
}

void NotchInteractionModel::popoverClosedAfterSaving() {
    popoverSaveGraceTask_ = scheduler_.after(seconds(popoverSaveGrace), [] {});
}

void NotchInteractionModel::dismissOverlays() {
    if (!presentedOverlayIDs_.isEmpty()) {
        presentedOverlayIDs_.clear();
        Q_EMIT presentedOverlaysChanged();
    }
    setSearchIsFocused(false);
    if (overlayDismissalHandler_)
        overlayDismissalHandler_();
    pointerIsInside_ = pointerIsInsideNow();
    if (!pointerIsInside_ && !isHeldOpen())
        scheduleCollapse();
    // A second look, for a pointer that was still on its way out over what has just closed.
    overlayDismissalTask_ = scheduler_.after(seconds(overlayDismissalSettling), [this] {
        if (!pointerIsInsideNow())
            scheduleCollapse();
    });
}

}  // namespace kestrant
