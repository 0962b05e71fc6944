#pragma once

#include "foundation/Scheduler.h"
#include "notch/NotchPhase.h"

#include <QObject>
#include <QRectF>
#include <QSet>
#include <QString>

#include <functional>

namespace kestrant {

class SensoryFeedback;
class Preferences;

/// Decides the panel's phase from the pointer's presence, clicks, swipes, keyboard focus and what is open on
/// it. Views read the phase and register what they have open, so that the panel does not fold under an open
/// popover, a running drag or a focused search field. Thread: main.
class NotchInteractionModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int phase READ phaseValue NOTIFY phaseChanged)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY phaseChanged)
    Q_PROPERTY(bool isShowingInitialYearReveal READ isShowingInitialYearReveal WRITE
                   setIsShowingInitialYearReveal NOTIFY isShowingInitialYearRevealChanged)
    Q_PROPERTY(QRectF calendarWindowFrame READ calendarWindowFrame WRITE setCalendarWindowFrame NOTIFY
                   calendarWindowFrameChanged)
    Q_PROPERTY(
        bool searchIsFocused READ searchIsFocused WRITE setSearchIsFocused NOTIFY searchIsFocusedChanged)

  public:
    /// The route of the first-run year reveal.
    static const QString initialYearRevealRoute;
    /// The route of a message that was shown while the pointer was away: the panel stays open for it until
    /// the pointer comes, or another program takes the keyboard.
    static const QString toastRoute;

    /// All three must outlive the model.
    NotchInteractionModel(Scheduler& scheduler, const Preferences& preferences,
                          const SensoryFeedback& feedback, QObject* parent = nullptr);

    [[nodiscard]] NotchPhase phase() const { return phase_; }
    [[nodiscard]] int phaseValue() const { return static_cast<int>(phase_); }
    [[nodiscard]] bool isExpanded() const { return phase_ == NotchPhase::expanded; }

    /// The notch may expand at all; false until onboarding is completed.
    [[nodiscard]] bool expansionEnabled() const { return expansionEnabled_; }
    void setExpansionEnabled(bool enabled) { expansionEnabled_ = enabled; }

    /// The next expansion starts the year reveal.
    [[nodiscard]] bool initialYearRevealIsArmed() const { return initialYearRevealIsArmed_; }
    void setInitialYearRevealIsArmed(bool armed) { initialYearRevealIsArmed_ = armed; }

    [[nodiscard]] bool isShowingInitialYearReveal() const { return isShowingInitialYearReveal_; }
    void setIsShowingInitialYearReveal(bool showing);

    /// Frame of the calendar's floating drag window, in points with y upwards; all zero when there is none.
    [[nodiscard]] QRectF calendarWindowFrame() const { return calendarWindowFrame_; }
    void setCalendarWindowFrame(const QRectF& frame);
    /// Whether that window contains a point whose y runs downwards from the top of a screen of the given
    /// height.
    [[nodiscard]] Q_INVOKABLE bool pointInCalendarWindow(double x, double y, double screenHeight) const;

    /// Asks whether the pointer is in the interactive area now. Set by the panel's controller.
    void setPointerPresenceProvider(std::function<bool()> provider);
    /// Closes the open overlay; called by dismissOverlays().
    void setOverlayDismissalHandler(std::function<void()> handler);

    /// Open overlays, by identifiers that views choose; each may be registered or removed twice without harm.
    /// Opening an overlay or a route, or focusing the search, stops a collapse that is under way.
    Q_INVOKABLE void presentOverlay(const QString& id);
    Q_INVOKABLE void dismissOverlay(const QString& id);
    Q_INVOKABLE void presentRoute(const QString& id);
    Q_INVOKABLE void dismissRoute(const QString& id);
    Q_INVOKABLE void beginReminderDrag(const QString& id);
    Q_INVOKABLE void endReminderDrag(const QString& id);
    [[nodiscard]] const QSet<QString>& presentedOverlayIDs() const { return presentedOverlayIDs_; }
    [[nodiscard]] const QSet<QString>& presentedRouteIDs() const { return presentedRouteIDs_; }
    [[nodiscard]] const QSet<QString>& activeReminderDragIDs() const { return activeReminderDragIDs_; }

    /// The reminder search field has the keyboard focus.
    [[nodiscard]] bool searchIsFocused() const { return searchIsFocused_; }
    void setSearchIsFocused(bool focused);

    [[nodiscard]] bool pointerIsInside() const { return pointerIsInside_; }
    /// The pointer is in the interactive area, or is not. Called with every poll; only changes matter.
    void pointerEntered();
    void pointerExited();
    /// The pointer counts for nothing until it has been outside once, or the panel is opened by other means:
    /// where it rests was not chosen for the panel.
    void ignorePointerUntilItLeaves() { ignoresPointer_ = true; }

    /// Goes to `expanded` if that is allowed.
    Q_INVOKABLE void expand();
    /// Ends hovering or expansion now, to `hovering` when the pointer is inside, else to `idle`. Not while a
    /// reminder is being dragged.
    Q_INVOKABLE void collapse(bool pointerInside);
    /// Folds the expanded panel after the delay of the preferences, unless something holds it open.
    Q_INVOKABLE void scheduleCollapse();

    /// A popover closed after saving: for 0.35 s no collapse is scheduled, so that the pointer can travel
    /// back from where the popover was.
    Q_INVOKABLE void popoverClosedAfterSaving();
    /// Forgets every overlay and the search focus, has the open overlay closed, and folds the panel when the
    /// pointer has left it meanwhile.
    Q_INVOKABLE void dismissOverlays();

  Q_SIGNALS:
    void phaseChanged();
    void isShowingInitialYearRevealChanged();
    void calendarWindowFrameChanged();
    void presentedOverlaysChanged();
    void presentedRoutesChanged();
    void activeReminderDragsChanged();
    void searchIsFocusedChanged();

  private:
    void setPhase(NotchPhase phase);
    [[nodiscard]] bool isHeldOpen() const;
    [[nodiscard]] bool pointerIsInsideNow() const;

    Scheduler& scheduler_;
    const Preferences& preferences_;
    const SensoryFeedback& feedback_;

    NotchPhase phase_ = NotchPhase::idle;
    bool isShowingInitialYearReveal_ = false;
    QRectF calendarWindowFrame_;
    bool expansionEnabled_ = false;
    bool initialYearRevealIsArmed_ = false;
    ScheduledTask expandTask_;
    ScheduledTask collapseTask_;
    ScheduledTask popoverSaveGraceTask_;
    ScheduledTask overlayDismissalTask_;
    std::function<bool()> pointerPresenceProvider_;
    std::function<void()> overlayDismissalHandler_;
    QSet<QString> presentedOverlayIDs_;
    QSet<QString> presentedRouteIDs_;
    QSet<QString> activeReminderDragIDs_;
    bool pointerIsInside_ = false;
    bool ignoresPointer_ = false;
    bool searchIsFocused_ = false;
    bool hoverClosureAlreadySounded_ = false;
};

}  // namespace kestrant
