#pragma once

#include "contracts/EvolutionHouse.h"
#include "interop/CalDavServer.h"
#include "support/EventStoreDriver.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <vector>

namespace kestrant {

/// A task list and a calendar that an online account brings into the desktop's database.
class CalDav : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!CalDavServer::isInstalled())
            GTEST_SKIP() << "radicale is not installed; scripts/install-dependencies installs it.";
        server.put("tasks", "bread", task("bread", "Bread"));
        server.put("events", "standup", event("standup", "Standup"));
        server.start();
        list = server.addAccount("tasks", "Home", E_CAL_CLIENT_SOURCE_TYPE_TASKS);
        calendar = server.addAccount("events", "Work", E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        // What is in a list may be known before it can be written.
        house.awaitThat([&] {
            return driver.openTitles().size() == 1 && eventTitles().size() == 1 && isWritable(list) &&
                   isWritable(calendar);
        });
    }
    bool isWritable(const QString& identifier) {
        const auto found = house.store.calendarWithIdentifier(identifier);
        return found && found->allowsContentModifications;
    }
    static QByteArray task(const QByteArray& uid, const QByteArray& title, const QByteArray& more = {}) {
        return item("VTODO", uid, title, "DUE;VALUE=DATE:20260330\r\nX-THEIRS:kept\r\n" + more);
    }
    static QByteArray event(const QByteArray& uid, const QByteArray& title) {
        return item("VEVENT", uid, title,
                    "DTSTART:20260330T090000Z\r\nDTEND:20260330T093000Z\r\nRRULE:FREQ=DAILY;COUNT=3\r\n");
    }
    static QByteArray item(const QByteArray& component, const QByteArray& uid, const QByteArray& title,
                           const QByteArray& more) {
        return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Somebody//Else//EN\r\nBEGIN:" + component +
               "\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + title + "\r\n" + more +
               "END:" + component + "\r\nEND:VCALENDAR\r\n";
    }
    std::vector<QString> eventTitles() {
        std::vector<QString> result;
        for (const EKEventRef& event : driver.events(at("UTC", {2026, 3, 30}), at("UTC", {2026, 3, 31})))
            result.push_back(event->data.title);
        return result;
    }

    explicit CalDav(std::chrono::milliseconds longestCall = EvolutionEventStore::longestCall)
        : house(longestCall) {}

    EvolutionHouse house;
    CalDavServer server;
    EventStoreDriver driver{house.store, house.scheduler};
    QString list;
    QString calendar;
};

}  // namespace kestrant
