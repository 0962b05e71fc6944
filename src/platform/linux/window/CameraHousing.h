#pragma once

#include "notch/ScreenProvider.h"

#include <QByteArray>
#include <QSizeF>
#include <QString>

#include <optional>

namespace kestrant {

/// The camera housing of a display of this machine: what the setting says, else what is known of the model.
/// The sizes of both are in points of the display; absent where the display has none.
struct CameraHousings {
    /// "185x37": width and height in points; "none" for a display without one; empty for what the model has.
    /// Anything else counts as empty.
    QString setting;
    /// The machine's device tree names, the most exact first, each ended by a zero byte.
    QByteArray compatible;

    [[nodiscard]] std::optional<QSizeF> of(const Screen& screen) const;
};

/// Whether a display of this name is part of the machine.
[[nodiscard]] bool isBuiltIn(const QString& screenName);

/// /proc/device-tree/compatible; empty on machines without a device tree.
[[nodiscard]] QByteArray readCompatible();

/// The display with a housing in the middle of its top edge.
[[nodiscard]] Screen withCameraHousing(Screen screen, QSizeF housing);

}  // namespace kestrant
