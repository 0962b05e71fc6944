#pragma once

#include "foundation/ObserverList.h"
#include "reminders/alerts/UserNotifier.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>

#include <functional>

class QDBusPendingCallWatcher;

namespace kestrant {

/// Notifications through the desktop's own service (org.freedesktop.Notifications, version 1.2 of its
/// protocol), which the bus starts where it is installed. They stay until they are answered where the
/// service allows that. Thread: main.
class DesktopNotifier final : public QObject, public UserNotifier {
    Q_OBJECT

  public:
    explicit DesktopNotifier(const QDBusConnection& bus = QDBusConnection::sessionBus(),
                             QObject* parent = nullptr);
    ~DesktopNotifier() override;

    void show(const UserNotification& notification, Shown shown) override;
    void withdraw(const QString& id) override;
    [[nodiscard]] Subscription observeAnswers(AnswerObserver observer) override;

  private Q_SLOTS:
    void actionInvoked(uint number, const QString& action);
    void notificationClosed(uint number, uint reason);

  private:
    /// One for each reminder, from show() until it is answered, withdrawn or gone.
    struct Entry {
        /// The service's own number; 0 until it has accepted the notification.
        uint number = 0;
        /// Tells the answer to this call from those to earlier ones.
        int generation = 0;
    };

    /// Calls the service. The reply comes to `done`, an error one included, never within this call.
    void call(const QString& method, const QVariantList& arguments,
              std::function<void(const QDBusPendingCallWatcher&)> done);
    void notify(const UserNotification& notification, bool readsMarkup, int generation, Shown shown);
    void close(uint number);
    [[nodiscard]] QString idOf(uint number) const;
    void answered(uint number, AlertAnswer answer);

    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    QHash<QString, Entry> entries_;
    int generation_ = 0;
    ObserverList<const QString&, AlertAnswer> observers_;
};

}  // namespace kestrant
