#pragma once

#include <QString>

namespace kestrant {

/// Names of everything kept in the user defaults. A name is never reused for something else.
namespace preferenceKeys {
inline const QString language = QStringLiteral("kestrantLanguage");
inline const QString completedInitialOnboarding = QStringLiteral("kestrantCompletedInitialOnboarding");
inline const QString startedInitialYearReveal = QStringLiteral("kestrantStartedInitialYearReveal");
inline const QString completedInitialYearReveal = QStringLiteral("kestrantCompletedInitialYearReveal");
inline const QString hoverExpandDelay = QStringLiteral("hoverExpandDelay");
inline const QString requiresClickOrSwipeToExpand = QStringLiteral("requiresClickOrSwipeToExpand");
inline const QString autoCloseDelay = QStringLiteral("autoCloseDelay");
inline const QString notchMaterial = QStringLiteral("notchMaterial");
inline const QString hapticFeedbackProfile = QStringLiteral("hapticFeedbackProfile");
inline const QString hapticsEnabled = QStringLiteral("hapticsEnabled");
inline const QString soundEffectsProfile = QStringLiteral("soundEffectsProfile");
inline const QString soundEffectsEnabled = QStringLiteral("soundEffectsEnabled");
inline const QString showReminders = QStringLiteral("showReminders");
inline const QString showCalendar = QStringLiteral("showCalendar");
inline const QString showRemindersInCalendar = QStringLiteral("showRemindersInCalendar");
inline const QString moduleOrder = QStringLiteral("kestrantModuleOrder");
inline const QString layoutRatio = QStringLiteral("kestrantLayoutRatio");
inline const QString announcementInstallationDate = QStringLiteral("featureAnnouncement.installationDate");
inline const QString announcementPresentedCount = QStringLiteral("featureAnnouncement.presentedCount");
inline const QString announcementLastPresentedDate = QStringLiteral("featureAnnouncement.lastPresentedDate");
inline const QString announcementDisabled = QStringLiteral("featureAnnouncement.disabled");
inline const QString initialCommandNTipPending = QStringLiteral("kestrant.initialCommandNTipPending");
inline const QString aggregateMetricsEnabled = QStringLiteral("kestrantAggregateMetricsEnabled");
inline const QString aggregateMetricsDiscardPending =
    QStringLiteral("kestrantAggregateMetricsDiscardPending");
inline const QString aggregateMetricsCollectionEpoch =
    QStringLiteral("kestrantAggregateMetricsCollectionEpoch");
inline const QString recapShareLinks = QStringLiteral("kestrant.recap.share-links.v1");
inline const QString reminderFlagNativeIDs = QStringLiteral("reminderFlagIndex.nativeIDs");
inline const QString reminderFlagLocalOverrides = QStringLiteral("reminderFlagIndex.localOverrides");
inline const QString selectedReminderListID = QStringLiteral("selectedReminderListID");
inline const QString reminderSortMode = QStringLiteral("reminderSortMode");
inline const QString reminderManualOrder = QStringLiteral("reminderManualOrder");
inline const QString defaultReminderListID = QStringLiteral("defaultReminderListID");
inline const QString launchAtLogin = QStringLiteral("launchAtLogin");
/// Where reminders and events live: "vdir:PATH"; absent for the embedded default.
inline const QString eventStore = QStringLiteral("kestrantEventStore");
}  // namespace preferenceKeys

}  // namespace kestrant
