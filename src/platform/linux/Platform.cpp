#include "platform/linux/Platform.h"

#include <xcb/xcb.h>

#include <memory>
#include <utility>

namespace kestrant {

namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

bool canConnect() {
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0;
}

}  // namespace

PlatformChoice::PlatformChoice(const QByteArray& platform) {
    if (qEnvironmentVariableIsSet(platformVariable))
        previous_ = qgetenv(platformVariable);
    qputenv(platformVariable, platform);
}

PlatformChoice::PlatformChoice(PlatformChoice&& other) noexcept
    : previous_(std::move(other.previous_))
    , active_(std::exchange(other.active_, false)) {}

PlatformChoice::~PlatformChoice() {
    if (!active_)
        return;
    if (previous_)
        qputenv(platformVariable, *previous_);
    else
        qunsetenv(platformVariable);
}

tl::expected<PlatformChoice, TextPair> preparePlatform() {
    const QByteArray wanted = qgetenv(platformVariable);
    if (!wanted.isEmpty() && !wanted.startsWith("wayland") && !wanted.startsWith("xcb"))
        return PlatformChoice(wanted);
    if (canConnect())
        return PlatformChoice("xcb");

    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return tl::unexpected(
            text("There is no X display: DISPLAY is not set. In a Wayland session Kestrant needs "
                 "XWayland.",
                 "Il n’y a pas d’affichage X : DISPLAY n’est pas défini. Dans une session Wayland, "
                 "Kestrant a besoin de XWayland."));
    const QString name = QString::fromLocal8Bit(display);
    return tl::unexpected(
        TextPair{QStringLiteral("The X display “%1” cannot be opened.").arg(name),
                 QStringLiteral("L’affichage X « %1 » ne peut pas être ouvert.").arg(name)});
}

}  // namespace kestrant
