#include "ui/settings/SettingsViewModel.h"

#include "preferences/Layout.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "services/LaunchAtLoginManager.h"
#include "ui/panel/Localizer.h"

namespace kestrant {

SettingsViewModel::SettingsViewModel(Preferences& preferences, Localizer& localizer,
                                     FeedbackViewModel& feedback, SettingsServices services, QObject* parent)
    : QObject(parent)
    , preferences_(preferences)
    , localizer_(localizer)
    , feedback_(feedback)
    , services_(std::move(services))
    , dataStore_(preferences, localizer, services_.dataStore)
    , subscription_(preferences.observeChanges([this](const QString&) { Q_EMIT changed(); })) {
    connect(&localizer, &Localizer::languageChanged, this, &SettingsViewModel::changed);
    connect(&localizer, &Localizer::languageChanged, this, &SettingsViewModel::problemsChanged);
    if (services_.launchAtLogin)
        connect(services_.launchAtLogin, &LaunchAtLoginManager::isEnabledChanged, this,
                &SettingsViewModel::changed);
}

QString SettingsViewModel::language() const {
    return preferences_.isFrench() ? QStringLiteral("fr") : QStringLiteral("en");
}

void SettingsViewModel::setLanguage(const QString& language) {
    preferences_.setLanguage(language == QLatin1String("fr") ? Language::french : Language::english);
}

bool SettingsViewModel::requiresClick() const {
    return preferences_.requiresClickOrSwipeToExpand();
}

void SettingsViewModel::setRequiresClick(bool required) {
    preferences_.setRequiresClickOrSwipeToExpand(required);
}

double SettingsViewModel::hoverDelay() const {
    return preferences_.hoverExpandDelay();
}

void SettingsViewModel::setHoverDelay(double seconds) {
    preferences_.setHoverExpandDelay(seconds);
}

double SettingsViewModel::autoCloseDelay() const {
    return preferences_.autoCloseDelay();
}

void SettingsViewModel::setAutoCloseDelay(double seconds) {
    preferences_.setAutoCloseDelay(seconds);
}

bool SettingsViewModel::invertsSwipes() const {
    return preferences_.defaults()
        .boolean(preferenceKeys::invertsSwipes)
        .value_or(preferenceKeys::invertsSwipes.defaultValue);
}

void SettingsViewModel::setInvertsSwipes(bool inverts) {
    preferences_.defaults().set(preferenceKeys::invertsSwipes, inverts);
}

QString SettingsViewModel::material() const {
    return preferences_.notchMaterial();
}

void SettingsViewModel::setMaterial(const QString& material) {
    preferences_.setNotchMaterial(material);
}

QString SettingsViewModel::restingContent() const {
    return rawValue(preferences_.restingContent());
}

void SettingsViewModel::setRestingContent(const QString& raw) {
    if (const auto content = restingContentFromRawValue(raw))
        preferences_.setRestingContent(*content);
}

QVariantList SettingsViewModel::restingContents() const {
    QVariantList contents;
    for (const RestingContent content : allRestingContents)
        contents.append(QVariantMap{{QStringLiteral("rawValue"), rawValue(content)},
                                    {QStringLiteral("title"), localizer_(title(content))}});
    return contents;
}

bool SettingsViewModel::pulsesWhenRinging() const {
    return preferences_.pulsesWhenRinging();
}

void SettingsViewModel::setPulsesWhenRinging(bool pulses) {
    preferences_.setPulsesWhenRinging(pulses);
}

int SettingsViewModel::sounds() const {
    return int(preferences_.soundProfile());
}

void SettingsViewModel::setSounds(int profile) {
    if (profile >= int(SoundProfile::off) && profile <= int(SoundProfile::soft))
        preferences_.setSoundProfile(SoundProfile(profile));
}

int SettingsViewModel::haptics() const {
    return int(preferences_.hapticProfile());
}

void SettingsViewModel::setHaptics(int profile) {
    if (profile >= int(HapticProfile::off) && profile <= int(HapticProfile::full))
        preferences_.setHapticProfile(HapticProfile(profile));
}

bool SettingsViewModel::showReminders() const {
    return preferences_.showReminders();
}

void SettingsViewModel::setShowReminders(bool show) {
    preferences_.setShowReminders(show);
}

bool SettingsViewModel::showCalendar() const {
    return preferences_.showCalendar();
}

void SettingsViewModel::setShowCalendar(bool show) {
    preferences_.setShowCalendar(show);
}

bool SettingsViewModel::showRemindersInCalendar() const {
    return preferences_.showRemindersInCalendar();
}

void SettingsViewModel::setShowRemindersInCalendar(bool show) {
    preferences_.setShowRemindersInCalendar(show);
}

QString SettingsViewModel::moduleOrder() const {
    return rawValue(preferences_.moduleOrder());
}

void SettingsViewModel::setModuleOrder(const QString& raw) {
    if (const auto order = moduleOrderFromRawValue(raw))
        preferences_.setModuleOrder(*order);
}

QString SettingsViewModel::layoutRatio() const {
    return rawValue(preferences_.layoutRatio());
}

void SettingsViewModel::setLayoutRatio(const QString& raw) {
    if (const auto ratio = layoutRatioFromRawValue(raw))
        preferences_.setLayoutRatio(*ratio);
}

QVariantList SettingsViewModel::moduleOrders() const {
    QVariantList orders;
    for (const KestrantModuleOrder order : allModuleOrders)
        orders.append(QVariantMap{{QStringLiteral("rawValue"), rawValue(order)},
                                  {QStringLiteral("title"), localizer_(title(order))}});
    return orders;
}

QVariantList SettingsViewModel::layoutRatios() const {
    QVariantList ratios;
    for (const KestrantLayoutRatio ratio : allLayoutRatios)
        ratios.append(QVariantMap{{QStringLiteral("rawValue"), rawValue(ratio)},
                                  {QStringLiteral("title"), rawValue(ratio)}});
    return ratios;
}

void SettingsViewModel::setCounts(bool on) {
    if (!canCount() || counts() == on)
        return;
    services_.collection->setOn(on);
    Q_EMIT changed();
}

QString SettingsViewModel::countsHelp() const {
    return canCount() ? localizer_(services_.collection->help) : QString();
}

QStringList SettingsViewModel::problems() const {
    QStringList sentences;
    if (services_.problems) {
        for (const TextPair& problem : services_.problems())
            sentences.append(localizer_(problem));
    }
    return sentences;
}

bool SettingsViewModel::launchesAtLogin() const {
    return canLaunchAtLogin() && services_.launchAtLogin->isEnabled();
}

void SettingsViewModel::setLaunchesAtLogin(bool launches) {
    if (!canLaunchAtLogin())
        return;
    const auto result = services_.launchAtLogin->setEnabled(launches);
    launchAtLoginProblem_ = result ? std::nullopt : std::optional(result.error());
    Q_EMIT changed();
}

QString SettingsViewModel::launchAtLoginProblem() const {
    return launchAtLoginProblem_ ? localizer_(*launchAtLoginProblem_) : QString();
}

void SettingsViewModel::refresh() {
    launchAtLoginProblem_.reset();
    if (services_.launchAtLogin)
        services_.launchAtLogin->refresh();
    dataStore_.refresh();
    Q_EMIT changed();
}

}  // namespace kestrant
