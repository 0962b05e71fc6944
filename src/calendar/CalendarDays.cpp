#include "calendar/CalendarDays.h"

#include "calendar/CalendarStoreServices.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/TimeZone.h"

#include <algorithm>
#include <utility>

namespace kestrant {

void CalendarDays::show(const std::optional<QList<CalendarDayGroup>>& groups, Instant moment,
                        CalendarMode mode) {
    moment_ = moment;
    mode_ = mode;
    if (groups)
        setGroups(*groups);
    waitForChange();
}

void CalendarDays::setGroups(const QList<CalendarDayGroup>& groups) {
    // Letting go of many rows can take longer than a frame.
    services_.executor.run([former = std::exchange(groups_, groups)] {});
    Q_EMIT changed();
}

void CalendarDays::removeRow(const QString& id) {
    if (const QList<CalendarDayGroup> groups = withoutRow(groups_, id, mode_); groups != groups_)
        setGroups(groups);
}

void CalendarDays::waitForChange() {
    const TimeZone zone = services_.currentZone.zone();
    const Instant midnight = zone.startOfDay(zone.dayOf(moment_).addDays(1));
    const Instant change = nextMomentOfChange(groups_, moment_).value_or(midnight);
    changeTask_ = services_.scheduler.after(
        std::max(std::min(change, midnight) - services_.clock.now(), Duration::zero()),
        [this] { catchUp(); });
}

void CalendarDays::catchUp() {
    const Instant now = services_.clock.now();
    if (!services_.currentZone.zone().isSameDay(now, moment_)) {
        Q_EMIT dayBegan();
        return;
    }
    moment_ = now;
    if (const QList<CalendarDayGroup> groups = atMoment(groups_, now, mode_); groups != groups_)
        setGroups(groups);
    waitForChange();
}

}  // namespace kestrant
