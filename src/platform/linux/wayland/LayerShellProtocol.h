#pragma once

#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

#include <cstdint>

namespace kestrant::layer_shell {

// The part of the wlr layer shell protocol (wlr-layer-shell-unstable-v1, version 4) that panels use. The
// proxies belong to whoever made them. Thread: that of their event queue.

/// The newest version that is known here.
inline constexpr std::uint32_t version = 4;

enum class Layer : std::uint32_t { background, bottom, top, overlay };
enum class Edge : std::uint32_t { top = 1, bottom = 2, left = 4, right = 8 };
enum class Keyboard : std::uint32_t {
    none,
    exclusive,
    /// From version 4 on.
    onDemand,
};
/// The surface covers panels and whatever else reserves room.
inline constexpr std::int32_t ignoresOthers = -1;

/// The global's interface, "zwlr_layer_shell_v1".
[[nodiscard]] const wl_interface& shellInterface();

struct SurfaceListener {
    void (*configure)(void* data, wl_proxy* role, std::uint32_t serial, std::uint32_t width,
                      std::uint32_t height);
    void (*closed)(void* data, wl_proxy* role);
};

/// Gives a surface the role; `output` may be null: the compositor chooses then. The events of the new proxy
/// come on the queue of `shell`.
[[nodiscard]] wl_proxy* getLayerSurface(wl_proxy* shell, wl_surface* surface, wl_output* output, Layer layer,
                                        const char* nameSpace);
void addListener(wl_proxy* role, const SurfaceListener& listener, void* data);
void setSize(wl_proxy* role, std::uint32_t width, std::uint32_t height);
/// `edges` are values of Edge, combined.
void setAnchor(wl_proxy* role, std::uint32_t edges);
/// The margin from the left edge, where the surface is anchored to that.
void setLeftMargin(wl_proxy* role, std::int32_t points);
/// Later than with the role; from version 2 on, before that nothing.
void setLayer(wl_proxy* role, Layer layer);
void setExclusiveZone(wl_proxy* role, std::int32_t zone);
void setKeyboardInteractivity(wl_proxy* role, Keyboard keyboard);
void acknowledgeConfigure(wl_proxy* role, std::uint32_t serial);
/// Takes the role away and frees its proxy.
void destroyLayerSurface(wl_proxy* role);
/// Frees the proxy of the global.
void destroyShell(wl_proxy* shell);

}  // namespace kestrant::layer_shell
