#include "calendar/CalendarFetch.h"
#include "calendar/CalendarStorePrivate.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/NotificationCenter.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using AccessKind = CalendarAccessState::Kind;

constexpr Duration reloadDelay = std::chrono::milliseconds(300);
constexpr int initialYears = 1;
constexpr int yearsPerChunk = 3;

FetchResult resultOf(const FetchRequest& request, const CalendarItems& items, const CalendarPresent& present,
                     const QList<CalendarDayGroup>& onShow) {
    FetchResult result;
    const DayRange days = daysThatFit(items, request.shown, present);
    result.groups = groupByDay(items, days, request.mode, present);
    result.isEmpty = result.groups.isEmpty();
    result.isCut = items.isCut || !(days == request.shown);
    if (request.isExtension) {
        const QList<CalendarDayGroup> all = merged(onShow, result.groups, present.locale);
        result.groups = groupsThatFit(all, present.calendar.dayOf(present.now));
        result.isEmpty = result.isEmpty || result.groups.size() <= onShow.size();
        result.isCut = result.isCut || result.groups.size() < all.size();
    }
    result.isChange = result.groups != onShow;
    // Without a change the new rows are let go of here and not on the main thread.
    if (!result.isChange)
        result.groups = onShow;
    result.moment = present.now;
    return result;
}

/// Whether the calendar knows every day of the range.
bool isRepresentable(const DayRange& days) {
    return days.first.year() >= 1 && days.end.year() <= 9999;
}

}  // namespace

void CalendarStore::Private::observe() {
    observers.push_back(services.eventStore.observeChanges(
        [this] { reloadDebounceTask = services.scheduler.after(reloadDelay, [this] { reload(); }); }));
    for (const char* notification : {eventCreatedNotification, eventChangedNotification})
        observers.push_back(
            services.notifications.observe(QString::fromLatin1(notification), [this] { reload(); }));
    observers.push_back(services.preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::showRemindersInCalendar || key == preferenceKeys::language)
            reload();
    }));
    observers.push_back(services.calendar.observeChanges([this] {
        if (loadedCalendarRange)
            Q_EMIT q.loadedCalendarRangeChanged();
        reload();
    }));
}

CalendarPresent CalendarStore::Private::present() const {
    return {services.clock.now(), services.calendar.calendar(), services.preferences.language(),
            services.locale()};
}

void CalendarStore::Private::requestAccess() {
    if (accessState.kind == AccessKind::requesting)
        return;
    const auto enter = [this](AccessKind kind) {
        publish(accessState, {kind, {}}, &CalendarStore::accessStateChanged);
    };
    switch (services.eventStore.authorizationStatus(EKEntityType::event)) {
    case EKAuthorizationStatus::notDetermined:
        enter(AccessKind::requesting);
        services.eventStore.requestFullAccessToEvents(
            whileAlive([generation = accessGeneration](Private& self, bool granted,
                                                       const std::optional<EKError>& error) {
                if (generation == self.accessGeneration)
                    self.accessAnswered(granted, error);
            }));
        break;
    case EKAuthorizationStatus::fullAccess:
        enter(AccessKind::authorized);
        reload();
        break;
    case EKAuthorizationStatus::denied:
        enter(AccessKind::denied);
        break;
    case EKAuthorizationStatus::restricted:
        enter(AccessKind::restricted);
        break;
    }
}

void CalendarStore::Private::accessAnswered(bool granted, const std::optional<EKError>& error) {
    CalendarAccessState state{AccessKind::denied, {}};
    if (granted)
        state.kind = AccessKind::authorized;
    else if (error)
        state = CalendarAccessState::failed(error->message);
    else if (services.eventStore.authorizationStatus(EKEntityType::event) ==
             EKAuthorizationStatus::restricted)
        state.kind = AccessKind::restricted;
    publish(accessState, state, &CalendarStore::accessStateChanged);
    reload();
}

void CalendarStore::Private::databaseWasExchanged() {
    const bool wasRequested = accessState.kind != AccessKind::notDetermined;
    ++accessGeneration;
    ++*fetchGeneration;
    publish(accessState, {}, &CalendarStore::accessStateChanged);
    publish(isLoading, false, &CalendarStore::isLoadingChanged);
    publish(isLoadingMoreEvents, false, &CalendarStore::isLoadingMoreEventsChanged);
    if (wasRequested)
        requestAccess();
}

