#include "foundation/StandardFolders.h"

#include <QDir>
#include <QtGlobal>

#include <utility>

namespace kestrant {

namespace {

constexpr auto dataVariable = "XDG_DATA_HOME";
constexpr auto configurationVariable = "XDG_CONFIG_HOME";
constexpr auto homeVariable = "HOME";
constexpr auto runtimeVariable = "XDG_RUNTIME_DIR";

/// A relative path in one of these variables counts as none, as all programs agree that read them.
std::optional<QString> folderNamedBy(const char* variable) {
    const QString named = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(named) ? std::optional(QDir::cleanPath(named)) : std::nullopt;
}

QString baseFolder(const char* variable, const QString& belowHome) {
    if (auto named = folderNamedBy(variable))
        return std::move(*named);
    return folderNamedBy(homeVariable).value_or(QStringLiteral("/nonexistent")) + belowHome;
}

}  // namespace

QString applicationSupportFolder() {
    return baseFolder(dataVariable, QStringLiteral("/.local/share")) + u'/' + bundleIdentifier;
}

QString configurationFolder() {
    return baseFolder(configurationVariable, QStringLiteral("/.config")) + u'/' + bundleIdentifier;
}

std::optional<TextPair> reasonForNoFolders() {
    if (folderNamedBy(homeVariable) || (folderNamedBy(dataVariable) && folderNamedBy(configurationVariable)))
        return std::nullopt;
    return text("There is no place for your data: set HOME, or XDG_DATA_HOME and XDG_CONFIG_HOME.",
                "Il n’y a pas de place pour vos données : définissez HOME, ou XDG_DATA_HOME et "
                "XDG_CONFIG_HOME.");
}

QString runtimeFolder() {
    return folderNamedBy(runtimeVariable).value_or(applicationSupportFolder());
}

}  // namespace kestrant
