#pragma once

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarError.h"
#include "calendar/CalendarItems.h"
#include "calendar/RecordedEventChanges.h"
#include "eventkit/model/EKEvent.h"

#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

class CalendarLoader;
struct CalendarStoreServices;

/// Creates, edits and removes what the calendar shows: what is wanted is checked, written to the database and
/// recorded. Thread: main.
class CalendarWriter : public QObject {
    Q_OBJECT

  public:
    using Completion = std::function<void(tl::expected<void, CalendarError>)>;
    using EventCompletion = std::function<void(const tl::expected<EKEventData, CalendarError>&)>;
    using DetailsCompletion = std::function<void(tl::expected<CalendarEventEditDetails, CalendarError>)>;

    /// Everything given here outlives this object.
    CalendarWriter(const CalendarStoreServices& services, const CalendarLoader& loader,
                   RecordedEventChanges& recorder);

    [[nodiscard]] std::optional<EKCalendar> calendar(const QString& identifier) const;
    [[nodiscard]] std::vector<EKCalendar> writableCalendars() const;
    [[nodiscard]] bool isWritable(const CalendarEventItem& row) const;
    [[nodiscard]] std::optional<EKCalendar> defaultCalendar() const;
    /// `known` is called after a creation whose outcome was unknown at its completion, once it is known.
    void createEvent(const NewCalendarEvent& event, const Completion& completion,
                     const Completion& known = {});
    void loadEvent(const CalendarEventItem& row, const EventCompletion& completion);
    void loadEditDetails(const CalendarEventItem& row, const DetailsCompletion& completion);
    void updateEvent(const CalendarEventItem& row, const CalendarEventEditDetails& details,
                     const Completion& completion);
    void deleteItem(const CalendarEventItem& row, const Completion& completion);
    void removeReminderFromCalendar(const CalendarEventItem& row, const Completion& completion);

  Q_SIGNALS:
    /// The row is no longer in the calendar.
    void removed(const QString& rowID);

  private:
    using Found = std::function<void(const EKEventRef& event)>;
    using Result = tl::expected<EKSaveResult, EKError>;

    /// Hands over the event behind a row on a later turn; null when there is none.
    void findEvent(const CalendarEventItem& row, Found done);
    void save(const EKEventRef& event, const char* notification, const RecordedEventChangeRef& recorded,
              const Completion& completion, const Completion& known = {});
    /// The end of every successful change.
    void changed(const char* notification, const Completion& completion);
    /// The end of a removal; one of an item that is gone already has succeeded.
    void endRemoval(const CalendarEventItem& row, const RecordedEventChangeRef& recorded,
                    const Completion& completion, const Result& result);
    void rowRemoved(const CalendarEventItem& row, const Completion& completion);
    /// Hands over a failure on a later turn.
    void fail(const Completion& completion, const CalendarError& error);

    const CalendarStoreServices& services_;
    const CalendarLoader& loader_;
    RecordedEventChanges& recorder_;
};

}  // namespace kestrant
