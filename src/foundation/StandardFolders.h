#pragma once

#include <QString>

namespace kestrant {

/// Names this application's own folders.
inline const QString bundleIdentifier = QStringLiteral("com.Kestrant.notchapp");

/// The folder of what the application keeps for the person: $XDG_DATA_HOME (or ~/.local/share), then the
/// bundle identifier. Where the machine names no home folder, the same below the folder for temporary files.
/// It need not exist.
[[nodiscard]] QString applicationSupportFolder();

/// The folder of the settings: as above below $XDG_CONFIG_HOME (or ~/.config).
[[nodiscard]] QString configurationFolder();

}  // namespace kestrant
