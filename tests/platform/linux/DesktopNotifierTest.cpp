#include "platform/linux/desktop/DesktopNotifier.h"

#include "network/EventLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace kestrant;

namespace {

struct Shown {
    uint number = 0;
    uint replaced = 0;
    QString title;
    QString body;
    QStringList actions;
};

/// A notification service on the bus that keeps what it is asked to show.
class Service : public QDBusVirtualObject {
  public:
    explicit Service(QStringList capabilities = {QStringLiteral("body"), QStringLiteral("actions")})
        : capabilities_(std::move(capabilities)) {
        EXPECT_TRUE(bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), this));
        EXPECT_TRUE(bus_.registerService(QStringLiteral("org.freedesktop.Notifications")));
    }
    ~Service() override {
        bus_.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
        bus_.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
        QDBusConnection::disconnectFromBus(name_);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QVariantList arguments = message.arguments();
        if (message.member() == QLatin1String("GetCapabilities"))
            return connection.send(message.createReply(capabilities_));
        if (message.member() == QLatin1String("CloseNotification")) {
            closed.push_back(arguments.at(0).toUInt());
            return connection.send(message.createReply());
        }
        if (message.member() != QLatin1String("Notify"))
            return false;
        if (refuses)
            return connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("no room")));
        const uint replaced = arguments.at(1).toUInt();
        const uint number = replaced == 0 ? ++last_ : replaced;
        shown.push_back({number, replaced, arguments.at(3).toString(), arguments.at(4).toString(),
                         arguments.at(5).toStringList()});
        return connection.send(message.createReply(number));
    }

    void invoke(uint number, const char* action) { tell("ActionInvoked", number, QString::fromUtf8(action)); }
    void close(uint number, uint reason) { tell("NotificationClosed", number, reason); }

    std::vector<Shown> shown;
    std::vector<uint> closed;
    bool refuses = false;

  private:
    void tell(const char* name, uint number, const QVariant& more) {
        QDBusMessage message = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                          QStringLiteral("org.freedesktop.Notifications"),
                                                          QString::fromUtf8(name));
        message << number << more;
        bus_.send(message);
    }

    QStringList capabilities_;
    QString name_ = QStringLiteral("service");
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name_);
    uint last_ = 6;
};

struct Answered {
    QString id;
    AlertAnswer answer;
    bool operator==(const Answered&) const = default;
};

class DesktopNotifierTest : public ::testing::Test {
  protected:
    DesktopNotifierTest() {
        ensureApplication();
        notifier = std::make_unique<DesktopNotifier>();
        subscription = notifier->observeAnswers([this](const QString& id, AlertAnswer answer) {
            answers.push_back({id, answer});
        });
    }
    /// Shows it and waits for the outcome.
    bool show(const QString& id, const QString& body = QStringLiteral("Today 14:00")) {
        std::optional<bool> outcome;
        notifier->show({.id = id,
                        .title = QStringLiteral("Water <the> plants"),
                        .body = body,
                        .actions = {{AlertAnswer::complete, QStringLiteral("Complete")},
                                    {AlertAnswer::snoozeOneHour, QStringLiteral("1 hour")}}},
                       [&](bool shown) { outcome = shown; });
        EXPECT_FALSE(outcome.has_value()) << "never from within the call";
        EXPECT_TRUE(turnUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(false);
    }

    std::unique_ptr<DesktopNotifier> notifier;
    Subscription subscription;
    std::vector<Answered> answers;
};

TEST_F(DesktopNotifierTest, ShowsTheAlertAndTellsTheAnswerOnce) {
    Service service;
    ASSERT_TRUE(show("a"));
    ASSERT_TRUE(show("b"));
    ASSERT_EQ(service.shown.size(), 2U);
    EXPECT_EQ(service.shown[0].title, "Water <the> plants");
    EXPECT_EQ(service.shown[0].actions,
              QStringList({"default", "", "complete", "Complete", "snooze-1-hour", "1 hour"}));
    service.invoke(service.shown[1].number, "snooze-1-hour");
    service.close(service.shown[1].number, 2);
    service.close(service.shown[0].number, 2);
    ASSERT_TRUE(turnUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers[0], (Answered{"b", AlertAnswer::snoozeOneHour}));
    EXPECT_EQ(answers[1], (Answered{"a", AlertAnswer::dismiss}));
}

TEST_F(DesktopNotifierTest, OneReminderHasOneNotification) {
    Service service;
    ASSERT_TRUE(show("a"));
    ASSERT_TRUE(show("a"));
    ASSERT_EQ(service.shown.size(), 2U);
    EXPECT_EQ(service.shown[1].replaced, service.shown[0].number);
}

TEST_F(DesktopNotifierTest, WhatGoesAwayByItselfOrIsWithdrawnIsNoAnswer) {
    Service service;
    ASSERT_TRUE(show("expired"));
    ASSERT_TRUE(show("withdrawn"));
    ASSERT_TRUE(show("answered"));
    service.close(service.shown[0].number, 1);
    notifier->withdraw("withdrawn");
    ASSERT_TRUE(turnUntil([&] { return service.closed.size() == 1; }));
    EXPECT_EQ(service.closed[0], service.shown[1].number);
    service.invoke(service.shown[1].number, "complete");
    service.invoke(service.shown[2].number, "somebody else's");
    service.invoke(999, "complete");
    service.invoke(service.shown[2].number, "complete");
    ASSERT_TRUE(turnUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers, std::vector<Answered>({{"answered", AlertAnswer::complete}}));
}

TEST_F(DesktopNotifierTest, EscapesTheBodyForServicesThatReadMarkup) {
    struct Case {
        QStringList capabilities;
        QString body;
    };
    for (const Case& c :
         {Case{{"body", "body-markup"}, "a &lt;b&gt; &amp; c␛"}, Case{{"body"}, "a <b> & c␛"}}) {
        Service service(c.capabilities);
        ASSERT_TRUE(show("a", "a <b> & c\x1B"));
        EXPECT_EQ(service.shown[0].body, c.body);
    }
}

TEST_F(DesktopNotifierTest, SurvivesAServiceThatIsAbsentRefusesOrDies) {
    EXPECT_FALSE(show("a"));
    {
        Service service;
        service.refuses = true;
        EXPECT_FALSE(show("a"));
        service.refuses = false;
        EXPECT_TRUE(show("a"));
    }
    EXPECT_FALSE(show("b"));
    Service another;
    ASSERT_TRUE(show("a"));
    EXPECT_EQ(another.shown[0].replaced, 0U) << "numbers of another service mean nothing";
    EXPECT_TRUE(answers.empty());
}

TEST_F(DesktopNotifierTest, WithdrawsEverythingAtItsEnd) {
    Service service;
    ASSERT_TRUE(show("a"));
    notifier.reset();
    EXPECT_TRUE(turnUntil([&] { return service.closed.size() == 1; }));
}

}  // namespace
