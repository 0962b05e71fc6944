#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace kestrant {

/// Tells when the machine has woken up, as the login manager (org.freedesktop.login1) announces it; never
/// where it is missing. One that is started or restarted later is heard as well. Thread: main.
class WakeObserver : public QObject {
    Q_OBJECT

  public:
    explicit WakeObserver(std::function<void()> woke, QDBusConnection bus = QDBusConnection::systemBus());

  private Q_SLOTS:
    void prepareForSleep(bool isAboutToSleep);

  private:
    std::function<void()> woke_;
};

}  // namespace kestrant
