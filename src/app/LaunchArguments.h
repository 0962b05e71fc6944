#pragma once

#include "app/InstanceRequest.h"
#include "foundation/Text.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The purpose of this start.
struct LaunchArguments {
    enum class Mode {
        /// The panel at the top of the screen.
        panel,
        /// Write pictures of every state into a folder.
        render,
        /// One command without a window, or --version; the command line reads its own arguments.
        command,
        help,
    };

    Mode mode = Mode::panel;
    /// The text after --store, where it was given for the panel.
    std::optional<QString> store;
    /// A file of deployment values that take the place of the built-in ones, where one was named.
    std::optional<QString> configurationFile;
    /// What the panel is asked for; it is started where none is running.
    std::optional<InstanceRequest> request;
    /// "xcb" or "wayland", where one was named.
    QString platform;
    QString renderFolder;
};

/// Reads the arguments after the program's name. Fails with a sentence for whoever typed them.
[[nodiscard]] tl::expected<LaunchArguments, TextPair> parseLaunchArguments(const QStringList& arguments);

/// How to call the program, for --help.
[[nodiscard]] TextPair launchUsage();

}  // namespace kestrant
