#pragma once

#include <QBrush>

namespace kestrant {

/// Materials of the expanded panel's body. All of them are black along the upper edge, so that the
/// panel belongs to the notch.
enum class PanelGround {
    /// Black all over.
    black,
    /// A shade lighter downwards; nothing shows through.
    shaded,
    /// Glass on a desktop that blends windows: a little of it shows through.
    blended,
    /// Glass where the compositor blurs what lies behind, which may show through more.
    blurred,
};

/// The colours from the top of a body so many points high to its lower end, the light ones translucent as far
/// as every text on them keeps a contrast of 4.5 : 1, whatever lies behind.
[[nodiscard]] QGradientStops groundStops(PanelGround ground, double height);

}  // namespace kestrant
