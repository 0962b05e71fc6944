#include "platform/linux/desktop/FeedbackdHapticPerformer.h"

#include "network/EventLoop.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

using namespace kestrant;

namespace {

/// A feedback service on the bus that keeps the events it is told of.
class FeedbackService : public QDBusVirtualObject {
  public:
    FeedbackService() {
        EXPECT_TRUE(bus_.registerVirtualObject(QStringLiteral("/org/sigxcpu/Feedback"), this));
        EXPECT_TRUE(bus_.registerService(QStringLiteral("org.sigxcpu.Feedback")));
    }
    ~FeedbackService() override { QDBusConnection::disconnectFromBus(name_); }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QVariantList arguments = message.arguments();
        if (message.member() != QLatin1String("TriggerFeedback") ||
            message.signature() != QLatin1String("ssa{sv}i"))
            return false;
        const auto hints = qdbus_cast<QVariantMap>(arguments.at(2));
        events << arguments.at(1).toString() + u' ' + hints.value(QStringLiteral("profile")).toString();
        return true;
    }

    QStringList events;

  private:
    QString name_ = QStringLiteral("feedback-service");
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name_);
};

TEST(FeedbackdHapticPerformer, TellsTheServiceWhatIsToBeFeltAndNotHeard) {
    ensureApplication();
    FeedbackService service;
    FeedbackdHapticPerformer performer;
    for (const auto pattern : {HapticPattern::generic, HapticPattern::alignment, HapticPattern::levelChange})
        performer.perform(pattern, HapticProfile::full);
    performer.perform(HapticPattern::generic, HapticProfile::light);
    EXPECT_TRUE(turnUntil([&service] { return service.events.size() == 4; }));
    EXPECT_EQ(service.events, (QStringList{"button-pressed quiet", "button-released quiet",
                                           "button-pressed quiet", "button-released quiet"}));
}

TEST(FeedbackdHapticPerformer, DoesNothingWithoutAServiceOrWithoutABus) {
    ensureApplication();
    const auto session = QDBusConnection::sessionBus();
    FeedbackdHapticPerformer().perform(HapticPattern::generic, HapticProfile::full);
    EXPECT_FALSE(session.interface()->isServiceRegistered(QStringLiteral("org.sigxcpu.Feedback")));
    FeedbackdHapticPerformer(QDBusConnection(QStringLiteral("no such bus")))
        .perform(HapticPattern::generic, HapticProfile::full);
}

}  // namespace
