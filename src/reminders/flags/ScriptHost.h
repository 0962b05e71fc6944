#pragma once

#include "reminders/flags/ReminderScript.h"

#include <QStringList>

#include <tl/expected.hpp>

namespace kestrant {

/// Why a script was not carried out.
struct ScriptError {
    enum class Code {
        /// This program may not script the application.
        notPermitted,
        /// The script's own time limit was over.
        timedOut,
        /// The host has been told to stop.
        interrupted,
        /// Anything else, such as a refused change.
        failed,
    };

    Code code = Code::failed;
    /// In English, for the log.
    QString message;

    bool operator==(const ScriptError&) const = default;
};

/// Carries out scripts that steer the Reminders application.
class ScriptHost {
  public:
    virtual ~ScriptHost() = default;

    /// Carries out a script and gives the identifiers it asks for, none where it only changes something.
    /// Blocks until then, at most for the script's time limit. Thread: any but the main one, one script at a
    /// time.
    [[nodiscard]] virtual tl::expected<QStringList, ScriptError> execute(const ReminderScript& script) = 0;

    /// Ends the script that is running, and every later one, with `interrupted`. What a script has begun to
    /// change may still be carried out. For the end of the program. Thread: any.
    virtual void interrupt() = 0;
};

}  // namespace kestrant
