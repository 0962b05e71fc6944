#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace kestrant {

/// What a start, a desktop entry or another program asks of the panel that runs.
struct InstanceRequest {
    enum class Action {
        /// Bring the panel up.
        show,
        /// Open the panel, or close it when it is open.
        toggle,
        /// Open quick add.
        newReminder,
        /// Open the search field.
        search,
    };

    /// The longest text, in UTF-16 units.
    static constexpr qsizetype longestText = 2000;

    Action action = Action::show;
    /// What is typed already, for newReminder and search.
    QString text = {};

    bool operator==(const InstanceRequest&) const = default;
};

/// "show", "toggle", "new-reminder" or "search": the names of the desktop entry's actions.
[[nodiscard]] QString nameOf(InstanceRequest::Action action);
/// Absent for another name.
[[nodiscard]] std::optional<InstanceRequest::Action> actionNamed(const QString& name);

/// A request as one line without its end: the action's name, and the text behind a blank with its octets
/// percent-encoded where they are not letters or digits.
[[nodiscard]] QByteArray lineOf(const InstanceRequest& request);
/// Absent for a line that names no action.
[[nodiscard]] std::optional<InstanceRequest> requestOf(const QByteArray& line);

}  // namespace kestrant
