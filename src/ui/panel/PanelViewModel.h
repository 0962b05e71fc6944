#pragma once

#include "foundation/Subscription.h"
#include "notch/NotchContainerShape.h"
#include "ui/panel/RestingViewModel.h"

#include <QObject>
#include <QQmlEngine>
#include <QRectF>
#include <QString>

#include <vector>

namespace kestrant {

class SensoryFeedback;
class NotchGeometry;
class NotchInteractionModel;
class NotificationCenter;
class Preferences;
class ReminderStore;

/// State of the panel's outline and frame: the phase, the sizes, the hints beside the camera. Thread:
/// main.
class PanelViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    /// 0 idle, 1 hovering, 2 expanded.
    Q_PROPERTY(int phase READ phase NOTIFY phaseChanged)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY phaseChanged)
    // The outline of the present phase, in points.
    Q_PROPERTY(double shapeWidth READ shapeWidth NOTIFY shapeChanged)
    Q_PROPERTY(double shapeHeight READ shapeHeight NOTIFY shapeChanged)
    Q_PROPERTY(double earRadius READ earRadius NOTIFY shapeChanged)
    Q_PROPERTY(double bottomRadius READ bottomRadius NOTIFY shapeChanged)
    Q_PROPERTY(double expandedWidth READ expandedWidth NOTIFY shapeChanged)
    Q_PROPERTY(double expandedHeight READ expandedHeight NOTIFY shapeChanged)
    Q_PROPERTY(double restingHeight READ restingHeight NOTIFY shapeChanged)
    Q_PROPERTY(double hoverWidth READ hoverWidth NOTIFY shapeChanged)
    Q_PROPERTY(double cameraSafeWidth READ cameraSafeWidth NOTIFY shapeChanged)
    /// The screen has a camera at its upper edge, of which content keeps free.
    Q_PROPERTY(bool hasCamera READ hasCamera NOTIFY shapeChanged)
    /// Open reminders due today; shown left of the camera while hovering.
    Q_PROPERTY(int dueTodayCount READ dueTodayCount NOTIFY dueTodayCountChanged)
    /// Start of the next event, such as "14:00"; shown right of the camera while hovering. Empty for none.
    Q_PROPERTY(QString nextEventText READ nextEventText NOTIFY nextEventTextChanged)
    /// The content of the resting notch.
    Q_PROPERTY(kestrant::RestingViewModel* resting READ resting CONSTANT)
    /// Modules that are switched on.
    Q_PROPERTY(bool showReminders READ showReminders NOTIFY modulesChanged)
    Q_PROPERTY(bool showCalendar READ showCalendar NOTIFY modulesChanged)
    /// Which of both stands on the left, and how much of the width it has, 0 to 1.
    Q_PROPERTY(bool calendarFirst READ calendarFirst NOTIFY modulesChanged)
    Q_PROPERTY(double firstShare READ firstShare NOTIFY modulesChanged)
    /// Background of the expanded panel: "glass" or "black"; an unknown name is "glass".
    Q_PROPERTY(QString material READ material NOTIFY materialChanged)
    /// The tip about the new-reminder shortcut, which follows the introduction, is still to be shown.
    Q_PROPERTY(bool newReminderTipPending READ newReminderTipPending NOTIFY newReminderTipPendingChanged)

  public:
    /// Everything must outlive the view model.
    PanelViewModel(NotchInteractionModel& interaction, NotchGeometry& geometry, ReminderStore& reminders,
                   Preferences& preferences, NotificationCenter& notifications,
                   const SensoryFeedback& feedback, QObject* parent = nullptr);

    [[nodiscard]] int phase() const;
    [[nodiscard]] bool isExpanded() const;
    [[nodiscard]] double shapeWidth() const;
    [[nodiscard]] double shapeHeight() const;
    [[nodiscard]] double earRadius() const;
    [[nodiscard]] double bottomRadius() const;
    [[nodiscard]] double expandedWidth() const;
    [[nodiscard]] double expandedHeight() const;
    [[nodiscard]] double restingHeight() const;
    [[nodiscard]] double hoverWidth() const;
    [[nodiscard]] double cameraSafeWidth() const;
    [[nodiscard]] bool hasCamera() const;
    [[nodiscard]] int dueTodayCount() const { return dueTodayCount_; }
    [[nodiscard]] const QString& nextEventText() const { return nextEventText_; }
    void setNextEventText(const QString& text);
    [[nodiscard]] RestingViewModel* resting() { return &resting_; }
    [[nodiscard]] bool showReminders() const;
    [[nodiscard]] bool showCalendar() const;
    [[nodiscard]] bool calendarFirst() const;
    [[nodiscard]] double firstShare() const;
    [[nodiscard]] QString material() const;
    [[nodiscard]] bool newReminderTipPending() const;

    /// The search field has gained or lost the keyboard focus; while it has it the panel stays open.
    Q_INVOKABLE void setSearchIsFocused(bool focused);
    /// Folds the panel, as Escape does when nothing else is left to leave.
    Q_INVOKABLE void fold();
    /// A message appears below the panel, or has gone. One that appears while the pointer is elsewhere keeps
    /// the panel open, so that it is seen.
    Q_INVOKABLE void setShowsToast(bool shows);
    /// The tip was read, or is not needed any more.
    Q_INVOKABLE void finishNewReminderTip();
    /// A card is being carried; while that lasts the panel stays open. `calendar` is where the days are that
    /// it can be let go on, in the panel, in points with y downwards.
    Q_INVOKABLE void beginReminderDrag(const QString& id, const QRectF& calendar);
    /// The card has come over a day.
    Q_INVOKABLE void snapReminderDrag();
    /// `dropped`: on a day, rather than to go back where it came from.
    Q_INVOKABLE void endReminderDrag(const QString& id, bool dropped);

  Q_SIGNALS:
    /// A carried card was let go where it stays.
    void reminderDropped();
    void phaseChanged();
    void shapeChanged();
    void dueTodayCountChanged();
    void nextEventTextChanged();
    void modulesChanged();
    void materialChanged();
    void newReminderTipPendingChanged();
    /// Ctrl+N and Ctrl+F, or whoever posts their notifications; the panel is expanded by then, if it may be.
    void newReminderRequested();
    void findReminderRequested();

  private:
    void updateDueTodayCount();
    void updateRestingWidth();
    void request(void (PanelViewModel::*signal)());
    [[nodiscard]] NotchContainerShape shape() const;

    NotchInteractionModel& interaction_;
    NotchGeometry& geometry_;
    ReminderStore& reminders_;
    Preferences& preferences_;
    const SensoryFeedback& feedback_;
    RestingViewModel resting_;
    std::vector<Subscription> subscriptions_;
    int dueTodayCount_ = 0;
    QString nextEventText_;
};

}  // namespace kestrant
