#include "platform/linux/desktop/WakeObserver.h"

#include "network/EventLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <gtest/gtest.h>

using namespace kestrant;

namespace {

const QString loginManager = QStringLiteral("org.freedesktop.login1");

/// What announces that the machine goes to sleep, on a connection of its own.
class LoginManager {
  public:
    LoginManager()
        : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("login manager"))) {
        EXPECT_TRUE(bus_.registerService(loginManager));
    }
    ~LoginManager() {
        bus_.unregisterService(loginManager);
        QDBusConnection::disconnectFromBus(QStringLiteral("login manager"));
    }

    void announce(bool isAboutToSleep) {
        QDBusMessage message = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                          loginManager + QStringLiteral(".Manager"),
                                                          QStringLiteral("PrepareForSleep"));
        message << isAboutToSleep;
        EXPECT_TRUE(bus_.send(message));
    }

  private:
    QDBusConnection bus_;
};

TEST(WakeObserverTest, TellsOfWakingOnceAndHearsALoginManagerThatCameLater) {
    int woke = 0;
    const WakeObserver observer([&woke] { ++woke; }, QDBusConnection::sessionBus());
    {
        LoginManager manager;
        manager.announce(true);
        manager.announce(false);
        ASSERT_TRUE(turnUntil([&woke] { return woke > 0; }));
        EXPECT_EQ(woke, 1);
    }
    LoginManager restarted;
    restarted.announce(false);
    ASSERT_TRUE(turnUntil([&woke] { return woke > 1; }));
}

TEST(WakeObserverTest, StaysSilentWithoutABus) {
    const WakeObserver observer([] { FAIL(); }, QDBusConnection(QStringLiteral("no such bus")));
}

}  // namespace
