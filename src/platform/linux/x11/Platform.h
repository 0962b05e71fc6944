#pragma once

#include "foundation/Text.h"

#include <QByteArray>
#include <QTemporaryDir>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

/// What Qt finds in the environment while the application object is made: the chosen platform plug-in and,
/// where no runtime folder is set, one of a random name, since Qt would make one of a name that others can
/// foresee. It is taken back when this is destroyed, so that programs started later do not inherit
/// it: keep it alive until the application object exists.
class PlatformChoice {
  public:
    explicit PlatformChoice(const QByteArray& platform);
    PlatformChoice(PlatformChoice&& other) noexcept;
    PlatformChoice& operator=(PlatformChoice&&) = delete;
    PlatformChoice(const PlatformChoice&) = delete;
    PlatformChoice& operator=(const PlatformChoice&) = delete;
    ~PlatformChoice();

  private:
    void set(const char* variable, const QByteArray& value);

    struct Previous {
        const char* variable;
        /// Absent when it was not set.
        std::optional<QByteArray> value;
    };
    /// Empty once this was moved from.
    std::vector<Previous> previous_;
    std::unique_ptr<QTemporaryDir> runtimeFolder_;
};

/// Chooses Qt's platform: Wayland where the compositor has the layer shell and Qt its plug-in, X11 anywhere
/// else, in other Wayland sessions too, where XWayland carries it: windows may not say elsewhere where they
/// want to be. `wanted` ("wayland" or "xcb") forces either; a platform that the environment asks for by name
/// is respected unless it is one of these two. To be called before the application object is made. Fails,
/// with a text for the person, when there is no display.
[[nodiscard]] tl::expected<PlatformChoice, TextPair>
preparePlatform(const QByteArray& wanted, const std::function<bool()>& offersLayerShell);

}  // namespace kestrant
