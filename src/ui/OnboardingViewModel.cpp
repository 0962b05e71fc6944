#include "ui/OnboardingViewModel.h"

#include "preferences/Preferences.h"

#include <algorithm>
#include <cmath>

namespace kestrant {
namespace {

/// Of a wheel, as events count it.
constexpr double anglePerClick = 120.0;
/// A swipe acts from so much on, as on the panel.
constexpr double swipeThreshold = anglePerClick / 3;
/// Scrolling that pauses this long was one gesture.
constexpr Duration swipePause = std::chrono::milliseconds(150);

}  // namespace

OnboardingViewModel::OnboardingViewModel(Scheduler& scheduler, const Preferences& preferences,
                                         const Feedback& feedback,
                                         std::function<bool()> touchpadsScrollNaturally, QObject* parent)
    : QObject(parent)
    , scheduler_(scheduler)
    , preferences_(preferences)
    , touchpadsScrollNaturally_(std::move(touchpadsScrollNaturally))
    , notch_(scheduler, preferences, feedback) {
    notch_.setExpansionEnabled(true);
}

void OnboardingViewModel::begin(Page page) {
    isRepeated_ = preferences_.completedInitialOnboarding();
    tried_ = 0;
    notch_.collapse(false);
    page_ = page;
    Q_EMIT triedChanged();
    Q_EMIT pageChanged();
}

void OnboardingViewModel::setPage(Page page) {
    if (page == page_)
        return;
    notch_.collapse(false);
    page_ = page;
    Q_EMIT pageChanged();
}

void OnboardingViewModel::next() {
    setPage(std::min(Page(int(page_) + 1), Page::ready));
}

void OnboardingViewModel::back() {
    setPage(std::max(Page(int(page_) - 1), Page::welcome));
}

void OnboardingViewModel::noteTried(Gesture gesture) {
    const unsigned tried = tried_ | (1U << unsigned(gesture));
    if (tried == tried_)
        return;
    tried_ = tried;
    Q_EMIT triedChanged();
}

void OnboardingViewModel::pointAtNotch(bool inside) {
    if (!inside) {
        notch_.pointerExited();
        return;
    }
    noteTried(Gesture::hover);
    notch_.pointerEntered();
}

void OnboardingViewModel::clickNotch() {
    noteTried(Gesture::click);
    if (notch_.isExpanded())
        notch_.collapse(notch_.pointerIsInside());
    else
        notch_.expand();
}

void OnboardingViewModel::scrollNotch(double angle) {
    // Fingers never move by whole clicks.
    const bool isWheel = std::fmod(angle, anglePerClick) == 0;
    const bool isNatural = !isWheel && touchpadsScrollNaturally_ && touchpadsScrollNaturally_();
    swipeEnd_ = scheduler_.after(swipePause, [this] {
        swiped_ = 0;
        swipeHasActed_ = false;
    });
    if (swipeHasActed_)
        return;
    swiped_ += isNatural ? angle : -angle;
    if (std::abs(swiped_) < swipeThreshold)
        return;
    swipeHasActed_ = true;
    if (swiped_ > 0) {
        noteTried(Gesture::swipeDown);
        notch_.expand();
    } else {
        noteTried(Gesture::swipeUp);
        notch_.collapse(notch_.pointerIsInside());
    }
}

void OnboardingViewModel::press(Gesture shortcut) {
    noteTried(shortcut);
    notch_.expand();
    Q_EMIT pressed(shortcut);
}

}  // namespace kestrant
