#pragma once

#include "eventkit/model/EKTypes.h"

#include <memory>

namespace kestrant {

class EKEventStore;

/// One reminder in hand: the values it was read with and the values as edited. Nothing reaches the database
/// before EKEventStore::save(). Always held by std::shared_ptr. Thread: the one that received it from a fetch
/// (or made it).
class EKReminder {
  public:
    /// A new reminder that no list holds yet.
    explicit EKReminder(EKEventStore& store);
    /// A reminder as it was read, to be changed.
    EKReminder(EKEventStore& store, std::shared_ptr<const EKReminderData> stored);

    /// The edited values; change them freely. calendarItemIdentifier is the store's to set; it is empty until
    /// the first save. Setting isCompleted also sets or clears completionDate when it is saved.
    EKReminderData data;

    [[nodiscard]] const QString& calendarItemIdentifier() const { return data.calendarItemIdentifier; }
    [[nodiscard]] bool hasRecurrenceRules() const { return !data.recurrenceRules.empty(); }
    [[nodiscard]] bool isNew() const { return !stored_; }
    [[nodiscard]] bool hasChanges() const { return !stored_ || *stored_ != data; }

    void addAlarm(const EKAlarm& alarm);
    /// Removes the first alarm that equals this one.
    void removeAlarm(const EKAlarm& alarm);

    /// Takes the database's present values for every property that was not edited. False when the reminder is
    /// not in the database any more; the values in hand then stay. Reads memory only.
    [[nodiscard]] bool refresh();
    /// Drops every edit: the values are again those of the last read or save.
    void reset();

    /// The values as read, from which the store derives the changes; null for a new reminder.
    [[nodiscard]] const std::shared_ptr<const EKReminderData>& stored() const { return stored_; }
    /// For event stores: the reminder now is what the database holds.
    void setStored(std::shared_ptr<const EKReminderData> stored);

  private:
    EKEventStore& store_;
    std::shared_ptr<const EKReminderData> stored_;
};

using EKReminderRef = std::shared_ptr<EKReminder>;

}  // namespace kestrant
