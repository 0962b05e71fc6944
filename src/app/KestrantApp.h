#pragma once

#include "app/AppDelegate.h"
#include "app/InstanceRequest.h"
#include "foundation/Text.h"

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The panel's process: the platform, the application object and the delegate, for as long as the event loop
/// runs. It has no main window and does not end when windows close. Thread: main.
class KestrantApp {
  public:
    KestrantApp() = delete;

    /// Runs the panel until it is ended and returns the exit status; `request` is carried out when the panel
    /// is there. `platform` forces "xcb" or "wayland"; empty for what the session has. Where the panel runs
    /// already, passes the request on, or has that panel show itself, and returns at once. Fails, with a
    /// sentence, where there is no display or another process holds the lock without answering.
    [[nodiscard]] static tl::expected<int, TextPair> run(int& argc, char** argv, AppDelegate::Options options,
                                                         const std::optional<InstanceRequest>& request,
                                                         const QString& platform);
};

}  // namespace kestrant
