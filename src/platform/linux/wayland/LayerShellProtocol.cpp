#include "platform/linux/wayland/LayerShellProtocol.h"

#include <array>

namespace kestrant::layer_shell {
namespace {

// The signatures of the requests and events; their order is their number on the wire.

enum ShellRequest : std::uint32_t { getLayerSurfaceRequest, destroyShellRequest };
enum SurfaceRequest : std::uint32_t {
    setSizeRequest,
    setAnchorRequest,
    setExclusiveZoneRequest,
    setMarginRequest,
    setKeyboardInteractivityRequest,
    getPopupRequest,
    acknowledgeConfigureRequest,
    destroySurfaceRequest,
    setLayerRequest,
};
constexpr std::uint32_t destroyShellSince = 3;
constexpr std::uint32_t setLayerSince = 2;

extern const wl_interface surfaceInterface;

// Arguments that are no objects, or of an interface that is not used here.
std::array<const wl_interface*, 4> plain{};
std::array<const wl_interface*, 5> layerSurfaceArguments{&surfaceInterface, &wl_surface_interface,
                                                         &wl_output_interface, nullptr, nullptr};

const std::array<wl_message, 2> shellRequests{{
    {"get_layer_surface", "no?ous", layerSurfaceArguments.data()},
    {"destroy", "3", plain.data()},
}};
const std::array<wl_message, 9> surfaceRequests{{
    {"set_size", "uu", plain.data()},
    {"set_anchor", "u", plain.data()},
    {"set_exclusive_zone", "i", plain.data()},
    {"set_margin", "iiii", plain.data()},
    {"set_keyboard_interactivity", "u", plain.data()},
    {"get_popup", "o", plain.data()},
    {"ack_configure", "u", plain.data()},
    {"destroy", "", plain.data()},
    {"set_layer", "2u", plain.data()},
}};
const std::array<wl_message, 2> surfaceEvents{{
    {"configure", "uuu", plain.data()},
    {"closed", "", plain.data()},
}};

const wl_interface surfaceInterface{"zwlr_layer_surface_v1",     int(version),
                                    int(surfaceRequests.size()), surfaceRequests.data(),
                                    int(surfaceEvents.size()),   surfaceEvents.data()};

template <typename... Arguments>
void send(wl_proxy* role, SurfaceRequest request, Arguments... arguments) {
    wl_proxy_marshal_flags(role, request, nullptr, wl_proxy_get_version(role), 0, arguments...);
}

}  // namespace

const wl_interface& shellInterface() {
    static const wl_interface interface {
        "zwlr_layer_shell_v1", int(version), int(shellRequests.size()), shellRequests.data(), 0, nullptr
    };
    return interface;
}

wl_proxy* getLayerSurface(wl_proxy* shell, wl_surface* surface, wl_output* output, Layer layer,
                          const char* nameSpace) {
    return wl_proxy_marshal_flags(shell, getLayerSurfaceRequest, &surfaceInterface,
                                  wl_proxy_get_version(shell), 0, nullptr, surface, output,
                                  std::uint32_t(layer), nameSpace);
}

void addListener(wl_proxy* role, const SurfaceListener& listener, void* data) {
    // The library reads it as a table of functions in the order of the events.
    auto* functions = reinterpret_cast<void (**)()>(const_cast<SurfaceListener*>(&listener));
    wl_proxy_add_listener(role, functions, data);
}

void setSize(wl_proxy* role, std::uint32_t width, std::uint32_t height) {
    send(role, setSizeRequest, width, height);
}

void setAnchor(wl_proxy* role, std::uint32_t edges) {
    send(role, setAnchorRequest, edges);
}

void setLeftMargin(wl_proxy* role, std::int32_t points) {
    send(role, setMarginRequest, std::int32_t(0), std::int32_t(0), std::int32_t(0), points);
}

void setLayer(wl_proxy* role, Layer layer) {
    if (wl_proxy_get_version(role) >= setLayerSince)
        send(role, setLayerRequest, std::uint32_t(layer));
}

void setExclusiveZone(wl_proxy* role, std::int32_t zone) {
    send(role, setExclusiveZoneRequest, zone);
}

void setKeyboardInteractivity(wl_proxy* role, Keyboard keyboard) {
    send(role, setKeyboardInteractivityRequest, std::uint32_t(keyboard));
}

void acknowledgeConfigure(wl_proxy* role, std::uint32_t serial) {
    send(role, acknowledgeConfigureRequest, serial);
}

void destroyLayerSurface(wl_proxy* role) {
    wl_proxy_marshal_flags(role, destroySurfaceRequest, nullptr, wl_proxy_get_version(role),
                           WL_MARSHAL_FLAG_DESTROY);
}

void destroyShell(wl_proxy* shell) {
    if (wl_proxy_get_version(shell) >= destroyShellSince)
        wl_proxy_marshal_flags(shell, destroyShellRequest, nullptr, wl_proxy_get_version(shell),
                               WL_MARSHAL_FLAG_DESTROY);
    else
        wl_proxy_destroy(shell);
}

}  // namespace kestrant::layer_shell
