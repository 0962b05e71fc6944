#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "notch/NotchGeometry.h"
#include "preferences/Localization.h"
#include "preferences/Preferences.h"
#include "ui/panel/OverlayHost.h"
#include "ui/panel/PanelComposition.h"

#include <QJsonObject>
#include <QObject>
#include <QQmlEngine>

namespace kestrant {

class Appearance;
class SensoryFeedback;
class Localizer;
class NotchInteractionModel;

/// Settings for trying things out: how the panel looks and behaves is the person's and is shared; everything
/// else is kept in memory. Thread: main.
class TrialDefaults final : public UserDefaults {
  public:
    /// `real` must outlive this.
    explicit TrialDefaults(UserDefaults& real) : real_(real) {}

    [[nodiscard]] QJsonValue object(const QString& key) const override;
    void set(const QString& key, const QJsonValue& value) override;
    [[nodiscard]] Subscription observe(std::function<void(const QString&)> observer) override;

  private:
    UserDefaults& real_;
    QJsonObject values_;
    ObserverList<QString> observers_;
    Subscription realChanges_ = real_.observe([this](const QString& key) { observers_.notify(key); });
};

/// The panel of the introduction: the real one's models and views over a database in memory with example
/// reminders and events, so that whatever is tried out changes nothing. Thread: main.
class OnboardingTrial : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the introduction")
    Q_PROPERTY(kestrant::PanelViewModel* panel READ panel CONSTANT)
    Q_PROPERTY(kestrant::RemindersViewModel* reminders READ reminders CONSTANT)
    Q_PROPERTY(kestrant::CalendarViewModel* calendar READ calendar CONSTANT)
    Q_PROPERTY(kestrant::QuickAddViewModel* quickAdd READ quickAdd CONSTANT)
    Q_PROPERTY(kestrant::NewEventViewModel* newEvent READ newEvent CONSTANT)
    Q_PROPERTY(kestrant::CalendarEditViewModel* calendarEdit READ calendarEdit CONSTANT)
    Q_PROPERTY(kestrant::EventDetailsViewModel* eventDetails READ eventDetails CONSTANT)
    Q_PROPERTY(kestrant::ReminderEditViewModel* reminderEdit READ reminderEdit CONSTANT)
    Q_PROPERTY(kestrant::HistoryViewModel* history READ history CONSTANT)
    Q_PROPERTY(kestrant::RecapViewModel* recap READ recap CONSTANT)
    Q_PROPERTY(kestrant::CelebrationViewModel* celebration READ celebration CONSTANT)
    Q_PROPERTY(kestrant::AnnouncementViewModel* announcement READ announcement CONSTANT)
    Q_PROPERTY(kestrant::YearRevealViewModel* yearReveal READ yearReveal CONSTANT)
    Q_PROPERTY(kestrant::OverlayHost* overlays READ overlays CONSTANT)
    /// A card is being carried.
    Q_PROPERTY(bool isCarrying READ isCarrying NOTIFY isCarryingChanged)
    /// The resting notch shows signs of what comes.
    Q_PROPERTY(bool showsSigns READ showsSigns WRITE setShowsSigns NOTIFY showsSignsChanged)

  public:
    /// Everything must outlive the trial.
    struct Services {
        QQuickWindow& window;
        QQmlEngine& engine;
        Localizer& localizer;
        const Appearance& appearance;
        Preferences& preferences;
        Scheduler& scheduler;
        Clock& clock;
        CurrentTimeZone& currentZone;
        const SensoryFeedback& feedback;
    };
    OnboardingTrial(const Services& services, NotchInteractionModel& notch);

    /// Back to the examples, in the present language; there is nothing to undo.
    void reset();

    [[nodiscard]] PanelViewModel* panel() { return &composition_.panel; }
    [[nodiscard]] RemindersViewModel* reminders() { return &composition_.reminders; }
    [[nodiscard]] CalendarViewModel* calendar() { return &composition_.days; }
    [[nodiscard]] QuickAddViewModel* quickAdd() { return &composition_.quickAdd; }
    [[nodiscard]] NewEventViewModel* newEvent() { return &composition_.newEvent; }
    [[nodiscard]] CalendarEditViewModel* calendarEdit() { return &composition_.calendarEdit; }
    [[nodiscard]] EventDetailsViewModel* eventDetails() { return &composition_.eventDetails; }
    [[nodiscard]] ReminderEditViewModel* reminderEdit() { return &composition_.reminderEdit; }
    [[nodiscard]] HistoryViewModel* history() { return &composition_.history; }
    [[nodiscard]] RecapViewModel* recap() { return &composition_.recap; }
    [[nodiscard]] CelebrationViewModel* celebration() { return &composition_.celebration; }
    [[nodiscard]] AnnouncementViewModel* announcement() { return &composition_.announcement; }
    [[nodiscard]] YearRevealViewModel* yearReveal() { return &composition_.yearReveal; }
    [[nodiscard]] OverlayHost* overlays() { return &overlays_; }
    [[nodiscard]] bool isCarrying() const;
    [[nodiscard]] bool showsSigns() const;
    void setShowsSigns(bool shows);

    /// The same commands as on the panel.
    Q_INVOKABLE void addReminder();
    Q_INVOKABLE void undo();

  Q_SIGNALS:
    void isCarryingChanged();
    void showsSignsChanged();
    // Actions of the person.
    void completed();
    void rescheduled();
    void openedMenu();
    void added();
    void tookBack();

  private:
    void flagExamples();

    Services services_;
    NotchInteractionModel& notch_;
    TrialDefaults defaults_;
    Preferences preferences_;
    Localization localization_;
    NotificationCenter notifications_;
    InMemoryEventStore database_;
    OpenReminders openReminders_{database_, services_.scheduler};
    CompletionLedgerRepository ledger_;
    ImmediateExecutor executor_;
    NotchGeometry geometry_;
    PanelComposition composition_;
    OverlayHost overlays_;
    Subscription creations_;
};

}  // namespace kestrant
