#include "preferences/Preferences.h"

#include "preferences/PreferenceKeys.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kestrant {

namespace keys = preferenceKeys;

Preferences::Preferences(UserDefaults& defaults, std::function<QLocale()> systemLocale)
    : defaults_(defaults)
    , systemLocale_(std::move(systemLocale)) {}

QString Preferences::currentLanguage() const {
    if (const auto chosen = defaults_.string(keys::language))
        return *chosen;
    return systemLocale_().name().startsWith(QLatin1String("fr")) ? QStringLiteral("fr")
                                                                  : QStringLiteral("en");
}

bool Preferences::isFrench() const {
    return currentLanguage() == QLatin1String("fr");
}

QLocale Preferences::dateLocale() const {
    return isFrench() ? QLocale(QLocale::French, QLocale::France)
                      : QLocale(QLocale::English, QLocale::UnitedStates);
}

ClockHours Preferences::clockHours() const {
    return kestrant::clockHours(isFrench() ? Language::french : Language::english, systemLocale_());
}

void Preferences::setLanguage(Language language) {
    defaults_.set(keys::language, language == Language::french ? QStringLiteral("fr") : QStringLiteral("en"));
}

HapticProfile Preferences::hapticProfile() const {
    const auto stored = defaults_.integer(keys::hapticFeedbackProfile);
    if (stored && *stored < 3)
        return static_cast<HapticProfile>(std::max<qint64>(*stored, 0));
    return defaults_.boolean(keys::hapticsEnabled) == false ? HapticProfile::off : HapticProfile::full;
}

void Preferences::setHapticProfile(HapticProfile profile) {
    defaults_.set(keys::hapticFeedbackProfile, static_cast<int>(profile));
}

SoundProfile Preferences::soundProfile() const {
    if (const auto stored = defaults_.integer(keys::soundEffectsProfile))
        return *stored == 0 ? SoundProfile::off : *stored == 2 ? SoundProfile::soft : SoundProfile::full;
    return defaults_.boolean(keys::soundEffectsEnabled) == false ? SoundProfile::off : SoundProfile::full;
}

void Preferences::setSoundProfile(SoundProfile profile) {
    defaults_.set(keys::soundEffectsProfile, static_cast<int>(profile));
}

double PanelPlacement::offsetFrom(const QString& place) {
    if (place == QLatin1String("left"))
        return -std::numeric_limits<double>::infinity();
    if (place == QLatin1String("right"))
        return std::numeric_limits<double>::infinity();
    bool isNumber = false;
    const double points = place.toDouble(&isNumber);
    return isNumber && std::isfinite(points) ? points : 0.0;
}

PanelPlacement Preferences::panelPlacement(bool barIsBusy) const {
    const QString screen = panelScreen();
    const bool followsPointer = screen == screenOfPointer;
    return {.screenName = followsPointer ? QString() : screen,
            .followsPointer = followsPointer,
            .offset = PanelPlacement::offsetFrom(panelPlace()),
            .isBelowBar =
                panelEdge() == PanelEdge::belowBar || (panelEdge() == PanelEdge::automatic && barIsBusy),
            .restingLook = restingLook()};
}

void Preferences::migrateHoverExpandDelay() {
    if (defaults_.number(keys::hoverExpandDelay) != -1.0)
        return;
    requiresClickOrSwipeToExpand.set(true);
    hoverExpandDelay.set(0.3);
}

Subscription Preferences::observeChanges(std::function<void(const QString&)> observer) const {
    return defaults_.observe(std::move(observer));
}

}  // namespace kestrant
