#pragma once

#include "foundation/Text.h"

#include <QString>

#include <optional>

namespace kestrant {

/// Names this application's own folders.
inline const QString bundleIdentifier = QStringLiteral("com.Kestrant.notchapp");
/// By this the desktop knows the application: its entry, its icon, its name on the bus, its description and
/// every sandbox. The domain is in small letters, as AppStream asks.
inline const QString desktopIdentifier = QStringLiteral("com.kestrant.notchapp");

/// The folder of what the application keeps for the person: $XDG_DATA_HOME (or ~/.local/share), then the
/// bundle identifier. It need not exist.
[[nodiscard]] QString applicationSupportFolder();

/// The folder of the settings: as above below $XDG_CONFIG_HOME (or ~/.config).
[[nodiscard]] QString configurationFolder();

/// Why there are no such folders: the environment names no home and not both of the others. Nothing may then
/// be kept, since any place that somebody could guess would be open to others.
[[nodiscard]] std::optional<TextPair> reasonForNoFolders();

/// The folder for what lasts as long as the session: $XDG_RUNTIME_DIR, or else the application's own folder.
[[nodiscard]] QString runtimeFolder();

}  // namespace kestrant
