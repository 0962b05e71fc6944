#include "preferences/Localization.h"

#include "preferences/PreferenceKeys.h"
#include "support/MemoryUserDefaults.h"

#include <gmock/gmock.h>

#include <optional>

namespace kestrant {
namespace {

struct LanguageCase {
    const char* systemLocale;
    QJsonValue stored;
    const char* language;
    bool french;
};

TEST(Localization, FollowsTheChoiceAndOtherwiseTheSystem) {
    const QJsonValue none(QJsonValue::Undefined);
    const LanguageCase cases[] = {
        {"fr_CA", none, "fr", true},  {"fr_FR", none, "fr", true},  {"de_DE", none, "en", false},
        {"en_US", none, "en", false}, {"C", none, "en", false},     {"en_US", "fr", "fr", true},
        {"fr_FR", "en", "en", false}, {"fr_FR", "de", "de", false}, {"fr_FR", "FR", "FR", false},
        {"fr_FR", "", "", false},     {"fr_FR", 1, "fr", true},
    };
    for (const LanguageCase& testCase : cases) {
        MemoryUserDefaults defaults;
        defaults.set(preferenceKeys::language, testCase.stored);
        const Preferences preferences(defaults,
                                      [&] { return QLocale(QLatin1String(testCase.systemLocale)); });
        const Localization localization(preferences);
        EXPECT_EQ(preferences.currentLanguage(), testCase.language) << testCase.systemLocale;
        EXPECT_EQ(localization.isFrench(), testCase.french) << testCase.systemLocale;
        EXPECT_EQ(localization.dateLocale().name(), testCase.french ? "fr_FR" : "en_US");
        EXPECT_EQ(localization(text("Yes", "Oui")), testCase.french ? "Oui" : "Yes");
    }
}

TEST(Localization, TellsAfterTheLanguageHasChangedAndOnlyThen) {
    MemoryUserDefaults defaults;
    Preferences preferences(defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); });
    Localization localization(preferences);
    QStringList told;
    const Subscription subscription =
        localization.observeChanges([&] { told.append(localization(text("Yes", "Oui"))); });
    preferences.showCalendar.set(false);
    preferences.setLanguage(Language::english);
    EXPECT_EQ(told, QStringList());
    preferences.setLanguage(Language::french);
    EXPECT_EQ(told, QStringList{"Oui"});
    defaults.remove(preferenceKeys::language);
    EXPECT_EQ(told, (QStringList{"Oui", "Yes"}));
}

}  // namespace
}  // namespace kestrant
