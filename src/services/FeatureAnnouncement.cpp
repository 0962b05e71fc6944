#include "services/FeatureAnnouncement.h"

#include "foundation/Scheduler.h"
#include "preferences/Preferences.h"

#include <chrono>

namespace kestrant {
namespace {

double seconds(Duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

FeatureAnnouncement::FeatureAnnouncement(Preferences& preferences, const Clock& clock, Instant released)
    : preferences_(preferences)
    , clock_(clock)
    , released_(secondsSinceReferenceDate(released)) {}

void FeatureAnnouncement::noteStart() {
    if (preferences_.announcementInstallationDate() != 0.0)
        return;
    preferences_.announcementInstallationDate.set(preferences_.completedInitialOnboarding()
                                                      ? released_ - seconds(leastDistance)
                                                      : secondsSinceReferenceDate(clock_.now()));
}

int FeatureAnnouncement::presentedCount() const {
    return preferences_.announcementLastPresentedDate() < released_
               ? 0
               : preferences_.announcementPresentedCount();
}

bool FeatureAnnouncement::isDue() const {
    const double now = secondsSinceReferenceDate(clock_.now());
    const double installed = preferences_.announcementInstallationDate();
    const double last = preferences_.announcementLastPresentedDate();
    return !preferences_.announcementDisabled() && installed != 0.0 && installed < released_ &&
           now - installed >= seconds(leastDistance) && presentedCount() < mostPresentations &&
           (last < released_ || now - last >= seconds(leastDistance));
}

void FeatureAnnouncement::notePresented() {
    preferences_.announcementPresentedCount.set(presentedCount() + 1);
    preferences_.announcementLastPresentedDate.set(secondsSinceReferenceDate(clock_.now()));
}

void FeatureAnnouncement::noteSeen() {
    preferences_.announcementPresentedCount.set(mostPresentations);
    preferences_.announcementLastPresentedDate.set(secondsSinceReferenceDate(clock_.now()));
}

void FeatureAnnouncement::disable() {
    preferences_.announcementDisabled.set(true);
}

}  // namespace kestrant
