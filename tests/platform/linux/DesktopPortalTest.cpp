#include "network/EventLoop.h"
#include "platform/linux/desktop/DesktopAppearance.h"
#include "platform/linux/desktop/FolderDialog.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

#include <optional>
#include <utility>

using namespace kestrant;

namespace {

const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString commonGroup = QStringLiteral("org.freedesktop.appearance");

using Groups = QMap<QString, QVariantMap>;

/// The desktop's portal on the bus, with its settings and its dialog.
class Portal : public QDBusVirtualObject {
  public:
    explicit Portal(Groups groups = {}) : groups_(std::move(groups)) {
        EXPECT_TRUE(bus_.registerVirtualObject(portalPath, this));
        EXPECT_TRUE(bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    ~Portal() override {
        bus_.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        bus_.unregisterObject(portalPath);
        QDBusConnection::disconnectFromBus(name_);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("ReadAll")) {
            QDBusArgument answer;
            answer.beginMap(QMetaType(QMetaType::QString), QMetaType(QMetaType::QVariantMap));
            for (auto group = groups_.cbegin(); group != groups_.cend(); ++group) {
                answer.beginMapEntry();
                answer << group.key() << group.value();
                answer.endMapEntry();
            }
            answer.endMap();
            return connection.send(message.createReply(QVariant::fromValue(answer)));
        }
        if (message.member() != QLatin1String("OpenFile"))
            return false;
        QVariantMap values;
        message.arguments().at(2).value<QDBusArgument>() >> values;
        started = QString::fromUtf8(values.value(QStringLiteral("current_folder")).toByteArray().chopped(1));
        request_ = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                       .arg(message.service().mid(1).replace(u'.', u'_'),
                            values.value(QStringLiteral("handle_token")).toString());
        return connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request_))));
    }

    void change(const QString& group, const char* key, const QVariant& value) {
        QDBusMessage message = QDBusMessage::createSignal(
            portalPath, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
        message << group << QString::fromUtf8(key) << QVariant::fromValue(QDBusVariant(value));
        bus_.send(message);
    }
    void answer(uint response, const QStringList& uris) {
        QDBusMessage message = QDBusMessage::createSignal(
            request_, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        message << response << QVariantMap{{QStringLiteral("uris"), uris}};
        bus_.send(message);
    }

    QString started;

  private:
    Groups groups_;
    QString request_;
    QString name_ = QStringLiteral("portal");
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name_);
};

TEST(DesktopAppearance, UnderstandsWhatVariousDesktopsSay) {
    const auto setting = [](const char* group, const char* key, const QVariant& value) {
        return Groups{{QString::fromUtf8(group), {{QString::fromUtf8(key), value}}}};
    };
    const std::pair<Groups, AppearanceSettings> cases[] = {
        {{}, {}},
        {setting("org.gnome.desktop.interface", "enable-animations", false), {.reducedMotion = true}},
        {setting("org.gnome.desktop.interface", "enable-animations", true), {}},
        {setting("org.gnome.desktop.interface", "enable-animations", "no"), {}},
        {setting("org.freedesktop.appearance", "reduced-motion", 1U), {.reducedMotion = true}},
        {setting("org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0"), {.reducedMotion = true}},
        {setting("org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0.5"), {}},
        {setting("org.freedesktop.appearance", "contrast", 1U), {.highContrast = true}},
        {setting("org.freedesktop.appearance", "contrast", 0U), {}},
        {setting("org.gnome.desktop.a11y.interface", "high-contrast", true), {.highContrast = true}},
        {setting("org.gnome.desktop.interface", "text-scaling-factor", 1.25), {.textScale = 1.25}},
        {setting("org.gnome.desktop.interface", "text-scaling-factor", 40.0), {.textScale = 3.0}},
        {setting("org.gnome.desktop.interface", "text-scaling-factor", "large"), {}},
    };
    for (const auto& [settings, wishes] : cases)
        EXPECT_EQ(readAppearance(settings), wishes)
            << (settings.isEmpty() ? "nothing" : qPrintable(settings.first().firstKey()));
}

TEST(DesktopAppearance, TakesOverWhatThePortalSaysAndFollowsIt) {
    ensureApplication();
    Portal portal({{interfaceGroup, {{QStringLiteral("enable-animations"), false}}},
                   {commonGroup, {{QStringLiteral("contrast"), 1U}}}});
    DesktopAppearance appearance;
    EXPECT_EQ(appearance.appearance(), AppearanceSettings());
    ASSERT_TRUE(turnUntil([&] { return appearance.appearance().reducedMotion; }));
    EXPECT_TRUE(appearance.appearance().highContrast);
    portal.change(interfaceGroup, "enable-animations", true);
    portal.change(interfaceGroup, "text-scaling-factor", 1.5);
    ASSERT_TRUE(turnUntil([&] { return appearance.appearance().textScale == 1.5; }));
    EXPECT_EQ(appearance.appearance(), (AppearanceSettings{.highContrast = true, .textScale = 1.5}));
}

TEST(FolderDialog, TellsTheFolderThatWasChosen) {
    ensureApplication();
    Portal portal;
    FolderDialog dialog;
    std::optional<tl::expected<QString, TextPair>> folder;
    dialog.open(QStringLiteral("Folder"), QStringLiteral("/home/maren/d\u00e9p\u00f4t"),
                [&](const auto& answered) { folder = answered; });
    ASSERT_TRUE(turnUntil([&] { return !portal.started.isEmpty(); }));
    EXPECT_EQ(portal.started, QStringLiteral("/home/maren/d\u00e9p\u00f4t"));
    portal.answer(0, {QStringLiteral("file:///home/maren/my%20calendars")});
    ASSERT_TRUE(turnUntil([&] { return folder.has_value(); }));
    EXPECT_EQ(*folder, QStringLiteral("/home/maren/my calendars"));
}

TEST(FolderDialog, TellsNothingWhenThePersonChangesTheirMind) {
    ensureApplication();
    Portal portal;
    FolderDialog dialog;
    int answers = 0;
    dialog.open({}, QStringLiteral("/first"), [&](const auto&) { ++answers; });
    ASSERT_TRUE(turnUntil([&] { return portal.started == QLatin1String("/first"); }));
    portal.answer(1, {});
    std::optional<QString> folder;
    dialog.open({}, QStringLiteral("/second"), [&](const auto& answered) { folder = answered.value(); });
    ASSERT_TRUE(turnUntil([&] { return portal.started == QLatin1String("/second"); }));
    portal.answer(0, {QStringLiteral("file:///second/folder")});
    ASSERT_TRUE(turnUntil([&] { return folder.has_value(); }));
    EXPECT_EQ(folder, QStringLiteral("/second/folder"));
    EXPECT_EQ(answers, 0);
}

TEST(FolderDialog, SaysSoWhereThereIsNone) {
    ensureApplication();
    FolderDialog dialog;
    std::optional<tl::expected<QString, TextPair>> folder;
    dialog.open({}, QStringLiteral("/"), [&](const auto& answered) { folder = answered; });
    ASSERT_TRUE(turnUntil([&] { return folder.has_value(); }));
    ASSERT_FALSE(folder->has_value());
    EXPECT_FALSE(folder->error().english.isEmpty());
}

}  // namespace
