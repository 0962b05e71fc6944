#pragma once

#include "app/ChosenDatabase.h"
#include "app/InstanceRequest.h"
#include "app/Lifecycle.h"
#include "app/NativePanel.h"
#include "completion/BackgroundLedgerWriter.h"
#include "completion/CompletionLedgerRepository.h"
#include "cues/SensoryFeedback.h"
#include "cues/SoundFeedback.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/Clocks.h"
#include "foundation/InformationDictionary.h"
#include "foundation/JsonFileUserDefaults.h"
#include "foundation/NotificationCenter.h"
#include "foundation/QtScheduler.h"
#include "foundation/SerialWorker.h"
#include "foundation/SystemTimeZone.h"
#include "metrics/AggregateCompletionReporter.h"
#include "metrics/EventLoopThread.h"
#include "network/HttpSession.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanelController.h"
#include "platform/linux/desktop/AutostartEntry.h"
#include "platform/linux/desktop/DesktopNotifier.h"
#include "platform/linux/desktop/DesktopSettings.h"
#include "platform/linux/desktop/FeedbackdHapticPerformer.h"
#include "preferences/Localization.h"
#include "preferences/Preferences.h"
#include "reminders/alerts/DueAlertRinger.h"
#include "reminders/flags/EventStoreScriptHost.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "services/AppUpdater.h"
#include "services/FeedbackAPIClient.h"
#include "services/LaunchAtLoginManager.h"

#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

class Appearance;
class DesktopLook;
class CalendarStore;
class FeedbackViewModel;
class FolderDialog;
class Localizer;
class OnboardingWindowController;
class PanelView;
class QtScreenProvider;
class ReminderStore;
class SettingsViewModel;
class TouchpadDirection;
class WakeObserver;
struct PanelComposition;
struct CollectionSwitch;
struct SettingsServices;

/// Builds every long-lived object in its fixed order, owns them all for the life of the process, and answers
/// what happens to the application as a whole. The one place that names adapters. Thread: main.
class AppDelegate : public QObject {
    Q_OBJECT

  public:
    struct Options {
        /// Absent: the one the preferences name, else the desktop's or the embedded one.
        std::optional<EventStoreLocation> store;
        /// Whether the desktop has a database of its own; may be empty.
        std::function<bool()> desktopHasStore;
        QString preferencesFile;
        QString ledgerFile;
        /// Where the program keeps what belongs to nobody else; need not exist.
        QString supportFolder;
        InformationDictionary information;
    };

    explicit AppDelegate(Options options);
    ~AppDelegate() override;

    /// The start sequence; to be called once, when the event loop is about to run. Without a screen the panel
    /// waits for one.
    void applicationDidFinishLaunching();

    /// Does what a start or the desktop asks for; until the introduction was completed, brings that up.
    void perform(const InstanceRequest& request);

    /// Commits what is pending and ends the event loop; at the latest after ten seconds.
    void terminate();

    /// Built on first use.
    [[nodiscard]] ReminderStore& reminderStore();
    /// Built on first use.
    [[nodiscard]] CalendarStore& calendarStore();

  private:
    /// The screen, the stores and the models over them. Built on first use.
    [[nodiscard]] PanelComposition& composition();
    void createPanelController();
    [[nodiscard]] PanelPlacement placement() const;
    /// Has the panel be where the settings say.
    void place();
    /// Opens the panel, or brings up the introduction.
    void showPanel();
    /// Built on first use.
    [[nodiscard]] FeedbackAPIClient& feedbackClient();
    /// Absent where nothing is counted.
    [[nodiscard]] std::optional<CollectionSwitch> collectionSwitch();
    [[nodiscard]] SettingsServices settingsServices();
    /// Problems with reading or saving, one sentence each.
    [[nodiscard]] std::vector<TextPair> problems();
    [[nodiscard]] Lifecycle::Actions lifecycleActions();
    void createPanel();
    void createOnboarding();
    void followSystem();
    void followPreferences();
    /// Has the process hold no more memory than it needs while the panel rests.
    void keepMemorySmall();
    /// Has swipes follow the compositor's settings, where devices do not tell theirs.
    void followTouchpad();
    void pickFolder(const QString& start, std::function<void(tl::expected<QString, TextPair>)> done);
    /// Uses the database that is chosen now, if it is another one.
    void exchangeStore();
    void startRinging();
    void wokeUp();

    QtScheduler scheduler_;
    SystemClock clock_;
    SystemTimeZone currentZone_;
    NotificationCenter notifications_;
    JsonFileUserDefaults defaults_;
    Preferences preferences_;
    Localization localization_;
    // A sound service that hangs must not keep the program from ending.
    EventLoopThread soundQueue_{SoundFeedback::queueLabel, std::chrono::seconds(1)};
    SoundFeedback cuePlayer_;
    FeedbackdHapticPerformer hapticPerformer_;
    SensoryFeedback feedback_;

    InformationDictionary information_;
    EventLoopThread metricsThread_;
    AggregateCompletionReporter reporter_;
    std::unique_ptr<HttpSession> feedbackSession_;
    std::unique_ptr<FeedbackAPIClient> feedbackClient_;
    ChosenDatabase database_;
    OpenReminders openReminders_{database_.store(), scheduler_};
    BackgroundLedgerWriter ledgerWriter_;
    CompletionLedgerRepository ledger_;
    EventStoreScriptHost scriptHost_;
    SerialWorker scriptQueue_;
    FlaggedReminderAutomation flagAutomation_;
    SerialWorker calendarWorker_;
    NotchInteractionModel interactionModel_;
    AutostartEntry loginItem_;
    LaunchAtLoginManager launchAtLoginManager_;
    PackagedUpdates updates_;
    AppUpdater appUpdater_{updates_};
    std::unique_ptr<QtScreenProvider> screens_;
    std::unique_ptr<NotchGeometry> geometry_;
    /// The desktop's bar has something in its middle, which the panel is not to cover unasked.
    const bool barIsBusy_ = hasBusyBar(qgetenv("XDG_CURRENT_DESKTOP"));
    std::unique_ptr<Localizer> localizer_;
    std::unique_ptr<Appearance> appearance_;
    std::unique_ptr<PanelComposition> panel_;
    std::unique_ptr<FeedbackViewModel> feedbackForm_;
    std::unique_ptr<SettingsViewModel> settings_;
    std::unique_ptr<PanelView> view_;
    std::unique_ptr<DesktopNotifier> notifier_;
    std::unique_ptr<DueAlertRinger> ringer_;
    Subscription settingsProblems_;
    Subscription preferenceChanges_;
    Subscription databaseChanges_;
    std::unique_ptr<TouchpadDirection> touchpadDirection_;
    std::unique_ptr<FolderDialog> folderDialog_;
    NativePanel nativePanel_;
    std::unique_ptr<DesktopLook> look_;
    std::unique_ptr<NotchPanelController> panelController_;
    std::unique_ptr<OnboardingWindowController> onboardingController_;

    std::unique_ptr<WakeObserver> wakeObserver_;
    ScheduledTask memoryReturn_;
    ScheduledTask settling_;
    ScheduledTask ringing_;
    ScheduledTask activationReload_;
    ScheduledTask endingTimeout_;
    bool isTerminating_ = false;
    Lifecycle lifecycle_;
};

}  // namespace kestrant
