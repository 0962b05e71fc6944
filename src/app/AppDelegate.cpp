#include "app/AppDelegate.h"

#include "app/DesktopLook.h"
#include "platform/linux/audio/ModuleAudioOutput.h"
#include "platform/linux/desktop/ApplicationState.h"
#include "platform/linux/desktop/FolderDialog.h"
#include "platform/linux/desktop/ProcessMemory.h"
#include "platform/linux/desktop/TouchpadDirection.h"
#include "platform/linux/desktop/WakeObserver.h"
#include "platform/linux/window/QtScreenProvider.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/ProgramNames.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelComposition.h"
#include "ui/panel/PanelView.h"
#include "ui/settings/FeedbackViewModel.h"
#include "ui/settings/SettingsViewModel.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QLocale>

#include <cmath>
#include <utility>

namespace kestrant {

namespace {

constexpr Duration settlingDelay = std::chrono::milliseconds(100);
constexpr Duration ringingDelay = std::chrono::milliseconds(500);
/// Idle time after a change before free memory is returned to the system.
constexpr Duration quietDelay = std::chrono::seconds(2);
/// Pending changes get this long to reach the disk when the program ends.
constexpr Duration endingDeadline = std::chrono::seconds(10);

}  // namespace

AppDelegate::AppDelegate(Options options)
    : defaults_(options.preferencesFile, scheduler_)
    , preferences_(defaults_, [] { return QLocale::system(); })
    , localization_(preferences_)
    , cuePlayer_(std::make_unique<ModuleAudioOutput>(soundQueue_), soundQueue_, clock_)
    , feedback_(preferences_, cuePlayer_, hapticPerformer_)
    , information_(std::move(options.information))
    , reporter_({.context = metricsThread_,
                 .clock = clock_,
                 .defaults = defaults_,
                 .information = information_,
                 .folder = options.supportFolder + u'/' +
                           QString::fromLatin1(AggregateCompletionReporter::folderName)})
    , database_(std::move(options.store), std::move(options.desktopHasStore), defaults_, scheduler_, clock_,
                currentZone_)
    , ledgerWriter_(scheduler_)
    , ledger_(options.ledgerFile, ledgerWriter_.writer())
    , scriptHost_(database_.store(), openReminders_, scheduler_)
    , flagAutomation_(scriptHost_, scriptQueue_, scheduler_)
    , interactionModel_(scheduler_, preferences_, feedback_)
    , loginItem_(AutostartEntry::ofThisProgram())
    , launchAtLoginManager_(loginItem_, defaults_)
    , lifecycle_({.preferences = preferences_,
                  .interactionModel = interactionModel_,
                  .notifications = notifications_,
                  .scheduler = scheduler_,
                  .launchAtLogin = launchAtLoginManager_,
                  .updater = appUpdater_},
                 lifecycleActions()) {}

AppDelegate::~AppDelegate() = default;

PanelComposition& AppDelegate::composition() {
    if (panel_)
        return *panel_;
    screens_ = std::make_unique<QtScreenProvider>(
        [this] { return defaults_.string(preferenceKeys::cameraHousing).value_or(QString()); });
    geometry_ = std::make_unique<NotchGeometry>(
        NotchGeometry::chooseScreen(*screens_, placement()).value_or(Screen()));
    geometry_->setPlacement(placement());
    localizer_ = std::make_unique<Localizer>(localization_);
    appearance_ = std::make_unique<Appearance>(nullptr);
    panel_ = std::make_unique<PanelComposition>(PanelComposition::Services{
        .eventStore = database_.store(),
        .openReminders = openReminders_,
        .scheduler = scheduler_,
        .clock = clock_,
        .currentZone = currentZone_,
        .preferences = preferences_,
        .localization = localization_,
        .localizer = *localizer_,
        .notifications = notifications_,
        .ledger = ledger_,
        .executor = calendarWorker_,
        .locale = [] { return QLocale::system(); },
        .feedback = feedback_,
        .interaction = interactionModel_,
        .geometry = *geometry_,
        .completionsCommitted = [this](int count) { reporter_.recordCompletions(count); },
        .recapShareBaseUrl =
            information_.string(InformationDictionary::recapShareBaseUrlKey).value_or(QString()),
        .flags = &flagAutomation_,
    });
    return *panel_;
}

ReminderStore& AppDelegate::reminderStore() {
    return composition().reminderStore;
}

CalendarStore& AppDelegate::calendarStore() {
    return composition().calendarStore;
}

void AppDelegate::applicationDidFinishLaunching() {
    lifecycle_.start();
    followSystem();
    followPreferences();
    keepMemorySmall();
}

Lifecycle::Actions AppDelegate::lifecycleActions() {
    return {
        .createPanel = [this] { createPanel(); },
        .createOnboarding = [this] { createOnboarding(); },
        .presentPanel = [this] { panelController_->present(); },
        .showOnboarding =
            [this](Lifecycle::OnboardingPage page) {
                onboardingController_->show(page == Lifecycle::OnboardingPage::welcome
                                                ? OnboardingWindowController::Page::welcome
                                                : OnboardingWindowController::Page::tutorial);
            },
        .requestReminderAccess =
            [this] {
                reminderStore().requestAccess();
                // After the first frame, since connecting to the notification service takes time.
                ringing_ = scheduler_.after(ringingDelay, [this] { startRinging(); });
            },
        .requestCalendarAccess = [this] { calendarStore().requestAccess(); },
        .reloadReminders =
            [this](Duration delay) {
                activationReload_ = scheduler_.after(delay, [this] {
                    reminderStore().reloadLists();
                    reminderStore().reloadTasks();
                });
            },
        .checkForDueReport = [this] { reporter_.runDueCheck(); },
        .prepareSounds =
            [this] {
                if (preferences_.soundProfile() != SoundProfile::off)
                    cuePlayer_.prepare();
            },
        .finishStart =
            [this] {
                // The next turn of the loop may come before the first frame, and these take a moment.
                settling_ = scheduler_.after(settlingDelay, [this] {
                    look_->followSettings();
                    followTouchpad();
                    hapticPerformer_.watch();
                    reporter_.runDueCheck();
                    panel_->announcement.noteStart();
                });
            },
    };
}

void AppDelegate::createPanel() {
    PanelComposition& panel = composition();
    feedbackForm_ =
        std::make_unique<FeedbackViewModel>(FeedbackAPIClient::isConfigured(information_)
                                            ? [this]() -> FeedbackAPIClient& { return feedbackClient(); }
                                            : std::function<FeedbackAPIClient&()>(),
                                            *localizer_);
    settings_ =
        std::make_unique<SettingsViewModel>(preferences_, *localizer_, *feedbackForm_, settingsServices());
    view_ = std::make_unique<PanelView>(
        PanelView::Models{interactionModel_, *localizer_, *appearance_, panel, *settings_});
    createPanelController();
}

void AppDelegate::createOnboarding() {
    onboardingController_ = std::make_unique<OnboardingWindowController>(
        OnboardingWindowController::Services{
            .engine = *view_->engine(),
            .localizer = *localizer_,
            .appearance = *appearance_,
            .preferences = preferences_,
            .settings = *settings_,
            .scheduler = scheduler_,
            .clock = clock_,
            .currentZone = currentZone_,
            .feedback = feedback_,
            .touchpadsScrollNaturally = [this] { return nativePanel_.window->touchpadScrollsNaturally(); },
        },
        [this] { lifecycle_.onboardingCompleted(); });
    connect(onboardingController_.get(), &OnboardingWindowController::dismissed, this,
            [this] { lifecycle_.onboardingDismissed(); });
    panelController_->setLockedHandler([this] { onboardingController_->activate(); });
}

void AppDelegate::followSystem() {
    const auto resigned = [this] {
        // Popovers close first, since an open one keeps the panel expanded.
        view_->overlays().dismissAll();
        // A panel that folds gives the focus back by itself; it stays under the pointer then.
        if (nativePanel_.window->keyWasTakenAway())
            panelController_->applicationResignedActive();
    };
    connect(nativePanel_.window.get(), &DesktopPanelWindow::keyTakenWhileAsking, this, resigned);
    observeApplicationState(this, [this, resigned](bool isActive) {
        if (isActive) {
            lifecycle_.becameActive();
            if (touchpadDirection_)
                touchpadDirection_->refresh();
        } else if (!nativePanel_.window->isAskingForKey()) {
            resigned();
        }
    });
    observeQuitRequests(this, [this] { terminate(); });
    wakeObserver_ = std::make_unique<WakeObserver>([this] { wokeUp(); });
}

void AppDelegate::followPreferences() {
    preferenceChanges_ = preferences_.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::eventStore.name)
            exchangeStore();
        else if (key == preferenceKeys::cameraHousing.name)
            screens_->cameraHousingChanged();
        else if (key == preferenceKeys::invertsSwipes.name)
            followTouchpad();
        else if (key == preferenceKeys::panelScreen.name || key == preferenceKeys::panelPlace.name ||
                 key == preferenceKeys::panelEdge.name || key == preferenceKeys::restingLook.name ||
                 key == preferenceKeys::yieldsToFullScreen.name)
            place();
        else if ((key == preferenceKeys::soundEffectsProfile.name ||
                  key == preferenceKeys::soundEffectsEnabled.name) &&
                 preferences_.soundProfile() != SoundProfile::off)
            cuePlayer_.prepare();
    });
}

