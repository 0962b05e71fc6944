#pragma once

#include "foundation/Subscription.h"
#include "foundation/Text.h"
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
class Preferences;

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
    Q_PROPERTY(bool requiresClick READ requiresClick WRITE setRequiresClick NOTIFY changed)
    /// Seconds.
    Q_PROPERTY(double hoverDelay READ hoverDelay WRITE setHoverDelay NOTIFY changed)
    Q_PROPERTY(double autoCloseDelay READ autoCloseDelay WRITE setAutoCloseDelay NOTIFY changed)
    Q_PROPERTY(bool canInvertSwipes READ canInvertSwipes NOTIFY changed)
    Q_PROPERTY(bool invertsSwipes READ invertsSwipes WRITE setInvertsSwipes NOTIFY changed)
    Q_PROPERTY(QString material READ material WRITE setMaterial NOTIFY changed)
    /// Raw value of what the notch says at rest.
    Q_PROPERTY(QString restingContent READ restingContent WRITE setRestingContent NOTIFY changed)
    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList restingContents READ restingContents NOTIFY changed)
    Q_PROPERTY(bool pulsesWhenRinging READ pulsesWhenRinging WRITE setPulsesWhenRinging NOTIFY changed)
    /// 0 off, 1 full, 2 soft.
    Q_PROPERTY(int sounds READ sounds WRITE setSounds NOTIFY changed)
    /// 0 off, 1 light, 2 full.
    Q_PROPERTY(int haptics READ haptics WRITE setHaptics NOTIFY changed)
    Q_PROPERTY(bool canBeFelt READ canBeFelt NOTIFY changed)
    Q_PROPERTY(bool showReminders READ showReminders WRITE setShowReminders NOTIFY changed)
    Q_PROPERTY(bool showCalendar READ showCalendar WRITE setShowCalendar NOTIFY changed)
    /// Reminders that are due are listed among the events.
    Q_PROPERTY(bool showRemindersInCalendar READ showRemindersInCalendar WRITE setShowRemindersInCalendar
                   NOTIFY changed)
    Q_PROPERTY(QString moduleOrder READ moduleOrder WRITE setModuleOrder NOTIFY changed)
    Q_PROPERTY(QString layoutRatio READ layoutRatio WRITE setLayoutRatio NOTIFY changed)
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
    [[nodiscard]] bool requiresClick() const;
    void setRequiresClick(bool required);
    [[nodiscard]] double hoverDelay() const;
    void setHoverDelay(double seconds);
    [[nodiscard]] double autoCloseDelay() const;
    void setAutoCloseDelay(double seconds);
    [[nodiscard]] bool canInvertSwipes() const {
        return services_.canInvertSwipes && services_.canInvertSwipes();
    }
    [[nodiscard]] bool invertsSwipes() const;
    void setInvertsSwipes(bool inverts);
    [[nodiscard]] QString material() const;
    void setMaterial(const QString& material);
    [[nodiscard]] QString restingContent() const;
    void setRestingContent(const QString& rawValue);
    [[nodiscard]] QVariantList restingContents() const;
    [[nodiscard]] bool pulsesWhenRinging() const;
    void setPulsesWhenRinging(bool pulses);
    [[nodiscard]] int sounds() const;
    void setSounds(int profile);
    [[nodiscard]] int haptics() const;
    void setHaptics(int profile);
    [[nodiscard]] bool canBeFelt() const { return services_.canBeFelt && services_.canBeFelt(); }
    [[nodiscard]] bool showReminders() const;
    void setShowReminders(bool show);
    [[nodiscard]] bool showCalendar() const;
    void setShowCalendar(bool show);
    [[nodiscard]] bool showRemindersInCalendar() const;
    void setShowRemindersInCalendar(bool show);
    [[nodiscard]] QString moduleOrder() const;
    void setModuleOrder(const QString& rawValue);
    [[nodiscard]] QString layoutRatio() const;
    void setLayoutRatio(const QString& rawValue);
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
    Localizer& localizer_;
    FeedbackViewModel& feedback_;
    SettingsServices services_;
    DataStoreViewModel dataStore_;
    std::optional<TextPair> launchAtLoginProblem_;
    Subscription subscription_;
};

}  // namespace kestrant
