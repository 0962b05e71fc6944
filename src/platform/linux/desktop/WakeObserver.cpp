#include "platform/linux/desktop/WakeObserver.h"

#include <utility>

namespace kestrant {

WakeObserver::WakeObserver(std::function<void()> woke, QDBusConnection bus) : woke_(std::move(woke)) {
    bus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
                SLOT(prepareForSleep(bool)));
}

void WakeObserver::prepareForSleep(bool isAboutToSleep) {
    if (!isAboutToSleep)
        woke_();
}

}  // namespace kestrant