PanelPlacement AppDelegate::placement() const {
    return preferences_.panelPlacement(barIsBusy_);
}

void AppDelegate::place() {
    nativePanel_.window->setIsBelowBars(placement().isBelowBar);
    nativePanel_.window->setYieldsToFullScreen(preferences_.yieldsToFullScreen());
    panelController_->setPlacement(placement());
}

void AppDelegate::keepMemorySmall() {
    // Reading a database takes several times the memory of what is then held, and so does a panel that is
    // open.
    const auto returnLater = [this] {
        memoryReturn_ = scheduler_.after(quietDelay, [this] {
            if (!interactionModel_.isExpanded())
                returnFreeMemory();
        });
    };
    databaseChanges_ = database_.store().observeChanges(returnLater);
    connect(&interactionModel_, &NotchInteractionModel::phaseChanged, this, returnLater);
}

void AppDelegate::wokeUp() {
    currentZone_.refresh();
    reminderStore().systemDidWake();
    calendarStore().systemDidWake();
    panel_->actions.removeExpired();
    if (ringer_)
        ringer_->systemDidWake();
    lifecycle_.wokeUp();
}

FeedbackAPIClient& AppDelegate::feedbackClient() {
    if (!feedbackClient_) {
        feedbackSession_ = std::make_unique<HttpSession>(scheduler_);
        feedbackClient_ = std::make_unique<FeedbackAPIClient>(information_, *feedbackSession_);
    }
    return *feedbackClient_;
}

