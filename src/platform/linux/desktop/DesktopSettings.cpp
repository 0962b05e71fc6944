#include "platform/linux/desktop/DesktopSettings.h"

#include <QList>
#include <QProcess>
#include <QStandardPaths>

namespace kestrant {
namespace {

struct Known {
    const char* desktop;
    const char* executable;
    QStringList arguments;
    TextPair program;
};

const QList<Known>& knownPrograms() {
    static const QList<Known> known{
        {"GNOME", "gnome-control-center", {"online-accounts"}, text("Settings", "Paramètres")},
        {"Unity", "gnome-control-center", {"online-accounts"}, text("Settings", "Paramètres")},
        {"Budgie", "budgie-control-center", {"online-accounts"}, text("Settings", "Paramètres")},
        {"Budgie", "gnome-control-center", {"online-accounts"}, text("Settings", "Paramètres")},
        {"KDE", "systemsettings", {"kcm_kaccounts"}, text("System Settings", "Configuration du système")},
        {"KDE", "systemsettings5", {"kcm_kaccounts"}, text("System Settings", "Configuration du système")},
        {"X-Cinnamon",
         "cinnamon-settings",
         {"online-accounts"},
         text("System Settings", "Paramètres système")},
        {"Pantheon",
         "io.elementary.settings",
         {"settings://accounts/online"},
         text("System Settings", "Paramètres du système")},
    };
    return known;
}

}  // namespace

std::optional<DesktopSettingsPage> desktopSettingsPage(const QByteArray& currentDesktop,
                                                       const std::function<QString(const QString&)>& find) {
    for (const QByteArray& desktop : currentDesktop.split(':')) {
        for (const Known& known : knownPrograms()) {
            if (desktop != known.desktop)
                continue;
            const QString path = find(QString::fromLatin1(known.executable));
            if (!path.isEmpty())
                return DesktopSettingsPage{known.program, path, known.arguments};
        }
    }
    return {};
}

std::optional<DesktopSettingsPage> desktopSettingsPage() {
    return desktopSettingsPage(qgetenv("XDG_CURRENT_DESKTOP"),
                               [](const QString& name) { return QStandardPaths::findExecutable(name); });
}

bool hasBusyBar(const QByteArray& currentDesktop) {
    const QList<QByteArray> names = currentDesktop.split(':');
    return names.contains("GNOME") || names.contains("Pantheon") || names.contains("Budgie");
}

bool open(const DesktopSettingsPage& page) {
    return QProcess::startDetached(page.executable, page.arguments);
}

}  // namespace kestrant
