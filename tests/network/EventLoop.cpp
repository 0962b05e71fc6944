#include "network/EventLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

#include <chrono>

namespace kestrant {

void ensureApplication() {
    if (QCoreApplication::instance())
        return;
    static int count = 1;
    static char name[] = "tests";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments);
}

bool turnUntil(const std::function<bool()>& done) {
    ensureApplication();
    QTimer patience;
    patience.setSingleShot(true);
    patience.start(std::chrono::seconds(60));
    while (!done()) {
        if (!patience.isActive())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void wakeLoop() {
    QCoreApplication::eventDispatcher()->wakeUp();
}

}  // namespace kestrant
