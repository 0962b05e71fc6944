#include "reminders/ReminderFlagIndex.h"

namespace kestrant {

QString ReminderFlagIndex::flagKey(const QString& reminderID) {
    return reminderID.mid(reminderID.lastIndexOf(QLatin1Char('/')) + 1).toLower();
}

bool ReminderFlagIndex::isFlagged(const QString& reminderID) const {
    if (localOverrides.isEmpty() && nativeIDs.isEmpty())
        return false;
    const QString key = flagKey(reminderID);
    const auto local = localOverrides.constFind(key);
    return local != localOverrides.constEnd() ? *local : nativeIDs.contains(key);
}

}  // namespace kestrant
