#include "reminders/flags/ReminderFlagIndex.h"

#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"

#include <QJsonObject>

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

ReminderFlagIndex ReminderFlagIndex::load(const UserDefaults& defaults) {
    ReminderFlagIndex index;
    const QStringList native =
        defaults.stringList(preferenceKeys::reminderFlagNativeIDs).value_or(QStringList());
    index.nativeIDs = QSet<QString>(native.begin(), native.end());
    const QJsonObject local = defaults.object(preferenceKeys::reminderFlagLocalOverrides).toObject();
    for (auto entry = local.begin(); entry != local.end(); ++entry) {
        if (entry.value().isBool())
            index.localOverrides.insert(entry.key(), entry.value().toBool());
    }
    return index;
}

void ReminderFlagIndex::save(UserDefaults& defaults, const ReminderFlagIndex& previous) const {
    if (nativeIDs != previous.nativeIDs) {
        QStringList native(nativeIDs.begin(), nativeIDs.end());
        native.sort();
        defaults.setStringList(preferenceKeys::reminderFlagNativeIDs, native);
    }
    if (localOverrides != previous.localOverrides) {
        QJsonObject local;
        for (auto entry = localOverrides.begin(); entry != localOverrides.end(); ++entry)
            local.insert(entry.key(), entry.value());
        defaults.set(preferenceKeys::reminderFlagLocalOverrides, local);
    }
}

}  // namespace kestrant
