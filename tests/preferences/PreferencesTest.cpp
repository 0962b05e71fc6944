#include "preferences/Preferences.h"

#include "preferences/PreferenceKeys.h"
#include "support/MemoryUserDefaults.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace kestrant {
namespace {

/// Preferences over what a file with this content holds, on an English system.
class Stored {
  public:
    explicit Stored(const char* json) : defaults(QJsonDocument::fromJson(json).object()) {}

    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
};

TEST(Preferences, HaveTheirDefaultsWhileNothingUsableIsStoredAndWriteNothing) {
    for (const char* json :
         {"{}", R"({"hoverExpandDelay": "1", "autoCloseDelay": true, "notchMaterial": 1, "showReminders": 0,
                    "showCalendar": "no", "showRemindersInCalendar": null, "kestrantModuleOrder": "first",
                    "kestrantLayoutRatio": "55/45", "requiresClickOrSwipeToExpand": 1,
                    "kestrantCompletedInitialOnboarding": 1, "featureAnnouncement.presentedCount": 1.5,
                    "kestrantAggregateMetricsEnabled": 0, "kestrant.initialCommandNTipPending": "true"})"}) {
        Stored stored(json);
        const QJsonObject before = stored.defaults.values();
        const Preferences& preferences = stored.preferences;
        EXPECT_EQ(preferences.hoverExpandDelay(), 0.0);
        EXPECT_EQ(preferences.autoCloseDelay(), 0.2);
        EXPECT_EQ(preferences.notchMaterial(), "glass");
        EXPECT_TRUE(preferences.showReminders());
        EXPECT_TRUE(preferences.showCalendar());
        EXPECT_TRUE(preferences.showRemindersInCalendar());
        EXPECT_EQ(preferences.moduleOrder(), KestrantModuleOrder::remindersFirst);
        EXPECT_EQ(preferences.layoutRatio(), KestrantLayoutRatio::r70_30);
        EXPECT_FALSE(preferences.requiresClickOrSwipeToExpand());
        EXPECT_FALSE(preferences.completedInitialOnboarding());
        EXPECT_FALSE(preferences.startedInitialYearReveal());
        EXPECT_FALSE(preferences.completedInitialYearReveal());
        EXPECT_EQ(preferences.announcementInstallationDate(), 0.0);
        EXPECT_EQ(preferences.announcementPresentedCount(), 0);
        EXPECT_EQ(preferences.announcementLastPresentedDate(), 0.0);
        EXPECT_FALSE(preferences.announcementDisabled());
        EXPECT_FALSE(preferences.initialCommandNTipPending());
        EXPECT_TRUE(preferences.aggregateMetricsEnabled());
        EXPECT_EQ(stored.defaults.values(), before);
    }
}

TEST(Preferences, AreKeptUnderTheirNames) {
    Stored stored("{}");
    Preferences& preferences = stored.preferences;
    preferences.setLanguage(Language::french);
    preferences.completedInitialOnboarding.set(true);
    preferences.startedInitialYearReveal.set(true);
    preferences.completedInitialYearReveal.set(true);
    preferences.hoverExpandDelay.set(0.5);
    preferences.requiresClickOrSwipeToExpand.set(true);
    preferences.autoCloseDelay.set(1);
    preferences.notchMaterial.set(QStringLiteral("black"));
    preferences.setHapticProfile(HapticProfile::light);
    preferences.setSoundProfile(SoundProfile::soft);
    preferences.showReminders.set(false);
    preferences.showCalendar.set(false);
    preferences.showRemindersInCalendar.set(false);
    preferences.moduleOrder.set(KestrantModuleOrder::calendarFirst);
    preferences.layoutRatio.set(KestrantLayoutRatio::r30_70);
    preferences.announcementInstallationDate.set(1.5);
    preferences.announcementPresentedCount.set(3);
    preferences.announcementLastPresentedDate.set(2.5);
    preferences.announcementDisabled.set(true);
    preferences.initialCommandNTipPending.set(true);
    preferences.aggregateMetricsEnabled.set(false);
    EXPECT_EQ(stored.defaults.values(), QJsonDocument::fromJson(R"({
        "kestrantLanguage": "fr", "kestrantCompletedInitialOnboarding": true,
        "kestrantStartedInitialYearReveal": true, "kestrantCompletedInitialYearReveal": true,
        "hoverExpandDelay": 0.5, "requiresClickOrSwipeToExpand": true, "autoCloseDelay": 1, "notchMaterial": "black",
        "hapticFeedbackProfile": 1, "soundEffectsProfile": 2, "showReminders": false, "showCalendar": false,
        "showRemindersInCalendar": false, "kestrantModuleOrder": "calendarFirst", "kestrantLayoutRatio": "30/70",
        "featureAnnouncement.installationDate": 1.5, "featureAnnouncement.presentedCount": 3,
        "featureAnnouncement.lastPresentedDate": 2.5, "featureAnnouncement.disabled": true,
        "kestrant.initialCommandNTipPending": true, "kestrantAggregateMetricsEnabled": false})")
                                            .object());
    EXPECT_TRUE(preferences.isFrench());
    EXPECT_EQ(preferences.hapticProfile(), HapticProfile::light);
    EXPECT_EQ(preferences.soundProfile(), SoundProfile::soft);
    EXPECT_EQ(preferences.layoutRatio(), KestrantLayoutRatio::r30_70);
    EXPECT_EQ(preferences.moduleOrder(), KestrantModuleOrder::calendarFirst);
    EXPECT_FALSE(preferences.showCalendar());
    EXPECT_EQ(preferences.announcementPresentedCount(), 3);
}

