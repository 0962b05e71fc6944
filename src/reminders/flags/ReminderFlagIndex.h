#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace kestrant {

class UserDefaults;

/// Which reminders are flagged. A flag set here wins over one that was read from elsewhere.
struct ReminderFlagIndex {
    /// Flag keys of reminders that were reported as flagged.
    QSet<QString> nativeIDs;
    /// Flags set by this program, by flag key.
    QHash<QString, bool> localOverrides;

    /// The key of a reminder in the index: the last "/" component of its identifier, in lower case.
    [[nodiscard]] static QString flagKey(const QString& reminderID);
    [[nodiscard]] bool isFlagged(const QString& reminderID) const;

    /// As the preferences hold it; what is not readable there is absent.
    [[nodiscard]] static ReminderFlagIndex load(const UserDefaults& defaults);
    /// Writes what differs from `previous`, which the preferences hold.
    void save(UserDefaults& defaults, const ReminderFlagIndex& previous) const;

    bool operator==(const ReminderFlagIndex&) const = default;
};

}  // namespace kestrant
