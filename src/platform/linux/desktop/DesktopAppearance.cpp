#include "platform/linux/desktop/DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interfaceName = QStringLiteral("org.freedesktop.portal.Settings");

const QString commonGroup = QStringLiteral("org.freedesktop.appearance");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString accessibilityGroup = QStringLiteral("org.gnome.desktop.a11y.interface");
const QString plasmaGroup = QStringLiteral("org.kde.kdeglobals.KDE");

/// Beyond these a setting is a mistake.
constexpr double smallestTextScale = 0.5;
constexpr double largestTextScale = 3.0;

QMap<QString, QVariantMap> readSettings(const QVariant& reply) {
    QMap<QString, QVariantMap> settings;
    if (!reply.canConvert<QDBusArgument>())
        return settings;
    const auto argument = reply.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{sa{sv}}"))
        return settings;
    argument.beginMap();
    while (!argument.atEnd()) {
        QString group;
        QVariantMap values;
        argument.beginMapEntry();
        argument >> group >> values;
        argument.endMapEntry();
        settings.insert(group, values);
    }
    argument.endMap();
    return settings;
}

}  // namespace

AppearanceSettings readAppearance(const QMap<QString, QVariantMap>& settings) {
    const auto value = [&settings](const QString& group, const char* key) {
        return settings.value(group).value(QString::fromLatin1(key));
    };
    const auto isOne = [](const QVariant& number) { return number.toUInt() == 1; };

    AppearanceSettings appearance;
    const QVariant animations = value(interfaceGroup, "enable-animations");
    const QVariant plasmaSpeed = value(plasmaGroup, "AnimationDurationFactor");
    bool isNumber = false;
    const double durationFactor = plasmaSpeed.toString().toDouble(&isNumber);
    appearance.reducedMotion = isOne(value(commonGroup, "reduced-motion")) ||
                               (animations.typeId() == QMetaType::Bool && !animations.toBool()) ||
                               (isNumber && durationFactor == 0.0);
    appearance.highContrast =
        isOne(value(commonGroup, "contrast")) || value(accessibilityGroup, "high-contrast").toBool();
    const QVariant scale = value(interfaceGroup, "text-scaling-factor");
    if (scale.typeId() == QMetaType::Double)
        appearance.textScale = std::clamp(scale.toDouble(), smallestTextScale, largestTextScale);
    return appearance;
}

DesktopAppearance::DesktopAppearance(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , bus_(bus) {
    // The slot is found by the names of its types, and this one is not known by itself.
    qRegisterMetaType<QDBusVariant>("QDBusVariant");
    bus_.connect(serviceName, objectPath, interfaceName, QStringLiteral("SettingChanged"), this,
                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage message =
        QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, QStringLiteral("ReadAll"));
    message << QStringList{commonGroup, interfaceGroup, accessibilityGroup, plasmaGroup};
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError())
            return;
        settings_ = readSettings(watcher->reply().arguments().value(0));
        update();
    });
}

void DesktopAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    settings_[group].insert(key, value.variant());
    update();
}

void DesktopAppearance::update() {
    const AppearanceSettings appearance = readAppearance(settings_);
    if (std::exchange(appearance_, appearance) != appearance)
        Q_EMIT changed();
}

}  // namespace kestrant
