#pragma once

#include "foundation/Subscription.h"
#include "foundation/Text.h"
#include "preferences/Preferences.h"
#include "ui/settings/DataStoreViewModel.h"
#include "ui/settings/FeedbackViewModel.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

class LaunchAtLoginManager;
class Localizer;

/// The person's switch for the anonymous count of completed reminders.
struct CollectionSwitch {
    TextPair help;
    std::function<bool()> isOn;
    std::function<void(bool)> setOn;
};

/// Services behind settings that are no preferences; a setting whose service is absent is not offered.
struct SettingsServices {
    std::optional<CollectionSwitch> collection;
    LaunchAtLoginManager* launchAtLogin = nullptr;
    DataStoreServices dataStore;
    /// Problems with reading or saving, one sentence each.
    std::function<std::vector<TextPair>()> problems;
    /// The screens that there are.
    std::function<QStringList()> screenNames;
    /// Whether the pointer is known on every screen.
    bool canFollowPointer = false;
    /// The desktop's bar has something in its middle.
    bool barIsBusy = false;
    /// Opens the introduction at its tutorial.
    std::function<void()> showTutorial;
    /// Whether touch feedback can be felt on this machine.
    std::function<bool()> canBeFelt;
    /// Whether touchpads do not tell how they scroll, so that the direction of swipes may have to be
    /// inverted.
    std::function<bool()> canInvertSwipes;
    /// Such as "1.2.0".
    QString version;
};

