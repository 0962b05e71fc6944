#pragma once

#include "calendar/CalendarStore.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/NotificationCenter.h"
#include "preferences/Preferences.h"
#include "support/EventBuilders.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "support/MovableTimeZone.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrant {

using namespace std::chrono_literals;

/// A calendar store over a database in memory that holds the calendars "calendar" and "other" and the
/// reminders list "list"; Friday 27 March 2026, noon, in Paris.
class CalendarStoreTest : public testing::Test {
  protected:
    static Instant paris(QDate day, QTime time = {0, 0}) { return at("Europe/Paris", day, time); }
    static Instant now() { return paris({2026, 3, 27}, {12, 0}); }

    CalendarStoreTest() {
        putCalendar("calendar");
        putCalendar("other");
        EKCalendar list;
        list.calendarIdentifier = QStringLiteral("list");
        database.putCalendar(list);
    }

    void putCalendar(const char* id, bool writable = true) {
        EKCalendar calendarValue;
        calendarValue.calendarIdentifier = QString::fromUtf8(id);
        calendarValue.title = calendarValue.calendarIdentifier;
        calendarValue.allowsContentModifications = writable;
        calendarValue.allowsReminders = false;
        calendarValue.allowsEvents = true;
        database.putCalendar(calendarValue);
    }

    /// Makes the store as it is at the start of the program; it has not asked for access yet.
    CalendarStore& makeStore() { return makeStore(executor); }
    CalendarStore& makeStore(BackgroundExecutor& background) {
        store = std::make_unique<CalendarStore>(CalendarStoreServices{
            .eventStore = database,
            .openReminders = openReminders,
            .scheduler = scheduler,
            .clock = scheduler,
            .currentZone = currentZone,
            .preferences = preferences,
            .notifications = notifications,
            .executor = background,
            .locale = [] { return QLocale(QLocale::English, QLocale::UnitedStates); },
            .clearReminderDueDate =
                [this](const QString& id, std::function<void(tl::expected<void, TextPair>)> done) {
                    cleared.push_back(id.toStdString());
                    scheduler.post([this, done = std::move(done)] { done(clearingResult); });
                }});
        return *store;
    }

    /// A store that has loaded the week.
    CalendarStore& loadedStore() {
        makeStore().requestAccess();
        scheduler.advance(1s);
        return *store;
    }

    /// Counts a signal from now on.
    template <typename Signal>
    [[nodiscard]] std::shared_ptr<int> count(Signal signal) {
        auto counter = std::make_shared<int>(0);
        QObject::connect(store.get(), signal, store.get(), [counter] { ++*counter; });
        return counter;
    }

    /// What is shown, one line a day: "TODAY · FRI 27: title title!", with "!" for what happens now.
    [[nodiscard]] std::vector<std::string> shown() const {
        std::vector<std::string> result;
        for (const CalendarDayGroup& group : store->dayGroups()) {
            QString line = group.headerTitle + u':';
            for (const CalendarEventItem& row : group.events)
                line += u' ' + row.title + (row.isHappeningNow ? QStringLiteral("!") : QString());
            result.push_back(line.toStdString());
        }
        return result;
    }

    /// The shown row with this title.
    [[nodiscard]] CalendarEventItem row(const char* title) const {
        for (const CalendarEventItem& item : store->upcomingEvents()) {
            if (item.title == QString::fromUtf8(title))
                return item;
        }
        ADD_FAILURE() << "no row " << title;
        return {};
    }

    static EKError diskFull() {
        return {EKError::Code::storage, text("The disk is full.", "Le disque est plein.")};
    }

    ManualScheduler scheduler{now()};
    MovableTimeZone currentZone;
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedStates); }};
    NotificationCenter notifications;
    ManualExecutor executor;
    InMemoryEventStore database{scheduler, scheduler, currentZone};
    OpenReminders openReminders{database, scheduler};
    /// The reminders whose due date was to be cleared, and how that ends.
    std::vector<std::string> cleared;
    tl::expected<void, TextPair> clearingResult;
    std::unique_ptr<CalendarStore> store;
};

}  // namespace kestrant
