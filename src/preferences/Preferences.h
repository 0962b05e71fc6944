#pragma once

#include "foundation/ClockText.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"
#include "foundation/UserDefaults.h"
#include "preferences/Layout.h"
#include "preferences/PanelPlacement.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Setting.h"

#include <QLocale>
#include <QString>

#include <functional>

namespace kestrant {

/// How strongly the interface is felt.
enum class HapticProfile { off = 0, light = 1, full = 2 };
/// How the interface is heard: `full` has cues of its own for opening and closing, `soft` reuses the drag
/// cues.
enum class SoundProfile { off = 0, full = 1, soft = 2 };

/// Typed reading and writing of what a person can set. Thread: main.
class Preferences {
  public:
    /// `systemLocale` gives the hours of the clock, and the language while none was chosen; asked each time.
    Preferences(UserDefaults& defaults, std::function<QLocale()> systemLocale);

    /// "en", "fr", or whatever else is stored, which behaves as English.
    [[nodiscard]] QString currentLanguage() const;
    [[nodiscard]] bool isFrench() const;
    [[nodiscard]] Language language() const { return isFrench() ? Language::french : Language::english; }
    /// fr_FR or en_US: the locale of every date and time a person sees.
    [[nodiscard]] QLocale dateLocale() const;
    /// How every time of day is told on the screen.
    [[nodiscard]] ClockHours clockHours() const;
    void setLanguage(Language language);

    [[nodiscard]] HapticProfile hapticProfile() const;
    void setHapticProfile(HapticProfile profile);
    [[nodiscard]] SoundProfile soundProfile() const;
    void setSoundProfile(SoundProfile profile);

    /// Where the panel is to be; `barIsBusy` where the desktop's bar has something in its middle.
    [[nodiscard]] PanelPlacement panelPlacement(bool barIsBusy) const;

    /// Turns the marker -1 of an older version, "never open on hover", into the setting of its own. Once per
    /// launch.
    void migrateHoverExpandDelay();

    [[nodiscard]] UserDefaults& defaults() const { return defaults_; }
    /// Told after any key has changed, with the key.
    [[nodiscard]] Subscription observeChanges(std::function<void(const QString& key)> observer) const;

  private:
    UserDefaults& defaults_;

  public:
    Setting<bool> completedInitialOnboarding{defaults_, preferenceKeys::completedInitialOnboarding};
    Setting<bool> startedInitialYearReveal{defaults_, preferenceKeys::startedInitialYearReveal};
    Setting<bool> completedInitialYearReveal{defaults_, preferenceKeys::completedInitialYearReveal};

    /// Seconds the pointer rests on the notch before it opens.
    Setting<double> hoverExpandDelay{defaults_, preferenceKeys::hoverExpandDelay};
    /// Hovering never opens the notch; only a click or a swipe does.
    Setting<bool> requiresClickOrSwipeToExpand{defaults_, preferenceKeys::requiresClickOrSwipeToExpand};
    /// Seconds between the pointer's leaving and the closing.
    Setting<double> autoCloseDelay{defaults_, preferenceKeys::autoCloseDelay};
    /// Swipes are read the other way round.
    Setting<bool> invertsSwipes{defaults_, preferenceKeys::invertsSwipes};
    /// "glass" or "black".
    Setting<QString> notchMaterial{defaults_, preferenceKeys::notchMaterial};
    Setting<RestingContent> restingContent{defaults_, preferenceKeys::restingContent};
    Setting<QString> panelScreen{defaults_, preferenceKeys::panelScreen};
    Setting<QString> panelPlace{defaults_, preferenceKeys::panelPlace};
    Setting<PanelEdge> panelEdge{defaults_, preferenceKeys::panelEdge};
    Setting<RestingLook> restingLook{defaults_, preferenceKeys::restingLook};
    /// Windows in full screen cover the panel.
    Setting<bool> yieldsToFullScreen{defaults_, preferenceKeys::yieldsToFullScreen};
    Setting<bool> pulsesWhenRinging{defaults_, preferenceKeys::pulsesWhenRinging};

    Setting<bool> showReminders{defaults_, preferenceKeys::showReminders};
    Setting<bool> showCalendar{defaults_, preferenceKeys::showCalendar};
    Setting<bool> showRemindersInCalendar{defaults_, preferenceKeys::showRemindersInCalendar};
    Setting<KestrantModuleOrder> moduleOrder{defaults_, preferenceKeys::moduleOrder};
    Setting<KestrantLayoutRatio> layoutRatio{defaults_, preferenceKeys::layoutRatio};

    /// Seconds since 2001-01-01 UTC; 0 before the first run.
    Setting<double> announcementInstallationDate{defaults_, preferenceKeys::announcementInstallationDate};
    Setting<int> announcementPresentedCount{defaults_, preferenceKeys::announcementPresentedCount};
    Setting<double> announcementLastPresentedDate{defaults_, preferenceKeys::announcementLastPresentedDate};
    Setting<bool> announcementDisabled{defaults_, preferenceKeys::announcementDisabled};
    Setting<bool> initialCommandNTipPending{defaults_, preferenceKeys::initialCommandNTipPending};

    Setting<bool> celebrates{defaults_, preferenceKeys::celebrates};

    Setting<bool> aggregateMetricsEnabled{defaults_, preferenceKeys::aggregateMetricsEnabled};

  private:
    std::function<QLocale()> systemLocale_;
};

}  // namespace kestrant
