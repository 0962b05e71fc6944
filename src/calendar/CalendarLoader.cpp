#include "calendar/CalendarLoader.h"

#include "calendar/CalendarDays.h"
#include "calendar/CalendarFetch.h"
#include "calendar/CalendarStore.h"
#include "calendar/CalendarStoreServices.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/NotificationCenter.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using AccessKind = CalendarAccessState::Kind;

constexpr Duration reloadDelay = std::chrono::milliseconds(300);
constexpr int initialYears = 1;
constexpr int yearsPerChunk = 3;

/// Whether the calendar knows every day of the range.
bool isRepresentable(const DayRange& days) {
    return days.first.year() >= 1 && days.end.year() <= 9999;
}

}  // namespace

/// A request to the database and the use of its answer.
struct CalendarLoader::Request {
    /// The interval and the calendars to read.
    DayRange fetched;
    /// The days to show of it.
    DayRange shown;
    CalendarMode mode = CalendarMode::compact;
    /// The groups are added to those on show and do not take their place.
    bool isExtension = false;
};

/// The result of a fetch, prepared away from the main thread.
struct CalendarLoader::Result {
    /// Absent where they are those that were on show when the fetch was started.
    std::optional<QList<CalendarDayGroup>> groups;
    /// The moment for which they are right.
    Instant moment;
    /// The fetch itself added no group.
    bool isEmpty = false;
    /// Rows that are farthest from today were left out.
    bool isCut = false;
};

CalendarLoader::Result CalendarLoader::resultOf(const Request& request, const CalendarItems& items,
                                                const CalendarPresent& present,
                                                const QList<CalendarDayGroup>& onShow) {
    Result result{.moment = present.now};
    const DayRange days = daysThatFit(items, request.shown, present);
    QList<CalendarDayGroup> groups = groupByDay(items, days, request.mode, present);
    result.isEmpty = groups.isEmpty();
    result.isCut = items.isCut || !(days == request.shown);
    if (request.isExtension) {
        const QList<CalendarDayGroup> all = merged(onShow, groups, present.locale);
        groups = groupsThatFit(all, present.zone.dayOf(present.now));
        result.isEmpty = result.isEmpty || groups.size() <= onShow.size();
        result.isCut = result.isCut || groups.size() < all.size();
    }
    // Without a change the new rows are let go of here and not on the main thread.
    if (groups != onShow)
        result.groups = std::move(groups);
    return result;
}

CalendarLoader::CalendarLoader(const CalendarStoreServices& services, CalendarDays& days)
    : services_(services)
    , days_(days) {
    connect(&days_, &CalendarDays::dayBegan, this, &CalendarLoader::reload);
    observe();
}

CalendarLoader::~CalendarLoader() = default;

void CalendarLoader::observe() {
    observers_.push_back(services_.eventStore.observeChanges(
        [this] { reloadTask_ = services_.scheduler.after(reloadDelay, [this] { reload(); }); }));
    for (const char* notification :
         {CalendarStore::eventCreatedNotification, CalendarStore::eventChangedNotification})
        observers_.push_back(
            services_.notifications.observe(QString::fromLatin1(notification), [this] { reload(); }));
    observers_.push_back(services_.preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::showRemindersInCalendar || key == preferenceKeys::language)
            reload();
    }));
    observers_.push_back(services_.currentZone.observeChanges([this] { reload(); }));
}

CalendarPresent CalendarLoader::present() const {
    return {services_.clock.now(), services_.currentZone.zone(), services_.preferences.language(),
            services_.locale()};
}

