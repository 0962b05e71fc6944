#pragma once

#include "foundation/Scheduler.h"
#include "services/FeatureAnnouncement.h"

#include <QObject>
#include <QQmlEngine>

namespace kestrant {

class NotchInteractionModel;
class RecapViewModel;

/// The card that tells of the recap after an update, a moment after the panel has opened. Thread: main.
class AnnouncementViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isShowing READ isShowing NOTIFY isShowingChanged)

  public:
    /// Everything must outlive the view model.
    AnnouncementViewModel(Preferences& preferences, const Clock& clock, Scheduler& scheduler,
                          NotchInteractionModel& interaction, RecapViewModel& recap,
                          QObject* parent = nullptr);

    /// To be called at every start of the program.
    void noteStart() { announcement_.noteStart(); }

    [[nodiscard]] bool isShowing() const { return isShowing_; }
    /// Opens the recap; that has been seen then.
    Q_INVOKABLE void showRecap();
    Q_INVOKABLE void dismiss();
    Q_INVOKABLE void neverAgain();

  Q_SIGNALS:
    void isShowingChanged();

  private:
    void follow();
    void present();
    void setShowing(bool isShowing);

    FeatureAnnouncement announcement_;
    Scheduler& scheduler_;
    NotchInteractionModel& interaction_;
    RecapViewModel& recap_;
    bool isShowing_ = false;
    ScheduledTask presenting_;
};

}  // namespace kestrant
