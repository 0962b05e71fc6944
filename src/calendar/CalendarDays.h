#pragma once

#include "calendar/CalendarGrouping.h"
#include "calendar/CalendarItems.h"
#include "foundation/Scheduler.h"

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace kestrant {

struct CalendarStoreServices;

/// The days on show, kept right as time passes: what is over goes where it is to go, and what happens now is
/// marked. Thread: main.
class CalendarDays : public QObject {
    Q_OBJECT

  public:
    explicit CalendarDays(const CalendarStoreServices& services) : services_(services) {}

    [[nodiscard]] const QList<CalendarDayGroup>& groups() const { return groups_; }
    /// Shows groups that were made for a moment; absent where those on show are right for it.
    void show(const std::optional<QList<CalendarDayGroup>>& groups, Instant moment, CalendarMode mode);
    void removeRow(const QString& id);
    /// Brings what is shown up to the present; to be called when timers stood still.
    void catchUp();
    /// Time passes without a trace until the next groups are shown.
    void pause() { changeTask_.cancel(); }

  Q_SIGNALS:
    void changed();
    /// The shown days begin with another day than today.
    void dayBegan();

  private:
    void setGroups(const QList<CalendarDayGroup>& groups);
    void waitForChange();

    const CalendarStoreServices& services_;
    QList<CalendarDayGroup> groups_;
    /// For which moment and in which mode they were made.
    Instant moment_;
    CalendarMode mode_ = CalendarMode::compact;
    ScheduledTask changeTask_;
};

}  // namespace kestrant
