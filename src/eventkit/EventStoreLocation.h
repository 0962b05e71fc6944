#pragma once

#include "foundation/Text.h"

#include <QString>

#include <tl/expected.hpp>

namespace kestrant {

/// Where the database is, as the command line and the preferences name it.
struct EventStoreLocation {
    /// The folder of a vdir.
    QString folder;

    /// Below the application's own folder.
    [[nodiscard]] static EventStoreLocation embeddedDefault();
    /// Reads "vdir:PATH"; a leading "~/" is the home folder, a relative path starts from the current folder.
    [[nodiscard]] static tl::expected<EventStoreLocation, TextPair> parse(const QString& text);
};

}  // namespace kestrant
