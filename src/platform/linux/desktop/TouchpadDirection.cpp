#include "platform/linux/desktop/TouchpadDirection.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

const QString touchpadPath = QStringLiteral("/desktop/peripherals/touchpad/");
const QString kwinService = QStringLiteral("org.kde.KWin");
const QString kwinDevices = QStringLiteral("/org/kde/KWin/InputDevice");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

QDBusMessage propertyCall(const QString& path, const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(kwinService, path, properties, method);
    message.setArguments(arguments);
    return message;
}

}  // namespace

TouchpadQuestion touchpadQuestion(const QByteArray& currentDesktop) {
    const auto gsettings = [](const char* schema) {
        return TouchpadQuestion{{QStringLiteral("gsettings"), QStringLiteral("get"),
                                 QString::fromLatin1(schema), QStringLiteral("natural-scroll")},
                                true};
    };
    for (const QByteArray& desktop : currentDesktop.split(':')) {
        if (desktop == "KDE")
            return {{}, true};
        if (desktop == "X-Cinnamon")
            return gsettings("org.cinnamon.desktop.peripherals.touchpad");
        if (desktop == "GNOME" || desktop == "Unity" || desktop == "Budgie" || desktop == "Pantheon")
            return gsettings("org.gnome.desktop.peripherals.touchpad");
        if (desktop == "sway")
            return {{QStringLiteral("swaymsg"), QStringLiteral("-r"), QStringLiteral("-t"),
                     QStringLiteral("get_inputs")},
                    true};
        if (desktop == "Hyprland")
            return {{QStringLiteral("hyprctl"), QStringLiteral("-j"), QStringLiteral("getoption"),
                     QStringLiteral("input:touchpad:natural_scroll")},
                    true};
    }
    return {};
}

std::optional<bool> touchpadAnswer(const QByteArray& answer) {
    const QByteArray word = answer.trimmed();
    if (word == "true" || word == "false")
        return word == "true";
    const QJsonDocument document = QJsonDocument::fromJson(word);
    if (document.isObject()) {
        const QJsonObject option = document.object();
        for (const char* key : {"bool", "int"}) {
            const QJsonValue value = option.value(QLatin1String(key));
            if (value.isBool() || value.isDouble())
                return value.isBool() ? value.toBool() : value.toDouble() != 0.0;
        }
    }
    for (const QJsonValue each : document.array()) {
        const QJsonObject input = each.toObject();
        if (input.value(QLatin1String("type")).toString() != QLatin1String("touchpad"))
            continue;
        const QString state = input.value(QLatin1String("libinput"))
                                  .toObject()
                                  .value(QLatin1String("natural_scroll"))
                                  .toString();
        if (!state.isEmpty())
            return state == QLatin1String("enabled");
    }
    return {};
}

TouchpadDirection::TouchpadDirection(const QByteArray& currentDesktop, const QDBusConnection& bus,
                                     QObject* parent)
    : QObject(parent)
    , bus_(bus)
    , question_(touchpadQuestion(currentDesktop)) {
    if (question_.command.value(0) == QLatin1String("gsettings"))
        bus_.connect({}, QStringLiteral("/ca/desrt/dconf/Writer/user"),
                     QStringLiteral("ca.desrt.dconf.Writer"), QStringLiteral("Notify"), this,
                     SLOT(settingsWritten(QString, QStringList, QString)));
    refresh();
}

void TouchpadDirection::refresh() {
    if (!question_.command.isEmpty())
        askProgram();
    else if (question_.isKnown)
        askKWin();
}

void TouchpadDirection::settingsWritten(const QString& prefix, const QStringList& changes, const QString&) {
    const auto concerns = [&](const QString& change) {
        const QString path = prefix + change;
        return path.contains(touchpadPath) || touchpadPath.contains(path);
    };
    if (std::any_of(changes.begin(), changes.end(), concerns))
        refresh();
}

void TouchpadDirection::askProgram() {
    if (asking_)
        return;
    asking_ = new QProcess(this);
    const auto end = [this, process = asking_](bool answered) {
        if (asking_ != process)
            return;
        asking_ = nullptr;
        process->deleteLater();
        learn(answered ? touchpadAnswer(process->readAllStandardOutput()) : std::nullopt);
    };
    connect(asking_, &QProcess::finished, this, [end](int code, QProcess::ExitStatus status) {
        end(status == QProcess::NormalExit && code == 0);
    });
    connect(asking_, &QProcess::errorOccurred, this, [end] { end(false); });
    asking_->start(question_.command.first(), question_.command.mid(1), QIODevice::ReadOnly);
}

void TouchpadDirection::askKWin() {
    const auto answered = [this](const QDBusMessage& call, auto receive) {
        auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, receive] {
            watcher->deleteLater();
            if (!watcher->isError())
                receive(watcher->reply().arguments().value(0));
        });
    };
    const QString manager = QStringLiteral("org.kde.KWin.InputDeviceManager");
    const QString device = QStringLiteral("org.kde.KWin.InputDevice");
    answered(propertyCall(kwinDevices, QStringLiteral("Get"), {manager, QStringLiteral("devicesSysNames")}),
             [this, answered, device](const QVariant& names) {
                 for (const QString& name : names.value<QDBusVariant>().variant().toStringList()) {
                     answered(propertyCall(kwinDevices + u'/' + name, QStringLiteral("GetAll"), {device}),
                              [this](const QVariant& reply) {
                                  const QVariantMap values = qdbus_cast<QVariantMap>(reply);
                                  if (values.value(QStringLiteral("touchpad")).toBool())
                                      learn(values.value(QStringLiteral("naturalScroll")).toBool());
                              });
                 }
             });
}

void TouchpadDirection::learn(std::optional<bool> isNatural) {
    // A failed answer changes nothing.
    if (isNatural && std::exchange(isNatural_, isNatural) != isNatural)
        Q_EMIT changed();
}

}  // namespace kestrant