void CalendarStore::Private::reload() {
    if (!isAuthorized())
        return;
    const CalendarPresent circumstances = present();
    const QDate today = circumstances.calendar.dayOf(circumstances.now);
    FetchRequest request{{today.addDays(-1), today.addDays(7)}, compactDays(circumstances)};
    if (showsAllEvents) {
        request.mode = CalendarMode::full;
        request.shown = loadedCalendarRange.value_or(
            DayRange{today.addYears(-initialYears), today.addYears(initialYears)});
        request.fetched = request.shown;
    }
    if (!isRepresentable(request.fetched))
        return;
    if (showsAllEvents)
        publish(loadedCalendarRange, request.shown, &CalendarStore::loadedCalendarRangeChanged);
    publish(isLoading, true, &CalendarStore::isLoadingChanged);
    changeTask.cancel();
    fetch(request, [mode = request.mode](Private& self, const FetchResult& result) {
        self.hasLoaded = true;
        self.publish(self.isCut, result.isCut, &CalendarStore::shortageChanged);
        self.fetched(result, mode);
        self.publish(self.isLoading, false, &CalendarStore::isLoadingChanged);
    });
    // An extension that is overtaken is part of this load.
    publish(isLoadingMoreEvents, false, &CalendarStore::isLoadingMoreEventsChanged);
}

void CalendarStore::Private::loadMore(bool earlier) {
    if (!isAuthorized() || !showsAllEvents || isLoading || isLoadingMoreEvents || !loadedCalendarRange)
        return;
    DayRange range = *loadedCalendarRange;
    DayRange chunk;
    if (earlier) {
        chunk = {range.first.addYears(-yearsPerChunk), range.first};
        range.first = chunk.first;
    } else {
        chunk = {range.end, range.end.addYears(yearsPerChunk)};
        range.end = chunk.end;
    }
    if (!isRepresentable(chunk))
        return;
    bool Private::*const needsManualLoad =
        earlier ? &Private::needsManualLoadEarlier : &Private::needsManualLoadLater;
    publish(loadedCalendarRange, range, &CalendarStore::loadedCalendarRangeChanged);
    publish(this->*needsManualLoad, false, &CalendarStore::needsManualLoadChanged);
    publish(isLoadingMoreEvents, true, &CalendarStore::isLoadingMoreEventsChanged);
    fetch({chunk, chunk, CalendarMode::full, true},
          [needsManualLoad](Private& self, const FetchResult& result) {
              self.publish(self.isCut, self.isCut || result.isCut, &CalendarStore::shortageChanged);
              self.fetched(result, CalendarMode::full);
              self.publish(self.*needsManualLoad, result.isEmpty, &CalendarStore::needsManualLoadChanged);
              self.publish(self.isLoadingMoreEvents, false, &CalendarStore::isLoadingMoreEventsChanged);
          });
}

void CalendarStore::Private::fetch(const FetchRequest& request, const FetchDone& done) {
    const int generation = ++*fetchGeneration;
    const CalendarPresent circumstances = present();
    const auto end = whileAlive([generation, done](Private& self, const FetchResult& result) {
        if (*self.fetchGeneration == generation)
            done(self, result);
    });
    const auto group = [generation, request, circumstances, end](Private& self, CalendarItems&& items) {
        if (*self.fetchGeneration != generation)
            return;
        const auto read = std::make_shared<const CalendarItems>(std::move(items));
        self.services.executor.run([generation, request, circumstances, end, read, onShow = self.dayGroups,
                                    latest = self.fetchGeneration, &scheduler = self.services.scheduler] {
            if (*latest != generation)
                return;
            scheduler.post([end, result = resultOf(request, *read, circumstances, onShow)] { end(result); });
        });
    };
    fetchCalendarItems(circumstances.calendar.startOfDay(request.fetched.first),
                       circumstances.calendar.startOfDay(request.fetched.end), services.eventStore,
                       services.preferences.showRemindersInCalendar(), circumstances.calendar,
                       whileAlive(group));
}

void CalendarStore::Private::fetched(const FetchResult& result, CalendarMode mode) {
    shownMoment = result.moment;
    shownMode = mode;
    waitForChange();
    if (result.isChange)
        show(result.groups);
}

