#pragma once

#include "foundation/Text.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <functional>
#include <optional>

namespace kestrant {

/// Where the database is, as the command line and the preferences name it.
struct EventStoreLocation {
    enum class Kind {
        /// A folder of iCalendar files.
        vdir,
        /// The desktop's own database, Evolution Data Server.
        evolution,
    };

    /// Of a vdir.
    QString folder;
    Kind kind = Kind::vdir;

    /// Below the application's own folder.
    [[nodiscard]] static EventStoreLocation embeddedDefault();
    [[nodiscard]] static EventStoreLocation evolution() { return {{}, Kind::evolution}; }
    /// Reads "vdir:PATH" or "evolution"; a leading "~/" is the home folder, a relative path starts from the
    /// current folder.
    [[nodiscard]] static tl::expected<EventStoreLocation, TextPair> parse(const QString& text);
    /// The text that parse() reads.
    [[nodiscard]] QString toString() const;

    bool operator==(const EventStoreLocation&) const = default;
};

/// The database to use: the one that was named, else the one that the preferences name, else the embedded one
/// if there are lists in it already, else the desktop's where `desktopHasOne` says that there is one, else
/// the embedded one. `desktopHasOne` (may be empty) is asked only if it matters.
[[nodiscard]] EventStoreLocation eventStoreToUse(const std::optional<EventStoreLocation>& named,
                                                 const std::optional<QString>& preference,
                                                 const EventStoreLocation& embedded,
                                                 const std::function<bool()>& desktopHasOne);

/// The part of a database that a caller needs, so that opening it can skip the rest.
struct EventStoreUse {
    /// Identifiers of all the reminders that are needed; absent where anything may be. Where it is none,
    /// lists are opened when something is written to them.
    std::optional<QStringList> reminders;
    /// Whether changes by others are reported. A process that ends soon need not subscribe to every list.
    bool observesChanges = true;
};

}  // namespace kestrant
