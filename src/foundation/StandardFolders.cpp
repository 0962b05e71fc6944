#include "foundation/StandardFolders.h"

#include <QDir>
#include <QtGlobal>

namespace kestrant {

namespace {

/// A relative path in one of these variables counts as none, as all programs agree that read them.
QString baseFolder(const char* variable, const QString& belowHome) {
    const QString named = qEnvironmentVariable(variable);
    if (QDir::isAbsolutePath(named))
        return QDir::cleanPath(named);
    const QString home = qEnvironmentVariable("HOME");
    if (QDir::isAbsolutePath(home))
        return QDir::cleanPath(home) + belowHome;
    return QDir::tempPath();
}

}  // namespace

QString applicationSupportFolder() {
    return baseFolder("XDG_DATA_HOME", QStringLiteral("/.local/share")) + u'/' + bundleIdentifier;
}

QString configurationFolder() {
    return baseFolder("XDG_CONFIG_HOME", QStringLiteral("/.config")) + u'/' + bundleIdentifier;
}

}  // namespace kestrant
