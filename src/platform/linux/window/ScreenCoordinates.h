#pragma once

#include <QPointF>
#include <QRectF>

namespace kestrant {

/// Between Qt's global coordinates, whose y grows downwards, and those of the notch, whose y grows upwards
/// from the lower edge of the primary display. Each is its own inverse. Thread: main.
[[nodiscard]] QPointF flipped(QPointF location);
[[nodiscard]] QRectF flipped(const QRectF& rectangle);

}  // namespace kestrant
