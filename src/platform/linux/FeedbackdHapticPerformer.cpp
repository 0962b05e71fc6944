#include "platform/linux/FeedbackdHapticPerformer.h"

#include "foundation/StandardFolders.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace kestrant {

namespace {

constexpr int onceEach = -1;

/// The service knows events, not patterns: the names are those that desktops give to sounds, and a
/// button's release is felt more softly than its press.
QString eventOf(HapticPattern pattern) {
    return pattern == HapticPattern::alignment ? QStringLiteral("button-released")
                                               : QStringLiteral("button-pressed");
}

}  // namespace

void FeedbackdHapticPerformer::perform(HapticPattern pattern) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.sigxcpu.Feedback"), QStringLiteral("/org/sigxcpu/Feedback"),
        QStringLiteral("org.sigxcpu.Feedback"), QStringLiteral("TriggerFeedback"));
    message.setAutoStartService(false);
    // The quiet profile is felt and not heard.
    const QVariantMap hints{{QStringLiteral("profile"), QStringLiteral("quiet")}};
    message << bundleIdentifier << eventOf(pattern) << hints << onceEach;
    if (!bus_)
        bus_ = QDBusConnection::sessionBus();
    bus_->send(message);
}

}  // namespace kestrant
