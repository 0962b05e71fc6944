#pragma once

#include "ui/panel/OverlayHost.h"

#include <QPointF>
#include <QQmlEngine>
#include <QQuickView>
#include <QSizeF>

#include <memory>

namespace kestrant {

class Appearance;
class Localizer;
class NotchInteractionModel;
class PanelViewModel;
class SettingsViewModel;
struct PanelComposition;

/// The panel's window content: the outline in every phase, from the first expansion on the modules, and what
/// opens on them, with all their shadows.
///
/// It is a plain window; placing it, giving it its native nature and the size it asks for, and deciding which
/// of its events are clicks, swipes and commands is the platform's matter: install an event filter on it
/// before show(). Whatever its size, the panel hangs from the middle of its top edge. Thread: main.
class PanelView : public QQuickView {
    Q_OBJECT

  public:
    struct Models {
        NotchInteractionModel& interaction;
        Localizer& localizer;
        Appearance& appearance;
        PanelComposition& panel;
        SettingsViewModel& settings;
    };
    /// When the expanded content is loaded.
    enum class Loading {
        /// In small steps after the first frame, so that nothing stutters; at once when the panel is expanded
        /// earlier.
        inBackground,
        /// At once: for pictures and tests.
        immediate,
    };

    /// To be called before the application object is made: selects the renderer that needs no GPU, unless the
    /// environment (QT_QUICK_BACKEND) names one.
    static void chooseRenderer();
    /// To be called once the application object exists: the typeface of every text.
    static void chooseTypeface();

    /// Everything must outlive the view.
    explicit PanelView(const Models& models, Loading loading = Loading::inBackground);
    ~PanelView() override;

    [[nodiscard]] OverlayHost& overlays() { return *overlays_; }

    /// The size that the window should have for what it shows, in points. It grows before anything needs the
    /// room and shrinks when nothing moves any more.
    [[nodiscard]] QSizeF extent() const { return extent_; }
    /// Has the content fill a window that was resized, before the window system tells of it.
    void fillWindow();

    /// Whether content at a place in the panel's frame can still scroll when the fingers move up (further
    /// down its contents). Points, origin lower left.
    [[nodiscard]] bool contentScrollsUp(QPointF locationInPanel) const;

  Q_SIGNALS:
    void extentChanged();

  private:
    PanelView(const Models& models, Loading loading, std::unique_ptr<QQmlEngine> engine);
    Q_SLOT void updateExtent();

    PanelViewModel& panel_;
    QSizeF extent_;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<OverlayHost> overlays_;
};

}  // namespace kestrant
