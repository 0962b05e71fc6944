#include "platform/linux/desktop/DesktopDatabase.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>

#include <algorithm>

namespace kestrant {
namespace {

/// The name goes on with the version of the service's interface, which does not matter here.
const QString serviceName = QStringLiteral("org.gnome.evolution.dataserver.Sources");

constexpr int answerTimeoutMilliseconds = 500;

}  // namespace

bool desktopHasCalendarService() {
    const QDBusMessage answer = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListActivatableNames")),
        QDBus::Block, answerTimeoutMilliseconds);
    const QStringList names = answer.arguments().value(0).toStringList();
    return std::any_of(names.begin(), names.end(),
                       [](const QString& name) { return name.startsWith(serviceName); });
}

}  // namespace kestrant
