#pragma once

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

namespace kestrant {

/// Why a script did not do what it says.
struct ScriptError {
    enum class Code {
        /// This program may not script the application.
        notPermitted,
        /// The script's own time limit was over.
        timedOut,
        /// The host has been told to stop.
        interrupted,
        /// Anything else: a script that is no script, something that does not exist, a refused change.
        failed,
    };

    Code code = Code::failed;
    /// In English, for the log.
    QString message;

    bool operator==(const ScriptError&) const = default;
};

/// Runs scripts that steer the Reminders application.
class ScriptHost {
  public:
    virtual ~ScriptHost() = default;

    /// Runs a script to its end and gives the texts it returns: none, one, or those of a list. Blocks for as
    /// long as the script takes, at most for the time limit the script gives itself. Thread: any but the main
    /// one, one script at a time.
    [[nodiscard]] virtual tl::expected<QStringList, ScriptError> execute(const QString& source) = 0;

    /// Ends the script that is running, and every later one, with `interrupted`. What a script has begun to
    /// change may still be carried out. For the end of the program. Thread: any.
    virtual void interrupt() = 0;
};

/// A text as a literal of the scripting language, quotes included, so that no text can become script.
[[nodiscard]] QString scriptLiteral(const QString& text);

}  // namespace kestrant
