#pragma once

#include "foundation/Scheduler.h"
#include "platform/linux/desktop/DesktopAppearance.h"
#include "platform/linux/x11/BackdropBlur.h"

#include <QObject>

#include <memory>
#include <optional>

namespace kestrant {

class Appearance;
class DesktopPanelWindow;
class NotchGeometry;
class PanelView;
class PanelViewModel;

/// Has the views look as the desktop asks and allows: motion, contrast and size of texts as its settings say,
/// translucency with a compositor, and its blur behind the glass of the open panel. Thread: main.
class DesktopLook : public QObject {
    Q_OBJECT

  public:
    /// Everything must outlive this.
    struct Services {
        PanelView& view;
        DesktopPanelWindow& window;
        PanelViewModel& panel;
        const NotchGeometry& geometry;
        Appearance& appearance;
        Scheduler& scheduler;
    };
    explicit DesktopLook(const Services& services);

    /// Begins to follow the desktop's settings, which takes a moment: not before the first frame.
    void followSettings();

  private:
    void followBlur();

    Services services_;
    /// Absent where the window system is not X11.
    std::optional<BackdropBlur> blur_;
    std::unique_ptr<DesktopAppearance> settings_;
    ScheduledTask blurring_;
};

}  // namespace kestrant
