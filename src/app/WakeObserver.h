#pragma once

#include <QObject>

#include <functional>

namespace kestrant {

/// Tells when the machine has woken up, as the login manager announces it on the system bus; never where
/// there is no such bus. Thread: main.
class WakeObserver : public QObject {
    Q_OBJECT

  public:
    explicit WakeObserver(std::function<void()> woke);

  private Q_SLOTS:
    void prepareForSleep(bool isAboutToSleep);

  private:
    std::function<void()> woke_;
};

}  // namespace kestrant