/// What the settings popover and the introduction show and change; every change is stored at once and shows
/// everywhere. Thread: main.
class SettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    /// "en" or "fr".
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY changed)
    Q_PROPERTY(bool requiresClick MEMBER requiresClick_ NOTIFY changed)
    /// Seconds.
    Q_PROPERTY(double hoverDelay MEMBER hoverDelay_ NOTIFY changed)
    Q_PROPERTY(double autoCloseDelay MEMBER autoCloseDelay_ NOTIFY changed)
    Q_PROPERTY(bool canInvertSwipes READ canInvertSwipes NOTIFY changed)
    Q_PROPERTY(bool invertsSwipes MEMBER invertsSwipes_ NOTIFY changed)
    Q_PROPERTY(QString material MEMBER material_ NOTIFY changed)
    /// Raw value of what the notch says at rest.
    Q_PROPERTY(QString restingContent MEMBER restingContent_ NOTIFY changed)
    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList restingContents READ restingContents NOTIFY changed)
    /// Raw values of where the panel is; see PanelPlacement.
    Q_PROPERTY(QString panelScreen MEMBER panelScreen_ NOTIFY changed)
    Q_PROPERTY(QString panelPlace MEMBER panelPlace_ NOTIFY changed)
    Q_PROPERTY(QString panelEdge MEMBER panelEdge_ NOTIFY changed)
    Q_PROPERTY(QString restingLook MEMBER restingLook_ NOTIFY changed)
    Q_PROPERTY(bool yieldsToFullScreen MEMBER yieldsToFullScreen_ NOTIFY changed)
    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList panelScreens READ panelScreens NOTIFY changed)
    Q_PROPERTY(QVariantList panelEdges READ panelEdges NOTIFY changed)
    Q_PROPERTY(QVariantList restingLooks READ restingLooks NOTIFY changed)
    /// Whether the desktop's bar has something in its middle that the panel would cover.
    Q_PROPERTY(bool barIsBusy READ barIsBusy CONSTANT)
    Q_PROPERTY(bool pulsesWhenRinging MEMBER pulsesWhenRinging_ NOTIFY changed)
    Q_PROPERTY(bool celebrates MEMBER celebrates_ NOTIFY changed)
    /// 0 off, 1 full, 2 soft.
    Q_PROPERTY(int sounds READ sounds WRITE setSounds NOTIFY changed)
    /// 0 off, 1 light, 2 full.
    Q_PROPERTY(int haptics READ haptics WRITE setHaptics NOTIFY changed)
    Q_PROPERTY(bool canBeFelt READ canBeFelt NOTIFY changed)
    Q_PROPERTY(bool showReminders MEMBER showReminders_ NOTIFY changed)
    Q_PROPERTY(bool showCalendar MEMBER showCalendar_ NOTIFY changed)
    /// Reminders that are due are listed among the events.
    Q_PROPERTY(bool showRemindersInCalendar MEMBER showRemindersInCalendar_ NOTIFY changed)
    Q_PROPERTY(QString moduleOrder MEMBER moduleOrder_ NOTIFY changed)
    Q_PROPERTY(QString layoutRatio MEMBER layoutRatio_ NOTIFY changed)
    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList moduleOrders READ moduleOrders NOTIFY changed)
    Q_PROPERTY(QVariantList layoutRatios READ layoutRatios CONSTANT)
    /// False in a program that was not built for counting.
    Q_PROPERTY(bool canCount READ canCount CONSTANT)
    Q_PROPERTY(bool counts READ counts WRITE setCounts NOTIFY changed)
    Q_PROPERTY(QString countsHelp READ countsHelp NOTIFY changed)
    Q_PROPERTY(kestrant::DataStoreViewModel* dataStore READ dataStore CONSTANT)
    /// Problems with reading or saving, one sentence each; mostly none.
    Q_PROPERTY(QStringList problems READ problems NOTIFY problemsChanged)
    Q_PROPERTY(bool canLaunchAtLogin READ canLaunchAtLogin CONSTANT)
    Q_PROPERTY(bool launchesAtLogin READ launchesAtLogin WRITE setLaunchesAtLogin NOTIFY changed)
    /// Why that could not be changed; empty for none.
    Q_PROPERTY(QString launchAtLoginProblem READ launchAtLoginProblem NOTIFY changed)
    Q_PROPERTY(bool canShowTutorial READ canShowTutorial CONSTANT)
    Q_PROPERTY(QString version READ version CONSTANT)
    /// The form for a message to the makers.
    Q_PROPERTY(kestrant::FeedbackViewModel* feedback READ feedback CONSTANT)

  public:
    /// Everything must outlive the view model.
    SettingsViewModel(Preferences& preferences, Localizer& localizer, FeedbackViewModel& feedback,
                      SettingsServices services = {}, QObject* parent = nullptr);

    [[nodiscard]] QString language() const;
    void setLanguage(const QString& language);
    [[nodiscard]] bool canInvertSwipes() const {
        return services_.canInvertSwipes && services_.canInvertSwipes();
    }
    [[nodiscard]] QVariantList restingContents() const;
    [[nodiscard]] QVariantList panelScreens() const;
    [[nodiscard]] QVariantList panelEdges() const;
    [[nodiscard]] QVariantList restingLooks() const;
    [[nodiscard]] bool barIsBusy() const { return services_.barIsBusy; }
    [[nodiscard]] int sounds() const;
    void setSounds(int profile);
    [[nodiscard]] int haptics() const;
    void setHaptics(int profile);
    [[nodiscard]] bool canBeFelt() const { return services_.canBeFelt && services_.canBeFelt(); }
    [[nodiscard]] QVariantList moduleOrders() const;
    [[nodiscard]] QVariantList layoutRatios() const;
    [[nodiscard]] bool canCount() const { return services_.collection.has_value(); }
    [[nodiscard]] bool counts() const { return canCount() && services_.collection->isOn(); }
    void setCounts(bool on);
    [[nodiscard]] QString countsHelp() const;
    [[nodiscard]] FeedbackViewModel* feedback() const { return &feedback_; }
    [[nodiscard]] DataStoreViewModel* dataStore() { return &dataStore_; }
    [[nodiscard]] QStringList problems() const;
    [[nodiscard]] bool canLaunchAtLogin() const { return services_.launchAtLogin != nullptr; }
    [[nodiscard]] bool launchesAtLogin() const;
    void setLaunchesAtLogin(bool launches);
    [[nodiscard]] QString launchAtLoginProblem() const;
    [[nodiscard]] bool canShowTutorial() const { return bool(services_.showTutorial); }
    [[nodiscard]] const QString& version() const { return services_.version; }

    /// To be called when the settings come to be shown: looks at what others may have changed meanwhile.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void showTutorial() {
        Q_EMIT tutorialRequested();
        services_.showTutorial();
    }
    Q_INVOKABLE void quit() { Q_EMIT quitRequested(); }

  Q_SIGNALS:
    void changed();
    /// To be emitted by whoever knows that there are others now; the view model does so when the language
    /// changes.
    void problemsChanged();
    /// The introduction is about to be shown.
    void tutorialRequested();
    /// The person wants the program to end.
    void quitRequested();

  private:
    Preferences& preferences_;
    Setting<bool>& requiresClick_{preferences_.requiresClickOrSwipeToExpand};
    Setting<double>& hoverDelay_{preferences_.hoverExpandDelay};
    Setting<double>& autoCloseDelay_{preferences_.autoCloseDelay};
    Setting<bool>& invertsSwipes_{preferences_.invertsSwipes};
    Setting<QString>& material_{preferences_.notchMaterial};
    Setting<RestingContent>& restingContent_{preferences_.restingContent};
    Setting<QString>& panelScreen_{preferences_.panelScreen};
    Setting<QString>& panelPlace_{preferences_.panelPlace};
    Setting<PanelEdge>& panelEdge_{preferences_.panelEdge};
    Setting<RestingLook>& restingLook_{preferences_.restingLook};
    Setting<bool>& yieldsToFullScreen_{preferences_.yieldsToFullScreen};
    Setting<bool>& pulsesWhenRinging_{preferences_.pulsesWhenRinging};
    Setting<bool>& celebrates_{preferences_.celebrates};
    Setting<bool>& showReminders_{preferences_.showReminders};
    Setting<bool>& showCalendar_{preferences_.showCalendar};
    Setting<bool>& showRemindersInCalendar_{preferences_.showRemindersInCalendar};
    Setting<KestrantModuleOrder>& moduleOrder_{preferences_.moduleOrder};
    Setting<KestrantLayoutRatio>& layoutRatio_{preferences_.layoutRatio};
    Localizer& localizer_;
    FeedbackViewModel& feedback_;
    SettingsServices services_;
    DataStoreViewModel dataStore_;
    std::optional<TextPair> launchAtLoginProblem_;
    Subscription subscription_;
};

}  // namespace kestrant
