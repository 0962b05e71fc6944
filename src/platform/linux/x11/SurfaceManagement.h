#pragma once

#include <QWindow>

namespace kestrant {

class X11Connection;

/// How the panel's surfaces stand towards the window manager. Past it (override-redirect) is the rule: only
/// so may they cover the menu bars and docks of every desktop. Managed as docks where the window manager
/// hands keys to nothing else.
enum class SurfaceManagement { overrideRedirect, managedDock };

[[nodiscard]] SurfaceManagement surfaceManagement(const X11Connection& server);

/// Makes a window that has not been shown one of the panel's surfaces: frameless, with alpha, above all, on
/// all desktops, in no task list, not taking the focus when shown. Creates its native window; its flags must
/// not be changed afterwards. Only on the xcb platform. Thread: main.
void configureSurface(QWindow& window);

/// Whether the window manager may give the surface the keyboard focus of its own accord, as by a click on it.
void setAcceptsFocus(QWindow& surface, bool accepts);

}  // namespace kestrant
