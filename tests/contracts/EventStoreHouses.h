#pragma once

#ifdef KESTRANT_WITH_EVOLUTION
#include "EvolutionHouse.h"
#endif
#ifdef KESTRANT_ON_CALDAV
#include "interop/CalDavHouse.h"
#endif
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "support/AwaitState.h"
#include "support/EventStoreDriver.h"
#include "support/ManualScheduler.h"
#include "support/MovableTimeZone.h"
#include "support/ReminderBuilders.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrant {

// Where every implementation of the database lives, with the others that use it too.

inline const Instant morning = at("Europe/Paris", {2026, 3, 27}, {8, 0});

/// The store that lives in memory, and what others do to it.
struct MemoryHouse {
    ManualScheduler scheduler{morning};
    MovableTimeZone currentZone;
    InMemoryEventStore store{scheduler, scheduler, currentZone};

    MemoryHouse() { store.setAuthorizationStatus(EKAuthorizationStatus::notDetermined); }
    template <typename Change>
    void changeElsewhere(const QString& identifier, Change change) {
        EKReminderData data = *store.reminder(identifier);
        change(data);
        store.putReminder(data);
        scheduler.runPosted();
    }
    void removeElsewhere(const QString& identifier) {
        store.dropReminder(identifier);
        scheduler.runPosted();
    }
    void makeReadOnly(const QString& list) {
        EKCalendar changed = *store.calendarWithIdentifier(list);
        changed.allowsContentModifications = false;
        store.putCalendar(changed);
    }
};

/// The folder of files. Others are a second program on the same folder; their changes are noticed by the
/// system.
template <typename Store>
struct FolderHouse {
    ManualScheduler scheduler{morning};
    MovableTimeZone currentZone;
    QTemporaryDir folder;
    Store store{folder.path() + "/calendars", scheduler, scheduler, currentZone};

    template <typename Change>
    void changeElsewhere(const QString& identifier, Change change) {
        vdir::VdirDatabase other(QFile::encodeName(folder.path() + "/calendars"));
        ASSERT_FALSE(other.open(currentZone.zone()));
        const auto base = other.snapshot()->reminders.value(identifier).data;
        EKReminderData edited = *base;
        change(edited);
        ASSERT_TRUE(other.save(base, edited, scheduler.now(), currentZone.zone()).has_value());
        awaitThat(scheduler, [&] { return showsChange(store, identifier, change); });
    }
    void removeElsewhere(const QString& identifier) {
        const auto list = store.calendarItem(identifier)->data.calendarIdentifier;
        ASSERT_TRUE(QFile::remove(folder.path() + "/calendars/" + list + "/" + identifier + ".ics"));
        awaitThat(scheduler, [&] { return store.calendarItem(identifier) == nullptr; });
    }
    void makeReadOnly(const QString& list) {
        const QString calendars = folder.path() + "/calendars";
        for (const QString& path : {folder.path(), calendars})
            ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0755), 0);
        ASSERT_EQ(::chmod(QFile::encodeName(calendars + "/" + list).constData(), 0555), 0);
        // Root may write anywhere, so the test goes on as someone else.
        if (::geteuid() == 0) {
            ASSERT_EQ(::seteuid(65534), 0);
        }
        awaitThat(scheduler, [&] { return !store.calendarWithIdentifier(list)->allowsContentModifications; });
    }
    ~FolderHouse() {
        if (::getuid() == 0) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }
};
using VdirHouse = FolderHouse<VdirEventStore>;

#if defined KESTRANT_ON_CALDAV
using Houses = ::testing::Types<CalDavHouse>;
#elif defined KESTRANT_WITH_EVOLUTION
using Houses = ::testing::Types<MemoryHouse, VdirHouse, EvolutionHouse>;
#else
using Houses = ::testing::Types<MemoryHouse, VdirHouse>;
#endif

inline std::optional<EKError::Code> codeOf(const EventStoreDriver::SaveAnswer& answer) {
    return answer ? std::nullopt : std::optional(answer.error().code);
}

}  // namespace kestrant