TEST(HoverDelayMigration, TurnsOnlyTheMarkerIntoTheSettingOfItsOwn) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"hoverExpandDelay": -1.0})",
         R"({"hoverExpandDelay": 0.3, "requiresClickOrSwipeToExpand": true})"},
        {R"({"hoverExpandDelay": -0.5})", R"({"hoverExpandDelay": -0.5})"},
        {R"({"hoverExpandDelay": "-1"})", R"({"hoverExpandDelay": "-1"})"},
        {R"({"hoverExpandDelay": 0.3, "requiresClickOrSwipeToExpand": false})",
         R"({"hoverExpandDelay": 0.3, "requiresClickOrSwipeToExpand": false})"},
        {"{}", "{}"},
    };
    for (const auto& [before, after] : cases) {
        Stored stored(before);
        stored.preferences.migrateHoverExpandDelay();
        EXPECT_EQ(stored.defaults.values(), QJsonDocument::fromJson(after).object()) << before;
    }
}

struct HapticCase {
    const char* json;
    HapticProfile profile;
};

TEST(HapticProfile, ComesFromItsOwnKeyThenFromTheOldSwitch) {
    const HapticCase cases[] = {
        {"{}", HapticProfile::full},
        {R"({"hapticFeedbackProfile": 0})", HapticProfile::off},
        {R"({"hapticFeedbackProfile": 1, "hapticsEnabled": false})", HapticProfile::light},
        {R"({"hapticFeedbackProfile": 2, "hapticsEnabled": false})", HapticProfile::full},
        {R"({"hapticFeedbackProfile": 5, "hapticsEnabled": false})", HapticProfile::off},
        {R"({"hapticFeedbackProfile": 5})", HapticProfile::full},
        {R"({"hapticFeedbackProfile": -3})", HapticProfile::off},
        {R"({"hapticFeedbackProfile": 0.5, "hapticsEnabled": true})", HapticProfile::full},
        {R"({"hapticsEnabled": false})", HapticProfile::off},
        {R"({"hapticsEnabled": 0})", HapticProfile::full},
    };
    for (const HapticCase& testCase : cases)
        EXPECT_EQ(Stored(testCase.json).preferences.hapticProfile(), testCase.profile) << testCase.json;
}

struct SoundCase {
    const char* json;
    SoundProfile profile;
};

TEST(SoundProfile, ComesFromItsOwnKeyThenFromTheOldSwitch) {
    const SoundCase cases[] = {
        {"{}", SoundProfile::full},
        {R"({"soundEffectsProfile": 0, "soundEffectsEnabled": true})", SoundProfile::off},
        {R"({"soundEffectsProfile": 1})", SoundProfile::full},
        {R"({"soundEffectsProfile": 2})", SoundProfile::soft},
        {R"({"soundEffectsProfile": 7, "soundEffectsEnabled": false})", SoundProfile::full},
        {R"({"soundEffectsProfile": -1})", SoundProfile::full},
        {R"({"soundEffectsProfile": "0", "soundEffectsEnabled": false})", SoundProfile::off},
        {R"({"soundEffectsEnabled": true})", SoundProfile::full},
        {R"({"soundEffectsEnabled": "no"})", SoundProfile::full},
    };
    for (const SoundCase& testCase : cases)
        EXPECT_EQ(Stored(testCase.json).preferences.soundProfile(), testCase.profile) << testCase.json;
}

TEST(Layout, ValuesAreReadBackFromTheTextsThatStandForThem) {
    QStringList ratios;
    for (int index = 0; index < 5; ++index) {
        const auto ratio = KestrantLayoutRatio(index);
        ratios.append(rawValue(ratio));
        EXPECT_EQ(fromRawValue<KestrantLayoutRatio>(rawValue(ratio)), ratio);
        EXPECT_EQ(rawValue(ratio).left(2).toInt(), firstShare(ratio));
    }
    EXPECT_EQ(ratios, (QStringList{"30/70", "40/60", "50/50", "60/40", "70/30"}));
    for (const auto order : {KestrantModuleOrder::remindersFirst, KestrantModuleOrder::calendarFirst})
        EXPECT_EQ(fromRawValue<KestrantModuleOrder>(rawValue(order)), order);
    EXPECT_EQ(fromRawValue<KestrantLayoutRatio>(u"70 / 30"), std::nullopt);
    EXPECT_EQ(fromRawValue<KestrantModuleOrder>(u"RemindersFirst"), std::nullopt);
}

}  // namespace
}  // namespace kestrant
