#include "app/WakeObserver.h"

#include <QDBusConnection>

#include <utility>

namespace kestrant {

WakeObserver::WakeObserver(std::function<void()> woke) : woke_(std::move(woke)) {
    QDBusConnection::systemBus().connect(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
        SLOT(prepareForSleep(bool)));
}

void WakeObserver::prepareForSleep(bool isAboutToSleep) {
    if (!isAboutToSleep)
        woke_();
}

}  // namespace kestrant
