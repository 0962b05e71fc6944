#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"

#include <QObject>

#include <functional>
#include <memory>

class QQmlEngine;
class QQuickView;

namespace kestrant {

class Appearance;
class SensoryFeedback;
class Localizer;
class OnboardingTrial;
class OnboardingViewModel;
class Preferences;
class SettingsViewModel;

/// Owns the window that introduces the program: what it is, its gestures tried out on a drawn notch, the
/// first choices. Nothing of the window exists before it is first shown. Thread: main.
class OnboardingWindowController : public QObject {
    Q_OBJECT

  public:
    enum class Page { welcome, tutorial };

    struct Services {
        /// The engine that the panel's views are made in, with its language and appearance.
        QQmlEngine& engine;
        Localizer& localizer;
        Appearance& appearance;
        Preferences& preferences;
        SettingsViewModel& settings;
        Scheduler& scheduler;
        Clock& clock;
        CurrentTimeZone& currentZone;
        const SensoryFeedback& feedback;
        /// Whether what is scrolled follows the fingers on a touchpad; empty where that is not the way.
        std::function<bool()> touchpadsScrollNaturally = {};
    };

    /// Everything must outlive the controller. `openApp` is called when the person finishes, whether or not
    /// it is the first time; the window goes away afterwards.
    OnboardingWindowController(const Services& services, std::function<void()> openApp,
                               QObject* parent = nullptr);
    ~OnboardingWindowController() override;

    /// Shows the window on a page, in the middle of the screen, in front of everything and with the keyboard
    /// focus; also when it is shown already, or miniaturised.
    void show(Page page);
    /// Brings the window, which was shown before, to the front as it is.
    void activate();
    /// Takes the window off the screen, as if it had been finished.
    void orderOut();
    [[nodiscard]] bool isVisible() const;
    // Null before the first show().
    [[nodiscard]] QQuickView* window() const { return window_.get(); }
    [[nodiscard]] OnboardingViewModel* model() const { return model_.get(); }
    [[nodiscard]] OnboardingTrial* trial() const { return trial_.get(); }

  Q_SIGNALS:
    /// The person closed the window without finishing; activate() brings it back as it was.
    void dismissed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void createWindow();
    void createTrial();
    void center();
    /// Rounds the window's corners where they cannot be transparent.
    void cutCorners();
    void finish();

    Services services_;
    std::function<void()> openApp_;
    std::unique_ptr<OnboardingViewModel> model_;
    std::unique_ptr<QQuickView> window_;
    std::unique_ptr<OnboardingTrial> trial_;
};

}  // namespace kestrant
