#pragma once

#include "notch/NotchContainerShape.h"
#include "notch/NotchPhase.h"
#include "notch/ScreenProvider.h"
#include "preferences/PanelPlacement.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

namespace kestrant {

/// Where the panel is and how large it is in each phase. Points; global rectangles have y growing upwards.
/// Everything is measured anew with update(). Thread: main.
class NotchGeometry : public QObject {
    Q_OBJECT
    Q_PROPERTY(QSizeF hardwareNotchSize READ hardwareNotchSize NOTIFY changed)
    Q_PROPERTY(QSizeF idleSize READ idleSize NOTIFY changed)
    Q_PROPERTY(QSizeF hoverSize READ hoverSize NOTIFY changed)
    Q_PROPERTY(QSizeF expandedSize READ expandedSize NOTIFY changed)
    Q_PROPERTY(double cameraSafeWidth READ cameraSafeWidth NOTIFY changed)

  public:
    explicit NotchGeometry(const Screen& screen, QObject* parent = nullptr);

    /// The display for the panel: the one that has the pointer, where that is wanted and known; the one of
    /// the wanted name; the first with a camera housing; the main one; the first. Absent only while there is
    /// no display at all.
    [[nodiscard]] static std::optional<Screen>
    chooseScreen(const ScreenProvider& provider, const PanelPlacement& placement = {},
                 const std::optional<QPointF>& pointer = std::nullopt);

    void update(const Screen& screen);
    void setPlacement(const PanelPlacement& placement);
    [[nodiscard]] const PanelPlacement& placement() const { return placement_; }
    /// The placement's offset, limited to the screen.
    [[nodiscard]] double offset() const;
    /// At rest it is as wide as while hovering, with room for a few words.
    void setRestsWide(bool wide);

    [[nodiscard]] const Screen& screen() const { return screen_; }
    /// The measured camera housing, or the size drawn in its place.
    [[nodiscard]] QSizeF hardwareNotchSize() const { return hardwareNotchSize_; }
    [[nodiscard]] QSizeF idleSize() const { return idleSize_; }
    [[nodiscard]] QSizeF hoverSize() const { return hoverSize_; }
    [[nodiscard]] QSizeF expandedSize() const { return expandedSize_; }
    /// Central width that content keeps free of the camera.
    [[nodiscard]] double cameraSafeWidth() const { return cameraSafeWidth_; }

    /// The size that is shown in a phase.
    [[nodiscard]] QSizeF footprint(NotchPhase phase) const;
    [[nodiscard]] NotchContainerShape shape(NotchPhase phase) const;
    /// The window's frame: the expanded size, its top edge on the screen's, centred; elsewhere where the
    /// placement says so.
    [[nodiscard]] QRectF panelFrame() const;
    /// Where the pointer counts as inside. Reaches 2 points above the top of the screen, so that a pointer
    /// pressed against the edge is inside.
    [[nodiscard]] QRectF interactiveRect(NotchPhase phase) const;
    /// Whether the pointer is inside in a phase; all four edges count as inside.
    [[nodiscard]] bool isInteractive(QPointF location, NotchPhase phase) const;

  Q_SIGNALS:
    void changed();

  private:
    [[nodiscard]] QRectF hanging(QSizeF size) const;

    Screen screen_;
    PanelPlacement placement_;
    QSizeF hardwareNotchSize_{194.0, 32.25};
    QSizeF idleSize_{194.0, 32.25};
    QSizeF hoverSize_{250.0, 32.25};
    QSizeF expandedSize_{940.0, 292.0};
    double cameraSafeWidth_ = 220.0;
    bool restsWide_ = false;
};

}  // namespace kestrant
