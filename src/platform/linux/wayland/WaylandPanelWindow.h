#pragma once

#include "foundation/Scheduler.h"
#include "notch/PointerProvider.h"
#include "platform/linux/wayland/LayerShell.h"
#include "platform/linux/window/DesktopPanelWindow.h"

#include <QPointF>
#include <QSize>
#include <QSizeF>

#include <memory>
#include <optional>

class QScreen;

namespace kestrant {

/// The panel's window as a surface of the compositor's layer shell. It is always as wide as the widest it has
/// been, so that it does not move when it grows; where the pointer reaches it, its input region says. Where
/// the pointer is, it only knows while that is above it. Thread: main.
class WaylandPanelWindow : public DesktopPanelWindow, public PointerProvider {
    Q_OBJECT

  public:
    /// Configures the window, which must have a transparent background. Both must outlive this object.
    WaylandPanelWindow(QWindow& window, Scheduler& scheduler);
    ~WaylandPanelWindow() override;

    [[nodiscard]] bool keyWasTakenAway() const override;
    [[nodiscard]] bool isAskingForKey() const override { return asking_.isPending(); }
    [[nodiscard]] bool isCompositing() const override { return true; }
    [[nodiscard]] bool touchpadScrollsNaturally() const override { return scrollsNaturally_; }
    [[nodiscard]] bool touchpadsTellDirection() const override { return false; }
    void setTouchpadDirection(std::optional<bool> isNatural, bool isInverted) override;

    [[nodiscard]] std::optional<QPointF> location() const override;

    void setIsBelowBars(bool isBelow) override;
    void setYieldsToFullScreen(bool yields) override;
    void setExtent(QSizeF size) override;
    void setPanelLevel() override {}
    void orderFrontRegardless() override;
    void orderOut() override;
    void makeKey() override;
    void resignKey() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void placeWindow() override;
    void applyShapes() override;
    [[nodiscard]] bool knowsPlaces() const override { return false; }
    /// Makes the surface anew.
    void reappear();
    /// The screen below the frame; null while there is none.
    [[nodiscard]] QScreen* screen() const;
    /// Gives the window its surface and its role and shows it, once there is a screen.
    void appear();
    void disappear();
    [[nodiscard]] bool scrolled(QEvent* event);

    Scheduler& scheduler_;
    LayerShell shell_;
    std::unique_ptr<LayerShell::Surface> role_;
    QScreen* roleScreen_ = nullptr;
    QSizeF extent_;
    QSize size_;
    LayerShell::Place place_;
    /// In the window; absent while the pointer is elsewhere.
    std::optional<QPointF> pointer_;
    bool isWanted_ = false;
    bool isKey_ = false;
    /// The keyboard focus has come since it was last asked for.
    bool hasKey_ = false;
    bool scrollsNaturally_ = desktopScrollsNaturally();
    ScheduledTask asking_;
    ScheduledTask appearing_;
};

}  // namespace kestrant
