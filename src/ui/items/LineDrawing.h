#pragma once

#include <QByteArray>
#include <QPainterPath>

#include <optional>

namespace kestrant {

/// Lines to stroke and areas to fill, in the points of the drawing's own square.
struct LineDrawing {
    QPainterPath lines;
    QPainterPath areas;
};

/// Reads a drawing of one colour from SVG (https://www.w3.org/TR/SVG2/): paths of the commands M, L, H, V, C,
/// A and Z, circles and rectangles, without transformations and with unturned arcs. What has a fill other
/// than "none", its own or inherited, is an area, everything else a line. Nothing when the text is no SVG or
/// holds anything else that would be seen.
[[nodiscard]] std::optional<LineDrawing> lineDrawingFromSvg(const QByteArray& text);

}  // namespace kestrant
