#pragma once

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarError.h"
#include "calendar/CalendarGrouping.h"
#include "calendar/CalendarItems.h"
#include "foundation/Scheduler.h"
#include "foundation/ZoneCalendar.h"

#include <QList>
#include <QLocale>
#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

class BackgroundExecutor;
class CalendarActionRecorder;
class EKEventStore;
class NotificationCenter;
class Preferences;

/// What a CalendarStore works with. Everything here outlives the store.
struct CalendarStoreServices {
    EKEventStore& eventStore;
    Scheduler& scheduler;
    const Clock& clock;
    CurrentCalendar& calendar;
    const Preferences& preferences;
    NotificationCenter& notifications;
    /// Where rows are made and grouped.
    BackgroundExecutor& executor;
    /// The locale of titles' order, asked anew for each load.
    std::function<QLocale()> locale;
    /// Clears a reminder's due date: the reminders' own operation. Calls back once, on a later turn, with the
    /// failure's text.
    std::function<void(const QString& reminderID, std::function<void(tl::expected<void, TextPair>)> done)>
        clearReminderDueDate;
    /// May be null: then nothing is recorded.
    CalendarActionRecorder* actions = nullptr;
};

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
    using Completion = std::function<void(tl::expected<void, CalendarError>)>;
    using DetailsCompletion = std::function<void(tl::expected<CalendarEventEditDetails, CalendarError>)>;

    /// Posted after a new event has been saved.
    static constexpr auto eventCreatedNotification = "kestrantCalendarEventCreated";
    /// Posted after an event, or a reminder's place in the calendar, has been changed or removed.
    static constexpr auto eventChangedNotification = "kestrantCalendarEventChanged";
    /// Where the home platform lets the person allow access.
    static constexpr auto privacyPage =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Calendars";

    /// Nothing is fetched before access is granted.
    explicit CalendarStore(CalendarStoreServices services, QObject* parent = nullptr);
    ~CalendarStore() override;

    // Access

    [[nodiscard]] const CalendarAccessState& accessState() const;
    /// Takes the state the database reports; asks where it was never asked, loads where it allows.
    void requestAccess();
    /// Another database answers from now on: what the former one answers late is dropped, and the new one is
    /// asked to open if that was.
    void databaseWasExchanged();

    // What is shown

    /// In day order. Cheap to copy: copies share their contents.
    [[nodiscard]] const QList<CalendarDayGroup>& dayGroups() const;
    /// The rows of all groups in order; made anew for each call.
    [[nodiscard]] QList<CalendarEventItem> upcomingEvents() const;
    /// The first timed event that starts after now, of those shown.
    [[nodiscard]] std::optional<CalendarEventItem> nextEvent() const;
    /// The sentence for the person where not everything could be shown; what is left out is what is farthest
    /// from today.
    [[nodiscard]] std::optional<TextPair> shortage() const;
    /// True while a load is under way; not while loadMore() is.
    [[nodiscard]] bool isLoading() const;
    /// False until the first load has ended.
    [[nodiscard]] bool hasLoaded() const;

    // The full calendar

    /// False: the coming week. True: the full calendar, a year each way at first.
    [[nodiscard]] bool showsAllEvents() const;
    void setShowsAllEvents(bool value);
    /// Extends the full calendar by three years. Nothing happens in the other mode, before the first load and
    /// while one is under way.
    void loadMore(bool earlier);
    [[nodiscard]] bool isLoadingMoreEvents() const;
    /// What the full calendar covers, or is about to; absent in the other mode.
    [[nodiscard]] std::optional<Instant> loadedCalendarStart() const;
    [[nodiscard]] std::optional<Instant> loadedCalendarEnd() const;
    /// The last extension that way found nothing: ask the person before the next.
    [[nodiscard]] bool needsManualLoadEarlier() const;
    [[nodiscard]] bool needsManualLoadLater() const;

    // Loading

    void reload();
    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake();

    // Changes

    /// The event calendars that take changes, for the calendar picker.
    [[nodiscard]] std::vector<EKCalendar> writableCalendars() const;
    /// Whether the calendar (or list of reminders) of a row takes changes.
    [[nodiscard]] bool isWritable(const CalendarEventItem& row) const;
    /// The one of the calendars that the database puts new events into, else the first; absent when there is
    /// none.
    [[nodiscard]] std::optional<EKCalendar> defaultCalendar() const;
    void createEvent(const NewCalendarEvent& event, const Completion& completion);
    /// What an edit form starts from.
    void loadEditDetails(const CalendarEventItem& row, const DetailsCompletion& completion);
    void updateEvent(const CalendarEventItem& row, const CalendarEventEditDetails& details,
                     const Completion& completion);
    /// Deletes the event or the reminder behind a row. One that is gone already is no failure.
    void deleteItem(const CalendarEventItem& row, const Completion& completion);
    /// Clears the due date of the reminder behind a row; the reminder stays in its list.
    void removeReminderFromCalendar(const CalendarEventItem& row, const Completion& completion);

  Q_SIGNALS:
    void accessStateChanged();
    void dayGroupsChanged();
    void shortageChanged();
    void isLoadingChanged();
    void showsAllEventsChanged();
    void isLoadingMoreEventsChanged();
    void loadedCalendarRangeChanged();
    void needsManualLoadChanged();

  private:
    class Private;
    std::shared_ptr<Private> d_;
};

}  // namespace kestrant