SettingsServices AppDelegate::settingsServices() {
    return {
        .collection = collectionSwitch(),
        .launchAtLogin = &launchAtLoginManager_,
        .dataStore = {.defaultFolder =
                          database_.wasNamed() ? QString() : EventStoreLocation::embeddedDefault().folder,
                      .inUse = [this] { return database_.location(); },
                      .evolutionIsAvailable = database_.desktopHasStore(),
                      .pickFolder = [this](const QString& start,
                                           auto done) { pickFolder(start, std::move(done)); }},
        .problems = [this] { return problems(); },
        .screenNames =
            [this] {
                QStringList names;
                for (const Screen& screen : screens_->screens())
                    names.append(screen.name);
                return names;
            },
        .canFollowPointer = isOnX11(),
        .barIsBusy = barIsBusy_,
        .showTutorial = [this] { notifications_.post(notifications::showTutorial); },
        .canBeFelt = [this] { return hapticPerformer_.isAvailable(); },
        .canInvertSwipes = [this] { return !nativePanel_.window->touchpadsTellDirection(); },
        .version = QCoreApplication::applicationVersion(),
    };
}

std::vector<TextPair> AppDelegate::problems() {
    std::vector<TextPair> problems = reminderStore().problems();
    if (auto problem = defaults_.problem())
        problems.insert(problems.begin(), std::move(*problem));
    if (const auto& error = reminderStore().completionLedgerError())
        problems.push_back(*error);
    return problems;
}

std::optional<CollectionSwitch> AppDelegate::collectionSwitch() {
    if (!reporter_.configuration().isAvailable)
        return {};
    return CollectionSwitch{
        .help = AggregateCompletionReporter::helpText(),
        .isOn = [this] { return reporter_.configuration().isEnabled; },
        .setOn = [this](bool on) { reporter_.setEnabled(on); },
    };
}

void AppDelegate::followTouchpad() {
    if (nativePanel_.window->touchpadsTellDirection())
        return;
    const auto follow = [this] {
        const bool isInverted = preferences_.invertsSwipes();
        nativePanel_.window->setTouchpadDirection(touchpadDirection_->isNatural(), isInverted);
    };
    if (!touchpadDirection_) {
        touchpadDirection_ = std::make_unique<TouchpadDirection>();
        connect(touchpadDirection_.get(), &TouchpadDirection::changed, this, follow);
    }
    follow();
}

void AppDelegate::pickFolder(const QString& start,
                             std::function<void(tl::expected<QString, TextPair>)> done) {
    if (!folderDialog_)
        folderDialog_ = std::make_unique<FolderDialog>();
    folderDialog_->open(
        localization_(text("Folder of reminders and events", "Dossier des rappels et des événements")), start,
        std::move(done));
}

void AppDelegate::exchangeStore() {
    // Pending completions belong to the present database.
    reminderStore().commitPendingCompletions([this] {
        if (!database_.isToBeExchanged())
            return;
        const bool reads = reminderStore().accessState().kind != ReminderAccessState::Kind::notDetermined;
        ringer_.reset();
        database_.exchange();
        reminderStore().databaseWasExchanged();
        calendarStore().databaseWasExchanged();
        if (reads)
            ringing_ = scheduler_.after(ringingDelay, [this] { startRinging(); });
    });
}

