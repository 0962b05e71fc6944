#include "reminders/store/ReminderLoader.h"

#include "eventkit/model/EKEventStore.h"
#include "foundation/NotificationCenter.h"
#include "foundation/TimeZone.h"
#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/store/ReminderStore.h"
#include "reminders/store/ReminderWork.h"

#include <QPointer>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <utility>

namespace kestrant {
namespace {

using Kind = ReminderAccessState::Kind;

constexpr Duration reloadDelay = std::chrono::milliseconds(300);

Kind accessKind(EKAuthorizationStatus status) {
    switch (status) {
    case EKAuthorizationStatus::notDetermined:
        return Kind::notDetermined;
    case EKAuthorizationStatus::restricted:
        return Kind::restricted;
    case EKAuthorizationStatus::denied:
        return Kind::denied;
    case EKAuthorizationStatus::fullAccess:
        return Kind::authorized;
    }
    return Kind::denied;
}

OpenReminders::Reminders ofList(const OpenReminders::Reminders& reminders, const QString& list) {
    EKReminders found;
    std::copy_if(reminders->begin(), reminders->end(), std::back_inserter(found),
                 [&](const auto& reminder) { return reminder->calendarIdentifier == list; });
    return std::make_shared<const EKReminders>(std::move(found));
}

}  // namespace

ReminderLoader::ReminderLoader(const ReminderStoreServices& services, ReminderWork& work)
    : services_(services)
    , work_(work)
    , selectedListID_(services.defaults.string(preferenceKeys::selectedReminderListID))
    , storeObserver_(services.eventStore.observeChanges([this] {
        updateProblems();
        scheduleReload();
    }))
    , eventObserver_(services.notifications.observe(
          QLatin1String(ReminderStore::calendarEventChangedNotification), [this] { scheduleReload(); }))
    // Date-only due dates are instants of the zone: they are read anew.
    , zoneObserver_(services.currentZone.observeChanges([this] { reloadTasks(); })) {}

void ReminderLoader::setAccessState(ReminderAccessState state) {
    if (state == accessState_)
        return;
    accessState_ = std::move(state);
    Q_EMIT accessStateChanged();
    if (accessState_.kind != Kind::authorized)
        return;
    reloadLists();
    reloadTasks();
    Q_EMIT flagsOutdated();
}

void ReminderLoader::setLoading(bool loading) {
    if (std::exchange(isLoading_, loading) != loading)
        Q_EMIT isLoadingChanged();
}

void ReminderLoader::requestAccess() {
    if (accessState_.kind == Kind::requesting)
        return;
    setAccessState({Kind::requesting, {}});
    work_.begin();
    services_.eventStore.requestFullAccessToReminders([self = QPointer(this), generation = accessGeneration_](
                                                          bool granted, const std::optional<EKError>& error) {
        if (!self)
            return;
        if (generation == self->accessGeneration_) {
            if (granted)
                self->setAccessState({Kind::authorized, {}});
            else if (error && error->code != EKError::Code::accessDenied)
                self->fail(error->message);
            else if (self->services_.eventStore.authorizationStatus(EKEntityType::reminder) ==
                     EKAuthorizationStatus::restricted)
                self->setAccessState({Kind::restricted, {}});
            else
                self->setAccessState({Kind::denied, {}});
        }
        self->work_.end();
    });
}

void ReminderLoader::refreshAccessState() {
    if (accessState_.kind != Kind::requesting)
        setAccessState({accessKind(services_.eventStore.authorizationStatus(EKEntityType::reminder)), {}});
}

void ReminderLoader::fail(const TextPair& reason) {
    setAccessState(ReminderAccessState::failed(reason));
}

bool ReminderLoader::forget() {
    const bool wasRequested = accessState_.kind != Kind::notDetermined;
    ++accessGeneration_;
    ++fetchGeneration_;
    setAccessState({});
    lists_.clear();
    Q_EMIT listsChanged();
    hasLoaded_ = false;
    setLoading(false);
    return wasRequested;
}

void ReminderLoader::reload() {
    if (accessState_.kind == Kind::failed) {
        if (services_.eventStore.authorizationStatus(EKEntityType::reminder) ==
            EKAuthorizationStatus::notDetermined)
            requestAccess();
        else
            refreshAccessState();
        return;
    }
    reloadLists();
    reloadTasks();
}

void ReminderLoader::scheduleReload() {
    reloadTask_ = services_.scheduler.after(reloadDelay, [this] {
        reload();
        Q_EMIT flagsOutdated();
    });
}

void ReminderLoader::reloadLists() {
    if (accessState_.kind != Kind::authorized)
        return;
    std::vector<ReminderList> lists;
    for (const EKCalendar& calendar : services_.eventStore.calendars(EKEntityType::reminder))
        lists.push_back({calendar.calendarIdentifier, calendar.title, calendar.color,
                         calendar.allowsContentModifications, calendar.isAnswering});
    if (lists == lists_)
        return;
    lists_ = std::move(lists);
    Q_EMIT listsChanged();
}

void ReminderLoader::reloadTasks() {
    if (accessState_.kind != Kind::authorized)
        return;
    const int generation = ++fetchGeneration_;
    std::optional<QString> list = selectedListID_;
    if (list && !services_.eventStore.calendarWithIdentifier(*list))
        list.reset();
    work_.begin();
    setLoading(true);
    services_.openReminders.fetch(
        [self = QPointer(this), generation, list](const OpenReminders::Reminders& reminders) {
            if (!self)
                return;
            if (generation == self->fetchGeneration_) {
                self->isLoading_ = false;
                self->hasLoaded_ = true;
                Q_EMIT self->fetched(list ? ofList(reminders, *list) : reminders, list.has_value());
                Q_EMIT self->isLoadingChanged();
                self->updateProblems();
                Q_EMIT self->loaded();
            }
            self->work_.end();
        });
}

void ReminderLoader::updateProblems() {
    auto problems = services_.eventStore.problems();
    if (problems == problems_)
        return;
    problems_ = std::move(problems);
    Q_EMIT problemsChanged();
}

void ReminderLoader::setSelectedListID(const std::optional<QString>& id) {
    if (id == selectedListID_)
        return;
    selectedListID_ = id;
    if (id)
        services_.defaults.set(preferenceKeys::selectedReminderListID, *id);
    else
        services_.defaults.remove(preferenceKeys::selectedReminderListID);
    Q_EMIT selectedListIDChanged();
    reloadTasks();
}

}  // namespace kestrant
