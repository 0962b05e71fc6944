#include "platform/linux/x11/Platform.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>

#include <xcb/xcb.h>

#include <memory>
#include <utility>

namespace kestrant {

namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";
constexpr char buffersVariable[] = "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION";
constexpr char runtimeVariable[] = "XDG_RUNTIME_DIR";

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

/// Qt ends a process that asks for a plug-in that is not there.
bool hasWaylandPlugin() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("libqwayland-*.so")}).isEmpty();
}

bool canConnect() {
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0;
}

}  // namespace

PlatformChoice::PlatformChoice(const QByteArray& platform) {
    set(platformVariable, platform);
    // The software renderer needs no GPU driver in the process.
    if (platform == "wayland")
        set(buffersVariable, "shm");
    if (qEnvironmentVariableIsEmpty(runtimeVariable))
        runtimeFolder_ = std::make_unique<QTemporaryDir>();
    if (runtimeFolder_ && runtimeFolder_->isValid())
        set(runtimeVariable, QFile::encodeName(runtimeFolder_->path()));
}

PlatformChoice::PlatformChoice(PlatformChoice&& other) noexcept
    : previous_(std::exchange(other.previous_, {}))
    , runtimeFolder_(std::move(other.runtimeFolder_)) {}

PlatformChoice::~PlatformChoice() {
    for (const Previous& each : previous_) {
        if (each.value)
            qputenv(each.variable, *each.value);
        else
            qunsetenv(each.variable);
    }
}

void PlatformChoice::set(const char* variable, const QByteArray& value) {
    previous_.push_back(
        {variable, qEnvironmentVariableIsSet(variable) ? std::optional(qgetenv(variable)) : std::nullopt});
    qputenv(variable, value);
}

tl::expected<PlatformChoice, TextPair> preparePlatform(const QByteArray& wanted,
                                                       const std::function<bool()>& offersLayerShell) {
    const QByteArray named = qgetenv(platformVariable);
    if (wanted.isEmpty() && !named.isEmpty() && !named.startsWith("wayland") && !named.startsWith("xcb"))
        return PlatformChoice(named);
    const bool mayBeWayland = wanted.isEmpty() ? !named.startsWith("xcb") : wanted == "wayland";
    if (mayBeWayland && hasWaylandPlugin() && offersLayerShell())
        return PlatformChoice("wayland");
    if (wanted == "wayland")
        return tl::unexpected(
            text("The compositor has no layer shell, or Qt’s Wayland plug-in is not installed.",
                 "Le compositeur n’offre pas de « layer shell », ou le greffon Wayland de Qt n’est pas "
                 "installé."));
    if (canConnect())
        return PlatformChoice("xcb");

    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return tl::unexpected(
            text("There is no X display: DISPLAY is not set. In a Wayland session Kestrant needs a "
                 "compositor with the layer shell, or XWayland.",
                 "Il n’y a pas d’affichage X : DISPLAY n’est pas défini. Dans une session Wayland, "
                 "Kestrant a besoin d’un compositeur qui offre le « layer shell », ou de XWayland."));
    const QString name = QString::fromLocal8Bit(display);
    return tl::unexpected(
        TextPair{QStringLiteral("The X display “%1” cannot be opened.").arg(name),
                 QStringLiteral("L’affichage X « %1 » ne peut pas être ouvert.").arg(name)});
}

}  // namespace kestrant
