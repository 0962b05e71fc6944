#include "calendar/CalendarStore.h"

#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "foundation/TimeZone.h"

#include <utility>

namespace kestrant {

CalendarStore::CalendarStore(CalendarStoreServices services, QObject* parent)
    : QObject(parent)
    , services_(std::move(services)) {
    connect(&days_, &CalendarDays::changed, this, &CalendarStore::dayGroupsChanged);
    connect(&loader_, &CalendarLoader::accessStateChanged, this, &CalendarStore::accessStateChanged);
    connect(&loader_, &CalendarLoader::isCutChanged, this, &CalendarStore::shortageChanged);
    connect(&loader_, &CalendarLoader::isLoadingChanged, this, &CalendarStore::isLoadingChanged);
    connect(&loader_, &CalendarLoader::showsAllEventsChanged, this, &CalendarStore::showsAllEventsChanged);
    connect(&loader_, &CalendarLoader::isLoadingMoreEventsChanged, this,
            &CalendarStore::isLoadingMoreEventsChanged);
    connect(&loader_, &CalendarLoader::needsManualLoadChanged, this, &CalendarStore::needsManualLoadChanged);
    connect(&recorder_, &RecordedEventChanges::outdated, &loader_, &CalendarLoader::reload);
    connect(&writer_, &CalendarWriter::removed, &days_, &CalendarDays::removeRow);
}

CalendarStore::~CalendarStore() = default;

QList<CalendarEventItem> CalendarStore::upcomingEvents() const {
    QList<CalendarEventItem> result;
    for (const CalendarDayGroup& group : dayGroups())
        result += group.events;
    return result;
}

std::optional<CalendarEventItem> CalendarStore::nextEvent() const {
    return kestrant::nextEvent(dayGroups(), services_.clock.now());
}

std::optional<TextPair> CalendarStore::shortage() const {
    if (!loader_.isCut())
        return std::nullopt;
    return text("There is more than can be shown: what is farthest from today is left out.",
                "Il y a plus que ce qui peut être affiché : le plus éloigné d’aujourd’hui est omis.");
}

std::optional<Instant> CalendarStore::loadedCalendarStart() const {
    const auto& range = loader_.loadedCalendarRange();
    return range ? std::optional(services_.currentZone.zone().startOfDay(range->first)) : std::nullopt;
}

std::optional<Instant> CalendarStore::loadedCalendarEnd() const {
    const auto& range = loader_.loadedCalendarRange();
    return range ? std::optional(services_.currentZone.zone().startOfDay(range->end)) : std::nullopt;
}

void CalendarStore::systemDidWake() {
    if (hasLoaded() && !isLoading())
        days_.catchUp();
}

}  // namespace kestrant
