#pragma once

#include "foundation/Choice.h"

#include <QString>

#include <array>

namespace kestrant {

/// What is there of the panel while nobody uses it.
enum class RestingLook {
    notch,
    /// A few points of it, which open it like the notch.
    strip,
    /// Nothing: only a command or a shortcut opens it.
    hidden,
};

template <>
inline constexpr auto choicesOf<RestingLook> = std::to_array<Choice<RestingLook>>({
    {RestingLook::notch, "notch", "the notch", "l’encoche"},
    {RestingLook::strip, "strip", "a thin strip", "une fine bande"},
    {RestingLook::hidden, "hidden", "nothing", "rien"},
});

/// From where the panel hangs.
enum class PanelEdge {
    /// Below a bar of the desktop that has something in its middle, else from the screen's edge.
    automatic,
    screen,
    belowBar,
};

template <>
inline constexpr auto choicesOf<PanelEdge> = std::to_array<Choice<PanelEdge>>({
    {PanelEdge::automatic, "automatic", "as the desktop needs it", "selon le bureau"},
    {PanelEdge::screen, "screen", "from the screen’s edge", "au bord de l’écran"},
    {PanelEdge::belowBar, "belowBar", "below the desktop’s bar", "sous la barre du bureau"},
});

/// Where the panel is and what is left of it at rest.
struct PanelPlacement {
    /// Name of the wanted screen; empty for the one with a camera housing, else the main one.
    QString screenName;
    /// On the screen that has the pointer; `screenName` counts while there is none.
    bool followsPointer = false;
    /// Points from the middle of the screen's top edge to the right. What exceeds the screen is limited to
    /// it.
    double offset = 0.0;
    bool isBelowBar = false;
    RestingLook restingLook = RestingLook::notch;

    bool operator==(const PanelPlacement&) const = default;

    /// The offset that a stored place means: "middle", "left", "right", or points. Anything else is the
    /// middle.
    [[nodiscard]] static double offsetFrom(const QString& place);
};

/// The stored name of the screen that has the pointer.
inline const QString screenOfPointer = QStringLiteral("pointer:");

}  // namespace kestrant
