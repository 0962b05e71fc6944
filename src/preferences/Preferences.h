#pragma once

#include "foundation/ClockText.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"
#include "foundation/UserDefaults.h"
#include "preferences/Layout.h"

#include <QLocale>
#include <QString>

#include <functional>

namespace kestrant {

/// How strongly the interface is felt.
enum class HapticProfile { off = 0, light = 1, full = 2 };
/// How the interface is heard: `full` has cues of its own for opening and closing, `soft` reuses the drag
/// cues.
enum class SoundProfile { off = 0, full = 1, soft = 2 };

/// Typed reading and writing of what a person can set, each with its default. Reading never writes: a default
/// is not stored. A value of the wrong type counts as absent. Thread: main.
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

    [[nodiscard]] bool completedInitialOnboarding() const;
    void setCompletedInitialOnboarding(bool completed);
    [[nodiscard]] bool startedInitialYearReveal() const;
    void setStartedInitialYearReveal(bool started);
    [[nodiscard]] bool completedInitialYearReveal() const;
    void setCompletedInitialYearReveal(bool completed);

    /// Seconds the pointer rests on the notch before it opens.
    [[nodiscard]] double hoverExpandDelay() const;
    void setHoverExpandDelay(double seconds);
    /// Hovering never opens the notch; only a click or a swipe does.
    [[nodiscard]] bool requiresClickOrSwipeToExpand() const;
    void setRequiresClickOrSwipeToExpand(bool required);
    /// Seconds between the pointer's leaving and the closing.
    [[nodiscard]] double autoCloseDelay() const;
    void setAutoCloseDelay(double seconds);
    /// "glass" or "black".
    [[nodiscard]] QString notchMaterial() const;
    void setNotchMaterial(const QString& material);
    [[nodiscard]] RestingContent restingContent() const;
    void setRestingContent(RestingContent content);
    [[nodiscard]] bool pulsesWhenRinging() const;
    void setPulsesWhenRinging(bool pulses);

    [[nodiscard]] HapticProfile hapticProfile() const;
    void setHapticProfile(HapticProfile profile);
    [[nodiscard]] SoundProfile soundProfile() const;
    void setSoundProfile(SoundProfile profile);

    [[nodiscard]] bool showReminders() const;
    void setShowReminders(bool show);
    [[nodiscard]] bool showCalendar() const;
    void setShowCalendar(bool show);
    [[nodiscard]] bool showRemindersInCalendar() const;
    void setShowRemindersInCalendar(bool show);
    [[nodiscard]] KestrantModuleOrder moduleOrder() const;
    void setModuleOrder(KestrantModuleOrder order);
    [[nodiscard]] KestrantLayoutRatio layoutRatio() const;
    void setLayoutRatio(KestrantLayoutRatio ratio);

    /// Seconds since 2001-01-01 UTC; 0 before the first run.
    [[nodiscard]] double announcementInstallationDate() const;
    void setAnnouncementInstallationDate(double seconds);
    [[nodiscard]] int announcementPresentedCount() const;
    void setAnnouncementPresentedCount(int count);
    [[nodiscard]] double announcementLastPresentedDate() const;
    void setAnnouncementLastPresentedDate(double seconds);
    [[nodiscard]] bool announcementDisabled() const;
    void setAnnouncementDisabled(bool disabled);
    [[nodiscard]] bool initialCommandNTipPending() const;
    void setInitialCommandNTipPending(bool pending);

    [[nodiscard]] bool aggregateMetricsEnabled() const;
    void setAggregateMetricsEnabled(bool enabled);

    /// Turns the marker -1 of an older version, "never open on hover", into the setting of its own. Once per
    /// launch.
    void migrateHoverExpandDelay();

    [[nodiscard]] UserDefaults& defaults() const { return defaults_; }
    /// Told after any key has changed, with the key.
    [[nodiscard]] Subscription observeChanges(std::function<void(const QString& key)> observer) const;

  private:
    UserDefaults& defaults_;
    std::function<QLocale()> systemLocale_;
};

}  // namespace kestrant
