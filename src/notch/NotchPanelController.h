#pragma once

#include "foundation/NotificationCenter.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanel.h"
#include "notch/PanelWindow.h"
#include "notch/PointerProvider.h"
#include "notch/ScreenProvider.h"

#include <QObject>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// Names of the application-wide events that the panel's keyboard commands post.
namespace notifications {
inline const QString newReminder = QStringLiteral("kestrant.newReminder");
inline const QString findReminder = QStringLiteral("kestrant.findReminder");
inline const QString undoReminderAction = QStringLiteral("kestrant.undoReminderAction");
inline const QString redoReminderAction = QStringLiteral("kestrant.redoReminderAction");
}  // namespace notifications

/// Keeps the panel's window at the top centre of the screen, polls the pointer sixty times a second for the
/// model, and makes the window follow the model's phase. Creating it shows nothing. Thread: main.
class NotchPanelController {
  public:
    /// The panel's ports; everything must outlive the controller.
    struct Environment {
        PanelWindow& window;
        ScreenProvider& screens;
        PointerProvider& pointer;
        Scheduler& scheduler;
        NotificationCenter& notifications;
    };

    NotchPanelController(const Environment& environment, NotchInteractionModel& model,
                         NotchGeometry& geometry);
    ~NotchPanelController();
    NotchPanelController(const NotchPanelController&) = delete;
    NotchPanelController& operator=(const NotchPanelController&) = delete;

    /// Shows the panel and starts polling the pointer; harmless when it is shown already. Without a screen it
    /// appears with the first one.
    void present();
    [[nodiscard]] bool isPresented() const { return isPresented_; }

    /// Opens the panel by keyboard or command and keeps it open until the pointer has visited it or the
    /// application resigns; closes it when it is open.
    void toggle();

    /// Where the panel is to be. It moves there at once, but follows the pointer to another screen only while
    /// it is folded.
    void setPlacement(const PanelPlacement& placement);
    /// Called when the panel has been carried to another place along its edge, with the new offset.
    void setMovedHandler(std::function<void(double offset)> handler) { moved_ = std::move(handler); }

    /// Asks the content whether it can still scroll when the fingers move up at a location in the window
    /// (points, origin lower left). Where it can, a swipe up scrolls; elsewhere it folds the panel.
    void setContentScrollsUpQuery(std::function<bool(QPointF locationInWindow)> query);

    /// Called instead of expanding when the person clicks the resting notch or swipes down on it while it may
    /// not expand.
    void setLockedHandler(std::function<void()> handler);

    /// To be called with the open surfaces whenever they change.
    void setSurfaces(std::vector<PanelSurface> surfaces);

    /// Another program has taken the keyboard focus. What the pointer rests on does not open the panel again
    /// until it has left.
    void applicationResignedActive();
    /// A popover of the panel closed, for whatever reason.
    void popoverClosed();

    [[nodiscard]] NotchPanel& panel() { return panel_; }

  private:
    void placePanel();
    void showPanel();
    void evaluatePointer();
    void updateIgnoresMouseEvents(bool pointerInside);
    void phaseChanged();
    void screenParametersChanged();
    [[nodiscard]] std::optional<Screen> chosenScreen() const;
    void followPointer();
    void drag(double points, bool ended);
    [[nodiscard]] bool pointerIsInside() const;
    [[nodiscard]] bool primaryClick(QPointF locationInWindow, const QRectF& frame);
    /// Expands a panel that is not expanded, if it may.
    void open();
    [[nodiscard]] bool swipeDown();
    [[nodiscard]] bool swipeUp();
    void fold(bool pointerInside);
    [[nodiscard]] bool keyboardCommand(const QString& command);

    Environment environment_;
    NotchInteractionModel& model_;
    NotchGeometry& geometry_;
    NotchPanel panel_;
    std::vector<Subscription> cancellables_;
    ScheduledTask pointerTimer_;
    /// Pending while a press on the notch changes nothing.
    ScheduledTask aiming_;
    std::function<bool(QPointF)> contentScrollsUp_;
    std::function<void()> locked_;
    std::function<void(double)> moved_;
    /// The offset at which the panel was taken up.
    std::optional<double> dragStart_;
    std::vector<PanelSurface> surfaces_;
    bool hasScreen_;
    bool isPresented_ = false;
    /// Ends the connections to the model's signals and marks posted work as orphaned.
    QObject lifetime_;
};

}  // namespace kestrant