void CalendarLoader::requestAccess() {
    if (accessState_.kind == AccessKind::requesting)
        return;
    const auto enter = [this](AccessKind kind) {
        publish(accessState_, {kind, {}}, &CalendarLoader::accessStateChanged);
    };
    switch (services_.eventStore.authorizationStatus(EKEntityType::event)) {
    case EKAuthorizationStatus::notDetermined:
        enter(AccessKind::requesting);
        services_.eventStore.requestFullAccessToEvents(
            [self = QPointer(this), generation = accessGeneration_](bool granted,
                                                                    const std::optional<EKError>& error) {
                if (self && generation == self->accessGeneration_)
                    self->accessAnswered(granted, error);
            });
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

void CalendarLoader::accessAnswered(bool granted, const std::optional<EKError>& error) {
    CalendarAccessState state{AccessKind::denied, {}};
    if (granted)
        state.kind = AccessKind::authorized;
    else if (error)
        state = CalendarAccessState::failed(error->message);
    else if (services_.eventStore.authorizationStatus(EKEntityType::event) ==
             EKAuthorizationStatus::restricted)
        state.kind = AccessKind::restricted;
    publish(accessState_, state, &CalendarLoader::accessStateChanged);
    reload();
}

void CalendarLoader::databaseWasExchanged() {
    const bool wasRequested = accessState_.kind != AccessKind::notDetermined;
    ++accessGeneration_;
    ++*fetchGeneration_;
    publish(accessState_, {}, &CalendarLoader::accessStateChanged);
    publish(isLoading_, false, &CalendarLoader::isLoadingChanged);
    publish(isLoadingMoreEvents_, false, &CalendarLoader::isLoadingMoreEventsChanged);
    if (wasRequested)
        requestAccess();
}

void CalendarLoader::reload() {
    if (!isAuthorized())
        return;
    const CalendarPresent circumstances = present();
    const QDate today = circumstances.zone.dayOf(circumstances.now);
    Request request{{today.addDays(-1), today.addDays(7)}, compactDays(circumstances)};
    if (showsAllEvents_) {
        request.mode = CalendarMode::full;
        request.shown = loadedCalendarRange_.value_or(
            DayRange{today.addYears(-initialYears), today.addYears(initialYears)});
        request.fetched = request.shown;
    }
    if (!isRepresentable(request.fetched))
        return;
    if (showsAllEvents_)
        loadedCalendarRange_ = request.shown;
    publish(isLoading_, true, &CalendarLoader::isLoadingChanged);
    days_.pause();
    fetch(request, [this, mode = request.mode](const Result& result) {
        hasLoaded_ = true;
        publish(isCut_, result.isCut, &CalendarLoader::isCutChanged);
        days_.show(result.groups, result.moment, mode);
        publish(isLoading_, false, &CalendarLoader::isLoadingChanged);
    });
    // An extension that is overtaken is part of this load.
    publish(isLoadingMoreEvents_, false, &CalendarLoader::isLoadingMoreEventsChanged);
}

void CalendarLoader::loadMore(bool earlier) {
    if (!isAuthorized() || !showsAllEvents_ || isLoading_ || isLoadingMoreEvents_ || !loadedCalendarRange_)
        return;
    DayRange range = *loadedCalendarRange_;
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
    bool CalendarLoader::*const needsManualLoad =
        earlier ? &CalendarLoader::needsManualLoadEarlier_ : &CalendarLoader::needsManualLoadLater_;
    loadedCalendarRange_ = range;
    publish(this->*needsManualLoad, false, &CalendarLoader::needsManualLoadChanged);
    publish(isLoadingMoreEvents_, true, &CalendarLoader::isLoadingMoreEventsChanged);
    fetch({chunk, chunk, CalendarMode::full, true}, [this, needsManualLoad](const Result& result) {
        publish(isCut_, isCut_ || result.isCut, &CalendarLoader::isCutChanged);
        days_.show(result.groups, result.moment, CalendarMode::full);
        publish(this->*needsManualLoad, result.isEmpty, &CalendarLoader::needsManualLoadChanged);
        publish(isLoadingMoreEvents_, false, &CalendarLoader::isLoadingMoreEventsChanged);
    });
}

void CalendarLoader::setShowsAllEvents(bool value) {
    if (value == showsAllEvents_)
        return;
    showsAllEvents_ = value;
    loadedCalendarRange_.reset();
    publish(isLoadingMoreEvents_, false, &CalendarLoader::isLoadingMoreEventsChanged);
    publish(needsManualLoadEarlier_, false, &CalendarLoader::needsManualLoadChanged);
    publish(needsManualLoadLater_, false, &CalendarLoader::needsManualLoadChanged);
    Q_EMIT showsAllEventsChanged();
    reload();
}

void CalendarLoader::fetch(const Request& request, const Done& done) {
    const int generation = ++*fetchGeneration_;
    const CalendarPresent circumstances = present();
    const auto end = [self = QPointer(this), generation, done](const Result& result) {
        if (self && *self->fetchGeneration_ == generation)
            done(result);
    };
    const auto group = [self = QPointer(this), generation, request, circumstances, end](CalendarItems items) {
        if (!self || *self->fetchGeneration_ != generation)
            return;
        const auto read = std::make_shared<const CalendarItems>(std::move(items));
        self->services_.executor.run([generation, request, circumstances, end, read,
                                      onShow = self->days_.groups(), latest = self->fetchGeneration_,
                                      &scheduler = self->services_.scheduler] {
            if (*latest != generation)
                return;
            scheduler.post([end, result = resultOf(request, *read, circumstances, onShow)] { end(result); });
        });
    };
    fetchCalendarItems(circumstances.zone.startOfDay(request.fetched.first),
                       circumstances.zone.startOfDay(request.fetched.end), services_.eventStore,
                       services_.preferences.showRemindersInCalendar() ? &services_.openReminders : nullptr,
                       circumstances.zone, group);
}

}  // namespace kestrant
