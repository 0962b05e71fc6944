#include "ui/recap/AnnouncementViewModel.h"

#include "notch/NotchInteractionModel.h"
#include "ui/recap/RecapViewModel.h"

#include <utility>

namespace kestrant {
namespace {

/// 2026-11-22 00:00 UTC: no earlier version had the recap.
constexpr Instant recapReleased{std::chrono::seconds(1'795'305'600)};
/// The panel is open by then.
constexpr Duration openingTime = std::chrono::milliseconds(700);

}  // namespace

AnnouncementViewModel::AnnouncementViewModel(Preferences& preferences, const Clock& clock,
                                             Scheduler& scheduler, NotchInteractionModel& interaction,
                                             RecapViewModel& recap, QObject* parent)
    : QObject(parent)
    , announcement_(preferences, clock, recapReleased)
    , scheduler_(scheduler)
    , interaction_(interaction)
    , recap_(recap) {
    connect(&interaction, &NotchInteractionModel::phaseChanged, this, &AnnouncementViewModel::follow);
    connect(&recap, &RecapViewModel::isOpenChanged, this, [this] {
        // Whoever has found it by themselves need not be told.
        if (recap_.isOpen() && (isShowing_ || announcement_.isDue()))
            dismiss();
    });
}

void AnnouncementViewModel::follow() {
    if (interaction_.isExpanded()) {
        if (announcement_.isDue())
            presenting_ = scheduler_.after(openingTime, [this] { present(); });
    } else {
        presenting_.cancel();
        setShowing(false);
    }
}

void AnnouncementViewModel::present() {
    // It waits for another opening where something else is shown.
    if (interaction_.isShowingInitialYearReveal() || !interaction_.presentedOverlayIDs().isEmpty() ||
        recap_.isOpen() || !announcement_.isDue())
        return;
    announcement_.notePresented();
    setShowing(true);
}

void AnnouncementViewModel::showRecap() {
    dismiss();
    recap_.open();
}

void AnnouncementViewModel::dismiss() {
    announcement_.noteSeen();
    setShowing(false);
}

void AnnouncementViewModel::neverAgain() {
    announcement_.disable();
    setShowing(false);
}

void AnnouncementViewModel::setShowing(bool isShowing) {
    if (isShowing != std::exchange(isShowing_, isShowing))
        Q_EMIT isShowingChanged();
}

}  // namespace kestrant
