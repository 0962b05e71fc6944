#pragma once

#include "foundation/Text.h"

#include <QByteArray>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The choice of Qt's platform plug-in for this process, made through the environment. It is taken back when
/// this is destroyed, so that programs started later do not inherit it: keep it alive until the application
/// object exists.
class PlatformChoice {
  public:
    explicit PlatformChoice(const QByteArray& platform);
    PlatformChoice(PlatformChoice&& other) noexcept;
    PlatformChoice& operator=(PlatformChoice&&) = delete;
    PlatformChoice(const PlatformChoice&) = delete;
    PlatformChoice& operator=(const PlatformChoice&) = delete;
    ~PlatformChoice();

  private:
    /// What the variable held before; absent when it was not set.
    std::optional<QByteArray> previous_;
    bool active_ = true;
};

/// Chooses the X11 platform, in a Wayland session too, where XWayland carries it: only there may a window say
/// where it wants to be. A platform that the environment asks for by name is respected unless it is Wayland.
/// To be called before the application object is made. Fails, with a text for the person, when there is no X
/// display.
[[nodiscard]] tl::expected<PlatformChoice, TextPair> preparePlatform();

}  // namespace kestrant