void AppDelegate::startRinging() {
    if (!database_.ringsAlerts())
        return;
    notifier_ = std::make_unique<DesktopNotifier>();
    ringer_ = std::make_unique<DueAlertRinger>(DueAlertServices{
        .eventStore = database_.store(),
        .openReminders = openReminders_,
        .reminders = reminderStore(),
        .notifier = *notifier_,
        .scheduler = scheduler_,
        .clock = clock_,
        .currentZone = currentZone_,
        .defaults = defaults_,
        .localization = localization_,
    });
    connect(ringer_.get(), &DueAlertRinger::rang, panel_->panel.resting(), &RestingViewModel::ring);
    connect(ringer_.get(), &DueAlertRinger::openRequested, this, [this](const QString& reminderID) {
        showPanel();
        reminderStore().reveal(reminderID);
    });
}

void AppDelegate::createPanelController() {
    PanelView& view = *view_;
    nativePanel_ = nativePanel(view, scheduler_);
    panelController_ = std::make_unique<NotchPanelController>(
        NotchPanelController::Environment{
            .window = *nativePanel_.window,
            .screens = *screens_,
            .pointer = *nativePanel_.pointer,
            .scheduler = scheduler_,
            .notifications = notifications_,
        },
        interactionModel_, *geometry_);
    panelController_->setContentScrollsUpQuery(
        [&view](QPointF location) { return view.contentScrollsUp(location); });

    panelController_->setMovedHandler(
        [this](double offset) { preferences_.panelPlace.set(QString::number(std::lround(offset))); });
    place();

    look_ = std::make_unique<DesktopLook>(DesktopLook::Services{
        .view = view,
        .window = *nativePanel_.window,
        .panel = panel_->panel,
        .geometry = *geometry_,
        .appearance = *appearance_,
        .scheduler = scheduler_,
    });

    OverlayHost& overlays = view.overlays();
    connect(&overlays, &OverlayHost::surfacesChanged, this,
            [this, &overlays] { panelController_->setSurfaces(overlays.surfaces()); });
    connect(&overlays, &OverlayHost::allOverlaysClosed, this, [this] { panelController_->popoverClosed(); });
    const auto resize = [this, &view] {
        nativePanel_.window->setExtent(view.extent());
        view.fillWindow();
    };
    connect(&view, &PanelView::extentChanged, this, resize);
    resize();
    connect(&panel_->eventDetails, &EventDetailsViewModel::linkRequested, this,
            [](const QUrl& link) { QDesktopServices::openUrl(link); });
    if (const auto page = desktopSettingsPage()) {
        ProgramNames names = linuxNames();
        names.systemSettings = page->program;
        localizer_->setProgramNames(names);
        const auto openPage = [page] { open(*page); };
        connect(&panel_->reminders, &RemindersViewModel::privacyPageRequested, this, openPage);
        connect(&panel_->days, &CalendarViewModel::privacyPageRequested, this, openPage);
    }
    connect(settings_.get(), &SettingsViewModel::quitRequested, this, &AppDelegate::terminate);
    connect(&reminderStore(), &ReminderStore::problemsChanged, settings_.get(),
            &SettingsViewModel::problemsChanged);
    connect(&reminderStore(), &ReminderStore::completionLedgerErrorChanged, settings_.get(),
            &SettingsViewModel::problemsChanged);
    settingsProblems_ = defaults_.observeProblem([this] { Q_EMIT settings_->problemsChanged(); });
}

void AppDelegate::perform(const InstanceRequest& request) {
    using Action = InstanceRequest::Action;
    const bool hasText = !request.text.isEmpty();
    if (!preferences_.completedInitialOnboarding()) {
        onboardingController_->activate();
    } else if (request.action == Action::newReminder) {
        if (hasText)
            panel_->quickAdd.append(request.text);
        notifications_.post(notifications::newReminder);
    } else if (request.action == Action::search) {
        notifications_.post(notifications::findReminder);
        if (hasText)
            panel_->reminders.setSearchQuery(request.text);
    } else if (request.action == Action::toggle || !interactionModel_.isExpanded()) {
        panelController_->toggle();
    }
}

void AppDelegate::showPanel() {
    perform({InstanceRequest::Action::show});
}

void AppDelegate::terminate() {
    if (std::exchange(isTerminating_, true))
        return;
    endingTimeout_ = scheduler_.after(endingDeadline, [] { QCoreApplication::exit(1); });
    // quit() would ask the windows first, and the panel refuses to be closed.
    reminderStore().commitPendingCompletions([] { QCoreApplication::exit(0); });
}

}  // namespace kestrant