void CalendarStore::Private::show(const QList<CalendarDayGroup>& groups) {
    // Letting go of many rows can take longer than a frame.
    services.executor.run([former = std::exchange(dayGroups, groups)] {});
    Q_EMIT q.dayGroupsChanged();
}

void CalendarStore::Private::waitForChange() {
    const ZoneCalendar calendar = services.calendar.calendar();
    const Instant midnight = calendar.startOfDay(calendar.dayOf(shownMoment).addDays(1));
    const Instant change = nextMomentOfChange(dayGroups, shownMoment).value_or(midnight);
    changeTask = services.scheduler.after(
        std::max(std::min(change, midnight) - services.clock.now(), Duration::zero()), [this] { catchUp(); });
}

void CalendarStore::Private::catchUp() {
    if (!hasLoaded || isLoading)
        return;
    const Instant now = services.clock.now();
    if (!services.calendar.calendar().isSameDay(now, shownMoment)) {
        reload();
        return;
    }
    shownMoment = now;
    const QList<CalendarDayGroup> groups = atMoment(dayGroups, now, shownMode);
    if (groups != dayGroups)
        show(groups);
    waitForChange();
}

CalendarStore::CalendarStore(CalendarStoreServices services, QObject* parent)
    : QObject(parent)
    , d_(std::make_shared<Private>(*this, std::move(services))) {
    d_->observe();
}

CalendarStore::~CalendarStore() = default;

const CalendarAccessState& CalendarStore::accessState() const {
    return d_->accessState;
}

void CalendarStore::requestAccess() {
    d_->requestAccess();
}

void CalendarStore::databaseWasExchanged() {
    d_->databaseWasExchanged();
}

const QList<CalendarDayGroup>& CalendarStore::dayGroups() const {
    return d_->dayGroups;
}

QList<CalendarEventItem> CalendarStore::upcomingEvents() const {
    QList<CalendarEventItem> result;
    for (const CalendarDayGroup& group : d_->dayGroups)
        result += group.events;
    return result;
}

std::optional<CalendarEventItem> CalendarStore::nextEvent() const {
    return kestrant::nextEvent(d_->dayGroups, d_->services.clock.now());
}

std::optional<TextPair> CalendarStore::shortage() const {
    if (!d_->isCut)
        return std::nullopt;
    return text("There is more than can be shown: what is farthest from today is left out.",
                "Il y a plus que ce qui peut être affiché : le plus éloigné d’aujourd’hui est omis.");
}

bool CalendarStore::isLoading() const {
    return d_->isLoading;
}

bool CalendarStore::hasLoaded() const {
    return d_->hasLoaded;
}

bool CalendarStore::showsAllEvents() const {
    return d_->showsAllEvents;
}

void CalendarStore::setShowsAllEvents(bool value) {
    if (value == d_->showsAllEvents)
        return;
    d_->showsAllEvents = value;
    d_->publish(d_->loadedCalendarRange, std::nullopt, &CalendarStore::loadedCalendarRangeChanged);
    d_->publish(d_->isLoadingMoreEvents, false, &CalendarStore::isLoadingMoreEventsChanged);
    d_->publish(d_->needsManualLoadEarlier, false, &CalendarStore::needsManualLoadChanged);
    d_->publish(d_->needsManualLoadLater, false, &CalendarStore::needsManualLoadChanged);
    Q_EMIT showsAllEventsChanged();
    d_->reload();
}

void CalendarStore::loadMore(bool earlier) {
    d_->loadMore(earlier);
}

bool CalendarStore::isLoadingMoreEvents() const {
    return d_->isLoadingMoreEvents;
}

std::optional<Instant> CalendarStore::loadedCalendarStart() const {
    if (!d_->loadedCalendarRange)
        return std::nullopt;
    return d_->services.calendar.calendar().startOfDay(d_->loadedCalendarRange->first);
}

std::optional<Instant> CalendarStore::loadedCalendarEnd() const {
    if (!d_->loadedCalendarRange)
        return std::nullopt;
    return d_->services.calendar.calendar().startOfDay(d_->loadedCalendarRange->end);
}

bool CalendarStore::needsManualLoadEarlier() const {
    return d_->needsManualLoadEarlier;
}

bool CalendarStore::needsManualLoadLater() const {
    return d_->needsManualLoadLater;
}

void CalendarStore::reload() {
    d_->reload();
}

void CalendarStore::systemDidWake() {
    d_->catchUp();
}

}  // namespace kestrant
