#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <variant>

namespace kestrant {

/// A request about flags to the Reminders application, as a value. A host that runs texts takes source();
/// any other carries out the request itself.
struct ReminderScript {
    /// Asks for the identifiers of all flagged reminders that are open.
    struct ReadFlagged {
        bool operator==(const ReadFlagged&) const = default;
    };
    /// Sets the flag of the reminder whose identifier ends with `targetSuffix`, a flag key. The lists of this
    /// name are searched before all others.
    struct SetFlag {
        QString targetSuffix;
        bool flag = false;
        std::optional<QString> listName;

        bool operator==(const SetFlag&) const = default;
    };

    /// How long a request may take as a whole.
    static constexpr std::chrono::seconds timeout{8};

    std::variant<ReadFlagged, SetFlag> request;

    /// The request in AppleScript.
    [[nodiscard]] QString source() const;

    bool operator==(const ReminderScript&) const = default;
};

/// A text as a literal of AppleScript, quotes included, so that no text can become script.
[[nodiscard]] QString scriptLiteral(const QString& text);

}  // namespace kestrant
