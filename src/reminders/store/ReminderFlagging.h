#pragma once

#include "foundation/Scheduler.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QString>

#include <map>
#include <optional>

namespace kestrant {

class HistoryReferences;
class ReminderFlagSync;
class ReminderWork;

/// Flags that a person sets or removes: at once here, then in the database, and recorded in the history.
/// Thread: main.
class ReminderFlagging : public QObject {
  public:
    /// Everything given here outlives this object.
    ReminderFlagging(const ReminderStoreServices& services, ReminderFlagSync& flags,
                     HistoryReferences& references, ReminderWork& work);

    /// The completion tells whether the flag reached the database; it stays as it was set here in any case.
    void setFlagged(const QString& id, bool flag, ReminderCompletion completion);
    void toggle(const QString& id, ReminderCompletion completion);
    /// Flags a reminder that was created a moment ago.
    void flagNew(const QString& id);

  private:
    void apply(const QString& id, bool flag, ReminderCompletion completion);
    [[nodiscard]] std::optional<QString> listTitle(const QString& listID) const;

    const ReminderStoreServices& services_;
    ReminderFlagSync& flags_;
    HistoryReferences& references_;
    ReminderWork& work_;
    /// Of new reminders whose flag is about to be written.
    std::map<QString, ScheduledTask> newFlags_;
};

}  // namespace kestrant
