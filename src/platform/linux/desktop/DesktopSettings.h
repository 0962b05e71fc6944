#pragma once

#include "foundation/Text.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kestrant {

/// The page of a desktop's settings program that has to do with calendars: its online accounts, else the
/// program itself.
struct DesktopSettingsPage {
    /// The program's own name.
    TextPair program;
    QString executable;
    QStringList arguments;
};

/// For the desktops that XDG_CURRENT_DESKTOP names, first match first; absent where none of them has an
/// installed program. `find` gives the path of an executable, or an empty text.
[[nodiscard]] std::optional<DesktopSettingsPage>
desktopSettingsPage(const QByteArray& currentDesktop, const std::function<QString(const QString&)>& find);

/// Of the desktop that this process runs on. Looks at the disk.
[[nodiscard]] std::optional<DesktopSettingsPage> desktopSettingsPage();

/// Whether the desktop's bar, at the top of the screen, has something in its middle by default, such as a
/// clock. For the desktops that XDG_CURRENT_DESKTOP names.
[[nodiscard]] bool hasBusyBar(const QByteArray& currentDesktop);

/// Starts the program, which goes on by itself. False when that fails.
bool open(const DesktopSettingsPage& page);

}  // namespace kestrant
