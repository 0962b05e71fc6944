#pragma once

#include "notch/NotchInteractionModel.h"

#include <QObject>
#include <QQmlEngine>

#include <functional>

namespace kestrant {

/// The pages of the introduction, and the drawn notch on which its gestures are tried out: it behaves as the
/// panel does, with the same settings and sounds. Thread: main.
class OnboardingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(Page page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(int pageCount READ pageCount CONSTANT)
    /// The introduction was finished before; what is shown now is a look back.
    Q_PROPERTY(bool isRepeated READ isRepeated NOTIFY pageChanged)
    /// The drawn notch.
    Q_PROPERTY(NotchInteractionModel* notch READ notch CONSTANT)
    /// What has been tried out since the window was shown.
    Q_PROPERTY(bool hovered READ hovered NOTIFY triedChanged)
    Q_PROPERTY(bool clicked READ clicked NOTIFY triedChanged)
    Q_PROPERTY(bool swipedDown READ swipedDown NOTIFY triedChanged)
    Q_PROPERTY(bool swipedUp READ swipedUp NOTIFY triedChanged)
    Q_PROPERTY(bool addedReminder READ addedReminder NOTIFY triedChanged)
    Q_PROPERTY(bool searched READ searched NOTIFY triedChanged)
    Q_PROPERTY(bool undone READ undone NOTIFY triedChanged)
    Q_PROPERTY(bool triedAll READ triedAll NOTIFY triedChanged)

  public:
    enum class Page { welcome, tutorial, panel, habits, ready };
    Q_ENUM(Page)

    enum class Gesture { hover, click, swipeDown, swipeUp, newReminder, find, undo };
    Q_ENUM(Gesture)

    /// Everything must outlive the view model. `touchpadsScrollNaturally` tells whether what is scrolled
    /// follows the fingers rather than the other way round.
    OnboardingViewModel(Scheduler& scheduler, const Preferences& preferences, const Feedback& feedback,
                        std::function<bool()> touchpadsScrollNaturally = {}, QObject* parent = nullptr);

    [[nodiscard]] Page page() const { return page_; }
    void setPage(Page page);
    [[nodiscard]] static int pageCount() { return int(Page::ready) + 1; }
    [[nodiscard]] bool isRepeated() const { return isRepeated_; }
    [[nodiscard]] NotchInteractionModel* notch() { return &notch_; }
    [[nodiscard]] bool hovered() const { return hasTried(Gesture::hover); }
    [[nodiscard]] bool clicked() const { return hasTried(Gesture::click); }
    [[nodiscard]] bool swipedDown() const { return hasTried(Gesture::swipeDown); }
    [[nodiscard]] bool swipedUp() const { return hasTried(Gesture::swipeUp); }
    [[nodiscard]] bool addedReminder() const { return hasTried(Gesture::newReminder); }
    [[nodiscard]] bool searched() const { return hasTried(Gesture::find); }
    [[nodiscard]] bool undone() const { return hasTried(Gesture::undo); }
    [[nodiscard]] bool triedAll() const { return tried_ == (2U << unsigned(Gesture::undo)) - 1; }

    /// Starts over on a page, with nothing tried out.
    void begin(Page page);

    /// The pointer has come over the drawn notch or left it.
    Q_INVOKABLE void pointAtNotch(bool inside);
    Q_INVOKABLE void clickNotch();
    /// Scrolling over the drawn notch as an event tells it: 120 is a click of a wheel, positive away from the
    /// person. What belongs to one movement acts once.
    Q_INVOKABLE void scrollNotch(double angle);
    /// A shortcut was pressed: `newReminder`, `find` or `undo`.
    Q_INVOKABLE void press(kestrant::OnboardingViewModel::Gesture shortcut);
    Q_INVOKABLE void next();
    Q_INVOKABLE void back();
    /// The last page's button.
    Q_INVOKABLE void finish() { Q_EMIT finished(); }

  Q_SIGNALS:
    void pageChanged();
    void triedChanged();
    void pressed(kestrant::OnboardingViewModel::Gesture shortcut);
    void finished();

  private:
    [[nodiscard]] bool hasTried(Gesture gesture) const { return (tried_ >> int(gesture)) & 1U; }
    void noteTried(Gesture gesture);

    Scheduler& scheduler_;
    const Preferences& preferences_;
    std::function<bool()> touchpadsScrollNaturally_;
    NotchInteractionModel notch_;
    Page page_ = Page::welcome;
    bool isRepeated_ = false;
    unsigned tried_ = 0;
    double swiped_ = 0;
    bool swipeHasActed_ = false;
    ScheduledTask swipeEnd_;
};

}  // namespace kestrant
