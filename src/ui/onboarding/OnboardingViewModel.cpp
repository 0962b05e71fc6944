#include "ui/onboarding/OnboardingViewModel.h"

#include "preferences/Preferences.h"

#include <algorithm>
#include <cmath>
#include <utility>

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
                                         const SensoryFeedback& feedback,
                                         std::function<bool()> touchpadsScrollNaturally, QObject* parent)
    : QObject(parent)
    , scheduler_(scheduler)
    , preferences_(preferences)
    , touchpadsScrollNaturally_(std::move(touchpadsScrollNaturally))
    , pageFeedback_(feedback)
    , feedback_(preferences, pageFeedback_, pageFeedback_)
    , notch_(scheduler, preferences, feedback_) {
    notch_.setExpansionEnabled(true);
    connect(&notch_, &NotchInteractionModel::phaseChanged, this, [this] {
        if (notch_.isExpanded() && page_ == Page::tutorial)
            noteTried(Exercise::open);
    });
}

int OnboardingViewModel::current() const {
    int exercise = 0;
    while (exercise < exerciseCount && ((tried_ >> exercise) & 1U))
        ++exercise;
    return exercise;
}

void OnboardingViewModel::begin(Page page) {
    isRepeated_ = preferences_.completedInitialOnboarding();
    tried_ = 0;
    notch_.pointerExited();
    show(page);
    Q_EMIT triedChanged();
}

void OnboardingViewModel::show(Page page) {
    page_ = page;
    pageFeedback_.isOn = false;
    // Two pages have the open panel for their picture.
    if (page == Page::welcome || page == Page::panel)
        notch_.expand();
    else
        notch_.collapse(false);
    pageFeedback_.isOn = page == Page::tutorial || page == Page::habits;
    Q_EMIT pageChanged();
}

void OnboardingViewModel::setPage(Page page) {
    if (page != page_)
        show(page);
}

void OnboardingViewModel::next() {
    setPage(std::min(Page(int(page_) + 1), Page::ready));
}

void OnboardingViewModel::back() {
    setPage(std::max(Page(int(page_) - 1), Page::welcome));
}

void OnboardingViewModel::noteTried(Exercise exercise) {
    const unsigned tried = tried_ | (1U << unsigned(exercise));
    if (std::exchange(tried_, tried) != tried)
        Q_EMIT triedChanged();
}

void OnboardingViewModel::pointAtNotch(bool inside) {
    if (inside)
        notch_.pointerEntered();
    else
        notch_.pointerExited();
}

void OnboardingViewModel::clickNotch() {
    if (notch_.isExpanded())
        notch_.collapse(notch_.pointerIsInside());
    else
        notch_.expand();
}

bool OnboardingViewModel::scrollNotch(double angle) {
    // Fingers never move by whole clicks.
    if (std::fmod(angle, anglePerClick) == 0)
        return false;
    swipeEnd_ = scheduler_.after(swipePause, [this] {
        swiped_ = 0;
        swipeHasActed_ = false;
    });
    if (swipeHasActed_)
        return true;
    const bool isNatural = touchpadsScrollNaturally_ && touchpadsScrollNaturally_();
    swiped_ += isNatural ? angle : -angle;
    if (std::abs(swiped_) < swipeThreshold)
        return true;
    swipeHasActed_ = true;
    if (swiped_ > 0)
        notch_.expand();
    else
        notch_.collapse(notch_.pointerIsInside());
    return true;
}

}  // namespace kestrant
