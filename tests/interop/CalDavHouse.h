#pragma once

#include "contracts/EvolutionHouse.h"
#include "interop/CalDavServer.h"

#include <utility>

namespace kestrant {

/// The desktop's calendar service with accounts on a CalDAV server: every new list is one.
struct CalDavHouse : EvolutionHouse {
    CalDavHouse() {
        server.start();
        used = &store;
    }

    class Store final : public EvolutionEventStore {
      public:
        explicit Store(CalDavHouse& house)
            : EvolutionEventStore(house.scheduler, house.scheduler, house.currentZone)
            , house_(house) {}

        void saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) override {
            if (!calendar.calendarIdentifier.isEmpty() ||
                authorizationStatus(EKEntityType::reminder) != EKAuthorizationStatus::fullAccess)
                return EvolutionEventStore::saveCalendar(calendar, std::move(completion));
            const QString collection = QStringLiteral("collection-%1").arg(++house_.collections);
            house_.server.makeCollection(collection, calendar.allowsReminders ? "VTODO" : "VEVENT");
            const QString identifier = house_.server.addAccount(
                collection, calendar.title,
                calendar.allowsReminders ? E_CAL_CLIENT_SOURCE_TYPE_TASKS : E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
            const Instant before = house_.scheduler.now();
            house_.awaitThat([&] {
                const auto list = calendarWithIdentifier(identifier);
                return list && list->allowsContentModifications;
            });
            house_.scheduler.jumpWall(before - house_.scheduler.now());
            house_.scheduler.post([completion = std::move(completion),
                                   made = *calendarWithIdentifier(identifier)] { completion(made); });
        }

      private:
        CalDavHouse& house_;
    };

    void makeReadOnly(const QString& list) {
        server.makeReadOnly();
        // Only a process that is new to the server asks what it may do there.
        service.kill("org.gnome.evolution.dataserver.Calendar");
        awaitThat([&] {
            return store.problems().empty() &&
                   !store.calendarWithIdentifier(list)->allowsContentModifications;
        });
    }

    CalDavServer server;
    int collections = 0;
    Store store{*this};
};

}  // namespace kestrant
