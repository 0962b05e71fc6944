#include "platform/linux/wayland/LayerShell.h"

#include "platform/linux/wayland/LayerShellProtocol.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <wayland-client.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace kestrant {
namespace {

/// What a registry tells of interest.
struct Globals {
    wl_proxy* shell = nullptr;
    bool isOfKWin = false;
};

void globalAppeared(void* data, wl_registry* registry, std::uint32_t number, const char* name,
                    std::uint32_t version) {
    auto& globals = *static_cast<Globals*>(data);
    const wl_interface& interface = layer_shell::shellInterface();
    if (std::string_view(name) == interface.name && !globals.shell)
        globals.shell = static_cast<wl_proxy*>(
            wl_registry_bind(registry, number, &interface, std::min(version, layer_shell::version)));
    if (std::string_view(name) == "org_kde_plasma_shell")
        globals.isOfKWin = true;
}

const wl_registry_listener registryListener{&globalAppeared, [](void*, wl_registry*, std::uint32_t) {}};

template <typename Resource>
Resource* resourceOf(const char* name, QWindow& window) {
    return static_cast<Resource*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow(name, &window));
}

}  // namespace

bool LayerShell::isOffered() {
    const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(wl_display_connect(nullptr),
                                                                                &wl_display_disconnect);
    if (!display)
        return false;
    Globals globals;
    const std::unique_ptr<wl_registry, decltype(&wl_registry_destroy)> registry(
        wl_display_get_registry(display.get()), &wl_registry_destroy);
    wl_registry_add_listener(registry.get(), &registryListener, &globals);
    const bool isAnswered = wl_display_roundtrip(display.get()) >= 0;
    if (globals.shell)
        layer_shell::destroyShell(globals.shell);
    return isAnswered && globals.shell;
}

namespace {

layer_shell::Layer layerOf(const LayerShell::Place& place) {
    return place.isBelowFullScreen ? layer_shell::Layer::top : layer_shell::Layer::overlay;
}

}  // namespace

struct LayerShell::Private {
    wl_display* display = nullptr;
    /// Of the shell, so that nothing of Qt's is dispatched while it is waited for.
    wl_event_queue* queue = nullptr;
    Globals globals;
};

LayerShell::LayerShell() : d_(std::make_unique<Private>()) {
    d_->display = static_cast<wl_display*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
    if (!d_->display)
        return;
    d_->queue = wl_display_create_queue(d_->display);
    auto* wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(d_->display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), d_->queue);
    wl_registry* registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    wl_registry_add_listener(registry, &registryListener, &d_->globals);
    wl_display_roundtrip_queue(d_->display, d_->queue);
    wl_registry_destroy(registry);
}

LayerShell::~LayerShell() {
    if (d_->globals.shell)
        layer_shell::destroyShell(d_->globals.shell);
    if (d_->queue)
        wl_event_queue_destroy(d_->queue);
}

bool LayerShell::isBound() const {
    return d_->globals.shell != nullptr;
}

bool LayerShell::keepsKeyboard() const {
    return d_->globals.isOfKWin;
}

struct LayerShell::Surface::Private {
    wl_surface* surface = nullptr;
    wl_proxy* role = nullptr;
    std::function<void()> closed;
};

LayerShell::Surface::Surface(LayerShell& shell, QWindow& window, QScreen* screen, QSize size,
                             const Place& place, std::function<void()> closed)
    : d_(std::make_unique<Private>()) {
    using namespace layer_shell;
    d_->closed = std::move(closed);
    d_->surface = resourceOf<wl_surface>("surface", window);
    auto* output =
        screen ? static_cast<wl_output*>(
                     QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", screen))
               : nullptr;
    d_->role = getLayerSurface(shell.d_->globals.shell, d_->surface, output, layerOf(place), "kestrant");
    static constexpr SurfaceListener listener{
        [](void*, wl_proxy* role, std::uint32_t serial, std::uint32_t, std::uint32_t) {
            acknowledgeConfigure(role, serial);
        },
        [](void* data, wl_proxy*) { static_cast<Private*>(data)->closed(); },
    };
    addListener(d_->role, listener, d_.get());
    setSize(size);
    setPlace(place);
    setKeyboardInteractivity(d_->role, Keyboard::none);
    wl_surface_commit(d_->surface);
    // Qt's first buffer must come after the first configure was acknowledged.
    wl_display_roundtrip_queue(shell.d_->display, shell.d_->queue);
    // Whatever comes later is dispatched by Qt.
    wl_proxy_set_queue(d_->role, nullptr);
}

LayerShell::Surface::~Surface() {
    layer_shell::destroyLayerSurface(d_->role);
}

void LayerShell::Surface::setSize(QSize size) {
    layer_shell::setSize(d_->role, std::uint32_t(size.width()), std::uint32_t(size.height()));
}

void LayerShell::Surface::setPlace(const Place& place) {
    using namespace layer_shell;
    setLayer(d_->role, layerOf(place));
    setAnchor(d_->role, std::uint32_t(Edge::top) | (place.left ? std::uint32_t(Edge::left) : 0));
    setLeftMargin(d_->role, place.left.value_or(0));
    setExclusiveZone(d_->role, place.isBelowBars ? 0 : ignoresOthers);
}

void LayerShell::Surface::setWantsKeyboard(bool wants) {
    using layer_shell::Keyboard;
    const bool knowsOnDemand = wl_proxy_get_version(d_->role) >= 4;
    layer_shell::setKeyboardInteractivity(d_->role, !wants          ? Keyboard::none
                                                    : knowsOnDemand ? Keyboard::onDemand
                                                                    : Keyboard::exclusive);
    wl_surface_commit(d_->surface);
}

}  // namespace kestrant
