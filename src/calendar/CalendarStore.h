#pragma once

#include "calendar/CalendarDays.h"
#include "calendar/CalendarLoader.h"
#include "calendar/CalendarStoreServices.h"
#include "calendar/CalendarWriter.h"
#include "calendar/RecordedEventChanges.h"

#include <QList>
#include <QObject>

#include <optional>
#include <vector>

namespace kestrant {

/// Owns what the calendar shows, the days with their events and the reminders due on them, and carries out
/// every change to them. State is read through the functions below; each signal says which of it has changed,
/// and is emitted after the change, never for a change that is none.
///
/// Loads by itself when the database, the preferences "showRemindersInCalendar" and "kestrantLanguage" or the
/// time zone change, and when a day begins; rows come and go with the time of day. An overtaken load shows
/// nothing.
///
/// Changes are written to the database at once, recurring events in the one occurrence shown, and end with a
/// completion that is called exactly once, on a later turn, with the failure if there was one; it may be
/// empty. It is not called when the store is gone by then; the change is carried out all the same. A change
/// that has been written is recorded with what takes it back and what makes it again.
///
/// Thread: main.
class CalendarStore : public QObject {
    Q_OBJECT

  public:
    using Completion = CalendarWriter::Completion;
    using DetailsCompletion = CalendarWriter::DetailsCompletion;
    using EventCompletion = CalendarWriter::EventCompletion;

    /// Posted after a new event has been saved.
    static constexpr auto eventCreatedNotification = "kestrantCalendarEventCreated";
    /// Posted after an event, or a reminder's place in the calendar, has been changed or removed.
    static constexpr auto eventChangedNotification = "kestrantCalendarEventChanged";
    /// Where the home platform lets the person allow access.
    static constexpr auto privacyPage =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Calendars";

    /// Fetching begins once access is granted.
    explicit CalendarStore(CalendarStoreServices services, QObject* parent = nullptr);
    ~CalendarStore() override;

    // Access

    [[nodiscard]] const CalendarAccessState& accessState() const { return loader_.accessState(); }
    /// Takes the state the database reports; asks where it was never asked, loads where it allows.
    void requestAccess() { loader_.requestAccess(); }
    /// Another database answers from now on: what the former one answers late is dropped, and the new one is
    /// asked to open if that was.
    void databaseWasExchanged() { loader_.databaseWasExchanged(); }

    // What is shown

    /// In day order. Cheap to copy: copies share their contents.
    [[nodiscard]] const QList<CalendarDayGroup>& dayGroups() const { return days_.groups(); }
    /// The rows of all groups in order; made anew for each call.
    [[nodiscard]] QList<CalendarEventItem> upcomingEvents() const;
    /// The first timed event that starts after now, of those shown.
    [[nodiscard]] std::optional<CalendarEventItem> nextEvent() const;
    /// The sentence for the person where not everything could be shown; what is left out is what is farthest
    /// from today.
    [[nodiscard]] std::optional<TextPair> shortage() const;
    /// True while a load is under way; not while loadMore() is.
    [[nodiscard]] bool isLoading() const { return loader_.isLoading(); }
    /// False until the first load has ended.
    [[nodiscard]] bool hasLoaded() const { return loader_.hasLoaded(); }

    // The full calendar

    /// False: the coming week. True: the full calendar, a year each way at first.
    [[nodiscard]] bool showsAllEvents() const { return loader_.showsAllEvents(); }
    void setShowsAllEvents(bool value) { loader_.setShowsAllEvents(value); }
    /// Extends the full calendar by three years. Nothing happens in the other mode, before the first load and
    /// while one is under way.
    void loadMore(bool earlier) { loader_.loadMore(earlier); }
    [[nodiscard]] bool isLoadingMoreEvents() const { return loader_.isLoadingMoreEvents(); }
    /// The interval of the full calendar, or the one being loaded; absent in the other mode.
    [[nodiscard]] std::optional<Instant> loadedCalendarStart() const;
    [[nodiscard]] std::optional<Instant> loadedCalendarEnd() const;
    /// The last extension that way found nothing: ask the person before the next.
    [[nodiscard]] bool needsManualLoadEarlier() const { return loader_.needsManualLoadEarlier(); }
    [[nodiscard]] bool needsManualLoadLater() const { return loader_.needsManualLoadLater(); }

    // Loading

    void reload() { loader_.reload(); }
    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake();

    // Changes

    /// The event calendar with this identifier, if there is one.
    [[nodiscard]] std::optional<EKCalendar> calendar(const QString& identifier) const {
        return writer_.calendar(identifier);
    }
    /// The event calendars that take changes, for the calendar picker.
    [[nodiscard]] std::vector<EKCalendar> writableCalendars() const { return writer_.writableCalendars(); }
    /// Whether the calendar (or list of reminders) of a row takes changes.
    [[nodiscard]] bool isWritable(const CalendarEventItem& row) const { return writer_.isWritable(row); }
    /// The one of the calendars that the database puts new events into, else the first; absent when there is
    /// none.
    [[nodiscard]] std::optional<EKCalendar> defaultCalendar() const { return writer_.defaultCalendar(); }
    /// `known` is called after a creation whose outcome was unknown at its completion, once it is known.
    void createEvent(const NewCalendarEvent& event, const Completion& completion,
                     const Completion& known = {}) {
        writer_.createEvent(event, completion, known);
    }
    /// The initial content of an edit form.
    void loadEditDetails(const CalendarEventItem& row, const DetailsCompletion& completion) {
        writer_.loadEditDetails(row, completion);
    }
    /// Everything that the event behind a row says.
    void loadEvent(const CalendarEventItem& row, const EventCompletion& completion) {
        writer_.loadEvent(row, completion);
    }
    void updateEvent(const CalendarEventItem& row, const CalendarEventEditDetails& details,
                     const Completion& completion) {
        writer_.updateEvent(row, details, completion);
    }
    /// Deletes the event or the reminder behind a row. One that is gone already is no failure.
    void deleteItem(const CalendarEventItem& row, const Completion& completion) {
        writer_.deleteItem(row, completion);
    }
    /// Clears the due date of the reminder behind a row; the reminder stays in its list.
    void removeReminderFromCalendar(const CalendarEventItem& row, const Completion& completion) {
        writer_.removeReminderFromCalendar(row, completion);
    }

  Q_SIGNALS:
    void accessStateChanged();
    void dayGroupsChanged();
    void shortageChanged();
    void isLoadingChanged();
    void showsAllEventsChanged();
    void isLoadingMoreEventsChanged();
    void needsManualLoadChanged();

  private:
    const CalendarStoreServices services_;
    CalendarDays days_{services_};
    CalendarLoader loader_{services_, days_};
    RecordedEventChanges recorder_{services_};
    CalendarWriter writer_{services_, loader_, recorder_};
};

}  // namespace kestrant
