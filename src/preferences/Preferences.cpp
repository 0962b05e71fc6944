#include "preferences/Preferences.h"

#include "preferences/PreferenceKeys.h"

#include <limits>

namespace kestrant {

namespace keys = preferenceKeys;

namespace {

/// A key of one type with the value it has while it is absent.
template <typename Value>
struct Setting {
    const QString& key;
    Value defaultValue;
};

const Setting<bool> completedInitialOnboardingSetting{keys::completedInitialOnboarding, false};
const Setting<bool> startedInitialYearRevealSetting{keys::startedInitialYearReveal, false};
const Setting<bool> completedInitialYearRevealSetting{keys::completedInitialYearReveal, false};
const Setting<double> hoverExpandDelaySetting{keys::hoverExpandDelay, 0.0};
const Setting<bool> requiresClickOrSwipeSetting{keys::requiresClickOrSwipeToExpand, false};
const Setting<double> autoCloseDelaySetting{keys::autoCloseDelay, 0.2};
const Setting<QString> notchMaterialSetting{keys::notchMaterial, QStringLiteral("glass")};
const Setting<bool> showRemindersSetting{keys::showReminders, true};
const Setting<bool> showCalendarSetting{keys::showCalendar, true};
const Setting<bool> showRemindersInCalendarSetting{keys::showRemindersInCalendar, true};
const Setting<double> installationDateSetting{keys::announcementInstallationDate, 0.0};
const Setting<int> presentedCountSetting{keys::announcementPresentedCount, 0};
const Setting<double> lastPresentedDateSetting{keys::announcementLastPresentedDate, 0.0};
const Setting<bool> announcementDisabledSetting{keys::announcementDisabled, false};
const Setting<bool> commandNTipSetting{keys::initialCommandNTipPending, false};
const Setting<bool> aggregateMetricsSetting{keys::aggregateMetricsEnabled, true};
constexpr KestrantModuleOrder defaultModuleOrder = KestrantModuleOrder::remindersFirst;
constexpr KestrantLayoutRatio defaultLayoutRatio = KestrantLayoutRatio::r70_30;

bool read(const UserDefaults& defaults, const Setting<bool>& setting) {
    return defaults.boolean(setting.key).value_or(setting.defaultValue);
}

double read(const UserDefaults& defaults, const Setting<double>& setting) {
    return defaults.number(setting.key).value_or(setting.defaultValue);
}

int read(const UserDefaults& defaults, const Setting<int>& setting) {
    const auto value = defaults.integer(setting.key);
    return value && *value >= 0 && *value <= std::numeric_limits<int>::max() ? static_cast<int>(*value)
                                                                             : setting.defaultValue;
}

QString read(const UserDefaults& defaults, const Setting<QString>& setting) {
    return defaults.string(setting.key).value_or(setting.defaultValue);
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

void Preferences::setLanguage(Language language) {
    defaults_.set(keys::language, language == Language::french ? QStringLiteral("fr") : QStringLiteral("en"));
}

bool Preferences::completedInitialOnboarding() const {
    return read(defaults_, completedInitialOnboardingSetting);
}

void Preferences::setCompletedInitialOnboarding(bool completed) {
    defaults_.set(keys::completedInitialOnboarding, completed);
}

bool Preferences::startedInitialYearReveal() const {
    return read(defaults_, startedInitialYearRevealSetting);
}

void Preferences::setStartedInitialYearReveal(bool started) {
    defaults_.set(keys::startedInitialYearReveal, started);
}

bool Preferences::completedInitialYearReveal() const {
    return read(defaults_, completedInitialYearRevealSetting);
}

void Preferences::setCompletedInitialYearReveal(bool completed) {
    defaults_.set(keys::completedInitialYearReveal, completed);
}

double Preferences::hoverExpandDelay() const {
    return read(defaults_, hoverExpandDelaySetting);
}

void Preferences::setHoverExpandDelay(double seconds) {
    defaults_.set(keys::hoverExpandDelay, seconds);
}

bool Preferences::requiresClickOrSwipeToExpand() const {
    return read(defaults_, requiresClickOrSwipeSetting);
}

void Preferences::setRequiresClickOrSwipeToExpand(bool required) {
    defaults_.set(keys::requiresClickOrSwipeToExpand, required);
}

double Preferences::autoCloseDelay() const {
    return read(defaults_, autoCloseDelaySetting);
}

void Preferences::setAutoCloseDelay(double seconds) {
    defaults_.set(keys::autoCloseDelay, seconds);
}

QString Preferences::notchMaterial() const {
    return read(defaults_, notchMaterialSetting);
}

void Preferences::setNotchMaterial(const QString& material) {
    defaults_.set(keys::notchMaterial, material);
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
    return read(defaults_, showRemindersSetting);
}

void Preferences::setShowReminders(bool show) {
    defaults_.set(keys::showReminders, show);
}

bool Preferences::showCalendar() const {
    return read(defaults_, showCalendarSetting);
}

void Preferences::setShowCalendar(bool show) {
    defaults_.set(keys::showCalendar, show);
}

bool Preferences::showRemindersInCalendar() const {
    return read(defaults_, showRemindersInCalendarSetting);
}

void Preferences::setShowRemindersInCalendar(bool show) {
    defaults_.set(keys::showRemindersInCalendar, show);
}

KestrantModuleOrder Preferences::moduleOrder() const {
    return moduleOrderFromRawValue(defaults_.string(keys::moduleOrder).value_or(QString()))
        .value_or(defaultModuleOrder);
}

void Preferences::setModuleOrder(KestrantModuleOrder order) {
    defaults_.set(keys::moduleOrder, rawValue(order));
}

KestrantLayoutRatio Preferences::layoutRatio() const {
    return layoutRatioFromRawValue(defaults_.string(keys::layoutRatio).value_or(QString()))
        .value_or(defaultLayoutRatio);
}

void Preferences::setLayoutRatio(KestrantLayoutRatio ratio) {
    defaults_.set(keys::layoutRatio, rawValue(ratio));
}

double Preferences::announcementInstallationDate() const {
    return read(defaults_, installationDateSetting);
}

void Preferences::setAnnouncementInstallationDate(double seconds) {
    defaults_.set(keys::announcementInstallationDate, seconds);
}

int Preferences::announcementPresentedCount() const {
    return read(defaults_, presentedCountSetting);
}

void Preferences::setAnnouncementPresentedCount(int count) {
    defaults_.set(keys::announcementPresentedCount, count);
}

double Preferences::announcementLastPresentedDate() const {
    return read(defaults_, lastPresentedDateSetting);
}

void Preferences::setAnnouncementLastPresentedDate(double seconds) {
    defaults_.set(keys::announcementLastPresentedDate, seconds);
}

bool Preferences::announcementDisabled() const {
    return read(defaults_, announcementDisabledSetting);
}

void Preferences::setAnnouncementDisabled(bool disabled) {
    defaults_.set(keys::announcementDisabled, disabled);
}

bool Preferences::initialCommandNTipPending() const {
    return read(defaults_, commandNTipSetting);
}

void Preferences::setInitialCommandNTipPending(bool pending) {
    defaults_.set(keys::initialCommandNTipPending, pending);
}

bool Preferences::aggregateMetricsEnabled() const {
    return read(defaults_, aggregateMetricsSetting);
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
