#include "preferences/Preferences.h"

#include "preferences/PreferenceKeys.h"

#include <limits>

namespace kestrant {

namespace keys = preferenceKeys;

namespace {

bool read(const UserDefaults& defaults, const Preference<bool>& preference) {
    return defaults.boolean(preference).value_or(preference.defaultValue);
}

double read(const UserDefaults& defaults, const Preference<double>& preference) {
    return defaults.number(preference).value_or(preference.defaultValue);
}

int read(const UserDefaults& defaults, const Preference<int>& preference) {
    const auto value = defaults.integer(preference);
    return value && *value >= 0 && *value <= std::numeric_limits<int>::max() ? static_cast<int>(*value)
                                                                             : preference.defaultValue;
}

QString read(const UserDefaults& defaults, const Preference<QString>& preference) {
    return defaults.string(preference).value_or(preference.defaultValue);
}

}  // namespace

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

bool Preferences::completedInitialOnboarding() const {
    return read(defaults_, keys::completedInitialOnboarding);
}

void Preferences::setCompletedInitialOnboarding(bool completed) {
    defaults_.set(keys::completedInitialOnboarding, completed);
}

bool Preferences::startedInitialYearReveal() const {
    return read(defaults_, keys::startedInitialYearReveal);
}

void Preferences::setStartedInitialYearReveal(bool started) {
    defaults_.set(keys::startedInitialYearReveal, started);
}

bool Preferences::completedInitialYearReveal() const {
    return read(defaults_, keys::completedInitialYearReveal);
}

void Preferences::setCompletedInitialYearReveal(bool completed) {
    defaults_.set(keys::completedInitialYearReveal, completed);
}

double Preferences::hoverExpandDelay() const {
    return read(defaults_, keys::hoverExpandDelay);
}

void Preferences::setHoverExpandDelay(double seconds) {
    defaults_.set(keys::hoverExpandDelay, seconds);
}

bool Preferences::requiresClickOrSwipeToExpand() const {
    return read(defaults_, keys::requiresClickOrSwipeToExpand);
}

void Preferences::setRequiresClickOrSwipeToExpand(bool required) {
    defaults_.set(keys::requiresClickOrSwipeToExpand, required);
}

double Preferences::autoCloseDelay() const {
    return read(defaults_, keys::autoCloseDelay);
}

void Preferences::setAutoCloseDelay(double seconds) {
    defaults_.set(keys::autoCloseDelay, seconds);
}

QString Preferences::notchMaterial() const {
    return read(defaults_, keys::notchMaterial);
}

void Preferences::setNotchMaterial(const QString& material) {
    defaults_.set(keys::notchMaterial, material);
}

RestingContent Preferences::restingContent() const {
    return restingContentFromRawValue(read(defaults_, keys::restingContent))
        .value_or(RestingContent::nothing);
}

void Preferences::setRestingContent(RestingContent content) {
    defaults_.set(keys::restingContent, rawValue(content));
}

bool Preferences::pulsesWhenRinging() const {
    return read(defaults_, keys::pulsesWhenRinging);
}

void Preferences::setPulsesWhenRinging(bool pulses) {
    defaults_.set(keys::pulsesWhenRinging, pulses);
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

bool Preferences::showReminders() const {
    return read(defaults_, keys::showReminders);
}

void Preferences::setShowReminders(bool show) {
    defaults_.set(keys::showReminders, show);
}

bool Preferences::showCalendar() const {
    return read(defaults_, keys::showCalendar);
}

void Preferences::setShowCalendar(bool show) {
    defaults_.set(keys::showCalendar, show);
}

bool Preferences::showRemindersInCalendar() const {
    return read(defaults_, keys::showRemindersInCalendar);
}

void Preferences::setShowRemindersInCalendar(bool show) {
    defaults_.set(keys::showRemindersInCalendar, show);
}

KestrantModuleOrder Preferences::moduleOrder() const {
    return moduleOrderFromRawValue(read(defaults_, keys::moduleOrder))
        .value_or(KestrantModuleOrder::remindersFirst);
}

void Preferences::setModuleOrder(KestrantModuleOrder order) {
    defaults_.set(keys::moduleOrder, rawValue(order));
}

KestrantLayoutRatio Preferences::layoutRatio() const {
    return layoutRatioFromRawValue(read(defaults_, keys::layoutRatio)).value_or(KestrantLayoutRatio::r70_30);
}

void Preferences::setLayoutRatio(KestrantLayoutRatio ratio) {
    defaults_.set(keys::layoutRatio, rawValue(ratio));
}

double Preferences::announcementInstallationDate() const {
    return read(defaults_, keys::announcementInstallationDate);
}

void Preferences::setAnnouncementInstallationDate(double seconds) {
    defaults_.set(keys::announcementInstallationDate, seconds);
}

int Preferences::announcementPresentedCount() const {
    return read(defaults_, keys::announcementPresentedCount);
}

void Preferences::setAnnouncementPresentedCount(int count) {
    defaults_.set(keys::announcementPresentedCount, count);
}

double Preferences::announcementLastPresentedDate() const {
    return read(defaults_, keys::announcementLastPresentedDate);
}

void Preferences::setAnnouncementLastPresentedDate(double seconds) {
    defaults_.set(keys::announcementLastPresentedDate, seconds);
}

bool Preferences::announcementDisabled() const {
    return read(defaults_, keys::announcementDisabled);
}

void Preferences::setAnnouncementDisabled(bool disabled) {
    defaults_.set(keys::announcementDisabled, disabled);
}

bool Preferences::initialCommandNTipPending() const {
    return read(defaults_, keys::initialCommandNTipPending);
}

void Preferences::setInitialCommandNTipPending(bool pending) {
    defaults_.set(keys::initialCommandNTipPending, pending);
}

bool Preferences::aggregateMetricsEnabled() const {
    return read(defaults_, keys::aggregateMetricsEnabled);
}

void Preferences::setAggregateMetricsEnabled(bool enabled) {
    defaults_.set(keys::aggregateMetricsEnabled, enabled);
}

void Preferences::migrateHoverExpandDelay() {
    if (defaults_.number(keys::hoverExpandDelay) != -1.0)
        return;
    setRequiresClickOrSwipeToExpand(true);
    setHoverExpandDelay(0.3);
}

Subscription Preferences::observeChanges(std::function<void(const QString&)> observer) const {
    return defaults_.observe(std::move(observer));
}

}  // namespace kestrant
