#pragma once

#include <QString>

namespace kestrant {

/// The name under which a value is kept in the user defaults; can be used as its text.
struct PreferenceKey {
    QString name;
    // NOLINTNEXTLINE(google-explicit-constructor): a key is its name
    operator const QString&() const { return name; }
};

/// A key whose value has a type, and a default while it is absent (or of another type).
template <typename Value>
struct Preference : PreferenceKey {
    Value defaultValue;
};

/// Everything kept in the user defaults, with type and default; where there is no default, absence has a
/// meaning of its own. A name is never reused for something else.
namespace preferenceKeys {

/// "en" or "fr"; absent follows the system.
inline const PreferenceKey language{QStringLiteral("kestrantLanguage")};
inline const Preference<bool> completedInitialOnboarding{
    {QStringLiteral("kestrantCompletedInitialOnboarding")}, false};
inline const Preference<bool> startedInitialYearReveal{{QStringLiteral("kestrantStartedInitialYearReveal")},
                                                       false};
inline const Preference<bool> completedInitialYearReveal{
    {QStringLiteral("kestrantCompletedInitialYearReveal")}, false};

/// Seconds.
inline const Preference<double> hoverExpandDelay{{QStringLiteral("hoverExpandDelay")}, 0.0};
inline const Preference<bool> requiresClickOrSwipeToExpand{{QStringLiteral("requiresClickOrSwipeToExpand")},
                                                           false};
/// Seconds.
inline const Preference<double> autoCloseDelay{{QStringLiteral("autoCloseDelay")}, 0.2};
inline const Preference<QString> notchMaterial{{QStringLiteral("notchMaterial")}, QStringLiteral("glass")};

/// Raw value of RestingContent.
inline const Preference<QString> restingContent{{QStringLiteral("kestrantRestingContent")},
                                                QStringLiteral("nothing")};
/// The resting notch shows what rings, with waves around it.
inline const Preference<bool> pulsesWhenRinging{{QStringLiteral("kestrantPulsesWhenRinging")}, false};

/// Name of a screen; empty for the one with a camera housing, else the main one; "pointer:" for the one that
/// has the pointer.
inline const Preference<QString> panelScreen{{QStringLiteral("kestrantPanelScreen")}, QString()};
/// "middle", "left", "right", or points from the middle to the right.
inline const Preference<QString> panelPlace{{QStringLiteral("kestrantPanelPlace")}, QStringLiteral("middle")};
/// Raw value of PanelEdge.
inline const Preference<QString> panelEdge{{QStringLiteral("kestrantPanelEdge")},
                                           QStringLiteral("automatic")};
/// Raw value of RestingLook.
inline const Preference<QString> restingLook{{QStringLiteral("kestrantRestingLook")},
                                             QStringLiteral("notch")};
inline const Preference<bool> yieldsToFullScreen{{QStringLiteral("kestrantYieldsToFullScreen")}, false};

/// 0 to 2; absent falls back to the older switch.
inline const Preference<int> hapticFeedbackProfile{{QStringLiteral("hapticFeedbackProfile")}, 2};
/// Bool; of an older version, only read.
inline const PreferenceKey hapticsEnabled{QStringLiteral("hapticsEnabled")};
/// 0 to 2; absent falls back to the older switch.
inline const Preference<int> soundEffectsProfile{{QStringLiteral("soundEffectsProfile")}, 1};
/// Bool; of an older version, only read.
inline const PreferenceKey soundEffectsEnabled{QStringLiteral("soundEffectsEnabled")};

inline const Preference<bool> showReminders{{QStringLiteral("showReminders")}, true};
inline const Preference<bool> showCalendar{{QStringLiteral("showCalendar")}, true};
inline const Preference<bool> showRemindersInCalendar{{QStringLiteral("showRemindersInCalendar")}, true};
/// Raw value of KestrantModuleOrder.
inline const Preference<QString> moduleOrder{{QStringLiteral("kestrantModuleOrder")},
                                             QStringLiteral("remindersFirst")};
/// Raw value of KestrantLayoutRatio.
inline const Preference<QString> layoutRatio{{QStringLiteral("kestrantLayoutRatio")},
                                             QStringLiteral("70/30")};

/// Seconds since 2001-01-01 UTC.
inline const Preference<double> announcementInstallationDate{
    {QStringLiteral("featureAnnouncement.installationDate")}, 0.0};
inline const Preference<int> announcementPresentedCount{
    {QStringLiteral("featureAnnouncement.presentedCount")}, 0};
/// Seconds since 2001-01-01 UTC.
inline const Preference<double> announcementLastPresentedDate{
    {QStringLiteral("featureAnnouncement.lastPresentedDate")}, 0.0};
inline const Preference<bool> announcementDisabled{{QStringLiteral("featureAnnouncement.disabled")}, false};
inline const Preference<bool> initialCommandNTipPending{
    {QStringLiteral("kestrant.initialCommandNTipPending")}, false};

inline const Preference<bool> aggregateMetricsEnabled{{QStringLiteral("kestrantAggregateMetricsEnabled")},
                                                      true};
/// Bool.
inline const PreferenceKey aggregateMetricsDiscardPending{
    QStringLiteral("kestrantAggregateMetricsDiscardPending")};
/// String.
inline const PreferenceKey aggregateMetricsCollectionEpoch{
    QStringLiteral("kestrantAggregateMetricsCollectionEpoch")};
/// {"count", "epoch"}: what could not be stored when the program ended.
inline const PreferenceKey aggregateMetricsUnsaved{QStringLiteral("kestrantAggregateMetricsUnsaved")};

/// A moment of joy when the last reminder of a day is completed, and the like.
inline const Preference<bool> celebrates{{QStringLiteral("kestrantCelebrates")}, true};
/// {"day", "week", "roundNumber"}: what was celebrated last.
inline const PreferenceKey celebrated{QStringLiteral("kestrantCelebrated")};

/// Stored objects.
inline const PreferenceKey recapShareLinks{QStringLiteral("kestrant.recap.share-links.v1")};
inline const PreferenceKey reminderFlagNativeIDs{QStringLiteral("reminderFlagIndex.nativeIDs")};
inline const PreferenceKey reminderFlagLocalOverrides{QStringLiteral("reminderFlagIndex.localOverrides")};
/// Seconds since 2001-01-01 UTC: alerts of reminders up to this moment stay silent.
inline const PreferenceKey reminderAlertsSince{QStringLiteral("reminderAlerts.since")};
/// Up to when each reminder has rung: seconds since 2001-01-01 UTC by reminder identifier.
inline const PreferenceKey reminderAlertsRung{QStringLiteral("reminderAlerts.rung")};

/// String; absent shows all lists.
inline const PreferenceKey selectedReminderListID{QStringLiteral("selectedReminderListID")};
/// Raw value of ReminderSortMode.
inline const PreferenceKey reminderSortMode{QStringLiteral("reminderSortMode")};
/// Array of reminder identifiers.
inline const PreferenceKey reminderManualOrder{QStringLiteral("reminderManualOrder")};
/// String.
inline const PreferenceKey defaultReminderListID{QStringLiteral("defaultReminderListID")};
/// Bool; mirrors the login item.
inline const PreferenceKey launchAtLogin{QStringLiteral("launchAtLogin")};
/// "185x37": width and height in points of the camera housing in the top edge of the built-in display; "none"
/// for none. Absent or anything else for what is known of the model.
inline const PreferenceKey cameraHousing{QStringLiteral("kestrantCameraHousing")};
/// Swipes are read the other way round from touchpads that do not tell how they scroll.
inline const Preference<bool> invertsSwipes{{QStringLiteral("kestrantInvertsSwipes")}, false};
/// Where reminders and events live: "vdir:PATH" or "evolution"; absent for what is there.
inline const PreferenceKey eventStore{QStringLiteral("kestrantEventStore")};
/// Alerts of the desktop's own database ring here too; the desktop rings them by itself.
inline const Preference<bool> ringsAlertsOnEvolution{{QStringLiteral("kestrantRingsAlertsOnEvolution")},
                                                     false};

}  // namespace preferenceKeys

}  // namespace kestrant
