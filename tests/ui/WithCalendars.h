#pragma once

#include "ui/WithEvents.h"

#include <QVariant>

#include <gtest/gtest.h>

namespace kestrant::test {

/// A program, with or without its window, with calendars that take events: "Private", which holds what a test
/// adds, and "Office".
template <typename Base>
struct WithCalendars : WithEvents<Base> {
    WithCalendars() {
        personal = putCalendar("Private");
        office = putCalendar("Office");
    }

    QString putCalendar(const char* title, bool isWritable = true) {
        return Base::database.putCalendar({.title = QString::fromUtf8(title),
                                           .allowsContentModifications = isWritable,
                                           .allowsReminders = false,
                                           .allowsEvents = true});
    }
    /// An event of today, in "Private".
    QString putEvent(const char* title, QTime start, QTime end) {
        return Base::database.putEvent(
            anEvent(title).in(qPrintable(personal)).lasting(today(start), today(end)));
    }
    [[nodiscard]] Instant today(QTime clock) const { return at("Europe/Paris", this->day(0), clock); }
    /// A calendar row of today as the calendar's views hand it over.
    [[nodiscard]] QVariant shown(const char* title) const {
        for (const CalendarEventItem& item : Base::calendarStore.upcomingEvents()) {
            if (item.title == QString::fromUtf8(title))
                return QVariant::fromValue(item);
        }
        ADD_FAILURE() << "no row " << title;
        return {};
    }
    /// The only event of the database.
    [[nodiscard]] EKEventData onlyEvent() const {
        const std::vector<EKEventData> events = Base::database.allEvents();
        EXPECT_EQ(events.size(), 1u);
        return events.empty() ? EKEventData{} : events.front();
    }
    void fillDisk() {
        const EKError full{EKError::Code::storage, text("Disk full.", "Disque plein.")};
        Base::database.setFailure(InMemoryEventStore::Operation::save, full);
        Base::database.setFailure(InMemoryEventStore::Operation::remove, full);
    }
    void clearDisk() {
        Base::database.setFailure(InMemoryEventStore::Operation::save, {});
        Base::database.setFailure(InMemoryEventStore::Operation::remove, {});
    }

    QString personal;
    QString office;
};

}  // namespace kestrant::test
