#pragma once

#include "reminders/ScriptHost.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <vector>

namespace kestrant::scripting {

/// What scripts see of the database. Calls may block. Thread: the one that runs the script.
class ScriptDatabase {
  public:
    struct List {
        QString id;
        QString name;
    };
    struct Reminder {
        QString id;
        QString listID;
        bool isFlagged = false;
    };
    enum class Kind { open, completed };

    virtual ~ScriptDatabase() = default;

    [[nodiscard]] virtual tl::expected<std::vector<List>, ScriptError> lists() = 0;
    [[nodiscard]] virtual tl::expected<std::vector<Reminder>, ScriptError> reminders(Kind kind) = 0;
    [[nodiscard]] virtual tl::expected<void, ScriptError> setFlagged(const QString& reminderID,
                                                                     bool flag) = 0;

    /// From here on to the end, calls fail with `timedOut` once this time is over.
    virtual void beginTimeLimit(int seconds) = 0;
    virtual void endTimeLimit() = 0;
};

/// What precedes a reminder's identifier in scripts.
inline constexpr auto reminderScheme = "x-kestrant-reminder://";

/// Carries a script out and gives the texts it returns. Texts are compared without regard to letter case.
/// Where a reminder is looked for by how its id ends, one whose last part is that text as a whole is the only
/// one found, whatever else ends like it. Of the failures only those that a later statement can help are left
/// to "try"; a script that took too long is over.
[[nodiscard]] tl::expected<QStringList, ScriptError> runScript(const QString& source,
                                                               ScriptDatabase& database);

}  // namespace kestrant::scripting
