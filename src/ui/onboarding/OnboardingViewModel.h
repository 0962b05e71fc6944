#pragma once

#include "cues/SensoryFeedback.h"
#include "notch/NotchInteractionModel.h"

#include <QObject>
#include <QQmlEngine>

#include <functional>

namespace kestrant {

/// The pages of the introduction, and the notch on which things are tried out: it behaves as the panel does,
/// with the same settings and sounds. Thread: main.
class OnboardingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(Page page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(int pageCount READ pageCount CONSTANT)
    /// The introduction was finished before; what is shown now is a look back.
    Q_PROPERTY(bool isRepeated READ isRepeated NOTIFY pageChanged)
    /// The notch to try out.
    Q_PROPERTY(kestrant::NotchInteractionModel* notch READ notch CONSTANT)
    /// Bit by exercise: what has been tried out since the window was shown.
    Q_PROPERTY(int tried READ tried NOTIFY triedChanged)
    /// The first exercise that was not tried out; their number when all were.
    Q_PROPERTY(int current READ current NOTIFY triedChanged)

  public:
    enum class Page { welcome, tutorial, panel, habits, ready };
    Q_ENUM(Page)

    /// In the order in which they are offered.
    enum class Exercise { open, complete, drag, menu, add, undo };
    Q_ENUM(Exercise)
    static constexpr int exerciseCount = int(Exercise::undo) + 1;

    /// Everything must outlive the view model. `touchpadsScrollNaturally` tells whether what is scrolled
    /// follows the fingers rather than the other way round.
    OnboardingViewModel(Scheduler& scheduler, const Preferences& preferences, const SensoryFeedback& feedback,
                        std::function<bool()> touchpadsScrollNaturally = {}, QObject* parent = nullptr);

    [[nodiscard]] Page page() const { return page_; }
    void setPage(Page page);
    [[nodiscard]] static int pageCount() { return int(Page::ready) + 1; }
    [[nodiscard]] bool isRepeated() const { return isRepeated_; }
    [[nodiscard]] NotchInteractionModel* notch() { return &notch_; }
    [[nodiscard]] int tried() const { return int(tried_); }
    [[nodiscard]] int current() const;

    /// Starts over on a page, with nothing tried out.
    void begin(Page page);

    /// An exercise was done. Opening counts of itself.
    void noteTried(Exercise exercise);

    /// The pointer has come over the notch or what hangs from it, or left it.
    Q_INVOKABLE void pointAtNotch(bool inside);
    Q_INVOKABLE void clickNotch();
    /// Scrolling over the notch as an event tells it: 120 is a click of a wheel, positive away from the
    /// person. What belongs to one movement acts once. Wheels do nothing, as on the panel. True when it was
    /// part of a swipe.
    Q_INVOKABLE bool scrollNotch(double angle);
    Q_INVOKABLE void next();
    Q_INVOKABLE void back();
    /// The last page's button.
    Q_INVOKABLE void finish() { Q_EMIT finished(); }

  Q_SIGNALS:
    void pageChanged();
    void triedChanged();
    void finished();

  private:
    /// Silent while pages change, and on those that only show the panel.
    class PageFeedback final : public CuePlayer, public HapticPerformer {
      public:
        explicit PageFeedback(const SensoryFeedback& feedback) : feedback_(feedback) {}
        void prepare() override {}
        void play(Cue cue) override {
            if (isOn)
                feedback_.play(cue);
        }
        void perform(HapticPattern pattern, HapticProfile) override {
            if (isOn)
                feedback_.performHaptic(pattern);
        }
        bool isOn = false;

      private:
        const SensoryFeedback& feedback_;
    };
    void show(Page page);

    Scheduler& scheduler_;
    const Preferences& preferences_;
    std::function<bool()> touchpadsScrollNaturally_;
    PageFeedback pageFeedback_;
    SensoryFeedback feedback_;
    NotchInteractionModel notch_;
    Page page_ = Page::welcome;
    bool isRepeated_ = false;
    unsigned tried_ = 0;
    double swiped_ = 0;
    bool swipeHasActed_ = false;
    ScheduledTask swipeEnd_;
};

}  // namespace kestrant
