#include "platform/linux/desktop/FeedbackdHapticPerformer.h"

#include "foundation/StandardFolders.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace kestrant {

namespace {

constexpr int onceEach = -1;

QString serviceName() {
    return QStringLiteral("org.sigxcpu.Feedback");
}

/// The service knows events, not patterns: the names are those that desktops give to sounds, and a
/// button's release is felt more softly than its press.
QString eventOf(HapticPattern pattern, HapticProfile strength) {
    return pattern == HapticPattern::alignment || strength == HapticProfile::light
               ? QStringLiteral("button-released")
               : QStringLiteral("button-pressed");
}

}  // namespace

QDBusConnection& FeedbackdHapticPerformer::bus() {
    if (!bus_)
        bus_ = QDBusConnection::sessionBus();
    return *bus_;
}

void FeedbackdHapticPerformer::watch() {
    watcher_ =
        std::make_unique<QDBusServiceWatcher>(serviceName(), bus(), QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(
        watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, watcher_.get(),
        [this](const QString&, const QString&, const QString& owner) { isAvailable_ = !owner.isEmpty(); });
    QDBusMessage question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question << serviceName();
    auto* answer = new QDBusPendingCallWatcher(bus().asyncCall(question), watcher_.get());
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [this, answer] {
        isAvailable_ = isAvailable_ || QDBusPendingReply<bool>(*answer).value();
        answer->deleteLater();
    });
}

void FeedbackdHapticPerformer::perform(HapticPattern pattern, HapticProfile strength) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(serviceName(), QStringLiteral("/org/sigxcpu/Feedback"), serviceName(),
                                       QStringLiteral("TriggerFeedback"));
    message.setAutoStartService(false);
    // The quiet profile is felt and not heard.
    const QVariantMap hints{{QStringLiteral("profile"), QStringLiteral("quiet")}};
    message << desktopIdentifier << eventOf(pattern, strength) << hints << onceEach;
    bus().send(message);
}

}  // namespace kestrant
