#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/store/RecordedChanges.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

class CompletionReconciler;
class ReminderLoader;
class ReminderWork;

/// Creates, edits and removes reminders: what is wanted is checked, written to the database and recorded in
/// the history, and the reminders are loaded anew. Thread: main.
class ReminderWriter : public QObject {
    Q_OBJECT

  public:
    using Completion = ReminderCompletion;
    using CreationCompletion = std::function<void(tl::expected<QString, ReminderStoreError>)>;

    /// Everything given here outlives this object.
    ReminderWriter(const ReminderStoreServices& services, ReminderLoader& loader, RecordedChanges& recorder,
                   CompletionReconciler& reconciler, ReminderWork& work);

    /// `known` is called after a creation whose outcome was unknown at its completion, once it is known.
    void create(const NewReminder& reminder, CreationCompletion completion, CreationCompletion known = {});
    [[nodiscard]] std::optional<ReminderEditDetails> editDetails(const QString& id) const;
    [[nodiscard]] std::vector<EKRecurrenceRule> recurrenceRules(const QString& id) const;
    void edit(const QString& id, const ReminderEditDetails& details, std::optional<ReminderRepeat> repeat,
              Completion completion);
    void rename(const QString& id, const QString& title, Completion completion);
    void reschedule(const QString& id, Instant dueDate, bool includesTime,
                    const std::optional<ReminderAlertSchedule>& alert, Completion completion);
    void clearDueDate(const QString& id, Completion completion);
    void removeFromCalendar(const QString& id, Completion completion);
    void move(const QString& id, const QString& listID, Completion completion);
    void remove(const QString& id, Completion completion);

  Q_SIGNALS:
    /// Before the creation's completion is called.
    void created(const QString& id, bool isFlagged);

  private:
    using Edit = std::function<tl::expected<void, ReminderStoreError>(EKReminderData& reminder)>;
    /// The sentences about the edited reminder.
    using Describe = std::function<TextPair(const EKReminderData& edited)>;

    /// Looks the reminder up, edits it and saves it.
    void change(const TextPair& title, const QString& id, const Edit& edit, const Describe& describe,
                Completion completion);
    /// The end of a write: records it, loads anew and hands over the result.
    [[nodiscard]] EKEventStore::SaveCompletion endOf(const RecordedChangeRef& recorded, const QString& id,
                                                     Completion completion);
    [[nodiscard]] Edit withoutDueDate() const;
    struct CreationEnd {
        CreationCompletion completion;
        CreationCompletion known;
    };
    void saveNew(const NewReminder& reminder, const EKCalendar& list, CreationEnd end);
    void makeNamedList(const NewReminder& reminder, CreationEnd end);
    void makeInitialList(const NewReminder& reminder, CreationEnd end);

    const ReminderStoreServices& services_;
    ReminderLoader& loader_;
    RecordedChanges& recorder_;
    CompletionReconciler& reconciler_;
    ReminderWork& work_;
    /// Creations that wait for the first list to be made.
    std::vector<std::function<void(const tl::expected<EKCalendar, EKError>&)>> waitingForInitialList_;
};

}  // namespace kestrant
