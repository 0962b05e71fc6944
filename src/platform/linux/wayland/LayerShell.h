#pragma once

#include <QSize>

#include <functional>
#include <memory>
#include <optional>

class QScreen;
class QWindow;

namespace kestrant {

/// The compositor's layer shell, by which panels have a place of their own above windows, as the running
/// application knows it. Thread: main.
class LayerShell {
  public:
    /// Whether the compositor that WAYLAND_DISPLAY names has one. On a connection of its own, so that it can
    /// be asked before there is an application object; blocks for two round trips.
    [[nodiscard]] static bool isOffered();

    /// Only on Qt's wayland platform.
    LayerShell();
    LayerShell(const LayerShell&) = delete;
    LayerShell& operator=(const LayerShell&) = delete;
    ~LayerShell();

    [[nodiscard]] bool isBound() const;
    /// The compositor keeps the keyboard on a surface that does not want it any more until that loses its
    /// role (KWin 5.27).
    [[nodiscard]] bool keepsKeyboard() const;

    struct Place {
        /// Points from the screen's left edge; absent for the middle.
        std::optional<int> left;
        /// Below the bars of the desktop, rather than over them.
        bool isBelowBars = false;
        /// Below windows in full screen, rather than above everything.
        bool isBelowFullScreen = false;
    };

    /// The role of a window's surface, which makes it hang from a screen's top edge.
    class Surface {
      public:
        /// To be called for a window that has a native surface without a role; returns when the compositor
        /// has accepted it. `closed` is called, later, when the compositor takes the surface away, as with
        /// its screen; the role is useless then. The window and the shell must outlive the role.
        Surface(LayerShell& shell, QWindow& window, QScreen* screen, QSize size, const Place& place,
                std::function<void()> closed);
        Surface(const Surface&) = delete;
        Surface& operator=(const Surface&) = delete;
        ~Surface();

        /// Takes effect with the window's next frame. Points.
        void setSize(QSize size);
        /// Takes effect in the same way.
        void setPlace(const Place& place);
        /// Whether the surface wants the keyboard; at once.
        void setWantsKeyboard(bool wants);

      private:
        struct Private;
        std::unique_ptr<Private> d_;
    };

  private:
    struct Private;
    std::unique_ptr<Private> d_;
};

}  // namespace kestrant
