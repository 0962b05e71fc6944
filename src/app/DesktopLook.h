#pragma once

#include "foundation/Scheduler.h"
#include "platform/linux/desktop/DesktopAppearance.h"
#include "platform/linux/x11/BackdropBlur.h"

#include <QObject>

#include <memory>

namespace kestrant {

class Appearance;
class NotchGeometry;
class PanelView;
class PanelViewModel;
class X11PanelWindow;

/// Has the views look as the desktop asks and allows: motion, contrast and size of texts as its settings say,
/// translucency with a compositor, and its blur behind the glass of the open panel. Thread: main.
class DesktopLook : public QObject {
    Q_OBJECT

  public:
    /// Everything must outlive this.
    struct Services {
        PanelView& view;
        X11PanelWindow& window;
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
    BackdropBlur blur_;
    std::unique_ptr<DesktopAppearance> settings_;
    ScheduledTask blurring_;
};

}  // namespace kestrant
