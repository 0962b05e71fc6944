#include "ui/settings/SettingsViewModel.h"

#include "preferences/Layout.h"
#include "preferences/Preferences.h"
#include "services/LaunchAtLoginManager.h"
#include "ui/panel/Localizer.h"

namespace kestrant {
namespace {

/// {rawValue, title} of each value of a set.
template <HasChoices Value>
QVariantList choices(const Localizer& localizer) {
    QVariantList choices;
    for (const Choice<Value>& choice : choicesOf<Value>)
        choices.append(QVariantMap{{QStringLiteral("rawValue"), QString::fromUtf8(choice.rawValue)},
                                   {QStringLiteral("title"), localizer(title(choice.value))}});
    return choices;
}

}  // namespace

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

QVariantList SettingsViewModel::restingContents() const {
    return choices<RestingContent>(localizer_);
}

QVariantList SettingsViewModel::panelEdges() const {
    return choices<PanelEdge>(localizer_);
}

QVariantList SettingsViewModel::restingLooks() const {
    return choices<RestingLook>(localizer_);
}

QVariantList SettingsViewModel::panelScreens() const {
    QVariantList result;
    const auto add = [&result](const QString& rawValue, const QString& title) {
        result.append(QVariantMap{{QStringLiteral("rawValue"), rawValue}, {QStringLiteral("title"), title}});
    };
    add({}, localizer_(text("the main screen", "l’écran principal")));
    if (services_.canFollowPointer)
        add(screenOfPointer, localizer_(text("the one with the pointer", "celui du pointeur")));
    QStringList names = services_.screenNames ? services_.screenNames() : QStringList();
    // One that is away at present stays chosen.
    const QString chosen = preferences_.panelScreen();
    if (!chosen.isEmpty() && chosen != screenOfPointer && !names.contains(chosen))
        names.append(chosen);
    if (names.size() > 1 || !chosen.isEmpty()) {
        for (const QString& name : std::as_const(names))
            add(name, name);
    }
    return result;
}

QVariantList SettingsViewModel::moduleOrders() const {
    return choices<KestrantModuleOrder>(localizer_);
}

QVariantList SettingsViewModel::layoutRatios() const {
    return choices<KestrantLayoutRatio>(localizer_);
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
