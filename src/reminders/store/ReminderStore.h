#pragma once

#include "foundation/Scheduler.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "reminders/store/CompletionReconciler.h"
#include "reminders/store/PendingCompletions.h"
#include "reminders/store/RecordedChanges.h"
#include "reminders/store/ReminderArrangement.h"
#include "reminders/store/ReminderFlagging.h"
#include "reminders/store/ReminderLoader.h"
#include "reminders/store/ReminderStoreServices.h"
#include "reminders/store/ReminderWork.h"
#include "reminders/store/ReminderWriter.h"
#include "reminders/store/ShownReminders.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// Owns everything the panel shows about reminders and carries out every change to them. State is read
/// through the functions below; each signal says which of it has changed, and is emitted after the change. A
/// signal is never emitted for a change that is none.
///
/// Changes are written to the database at once and end with a completion that is called exactly once, on a
/// later turn, with the failure if there was one; it may be empty. Each is recorded in the history when it
/// has succeeded, a completion when it is asked for; what fails or changes nothing leaves no trace there.
/// Taking it back, and making it again, waits for its write, restores everything the change touched, and
/// fails where somebody else has changed the same since. Nothing is called once the store is gone.
///
/// Thread: main.
class ReminderStore : public QObject {
    Q_OBJECT

  public:
    using Completion = ReminderCompletion;
    using CreationCompletion = ReminderWriter::CreationCompletion;

    /// Posted after a reminder has been created.
    static constexpr auto reminderCreatedNotification = "kestrantReminderCreated";
    /// Posted by the calendar after an event, or a reminder's place in the calendar, has changed; reloads.
    static constexpr auto calendarEventChangedNotification = "kestrantCalendarEventChanged";
    /// Where the home platform lets the person allow access.
    static constexpr auto privacyPage =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Reminders";

    /// Restores the preferences; nothing is fetched before access is granted.
    explicit ReminderStore(ReminderStoreServices services, QObject* parent = nullptr);
    /// Pending completions that were not committed are lost: see commitPendingCompletions().
    ~ReminderStore() override;

    // Access

    [[nodiscard]] const ReminderAccessState& accessState() const { return loader_.accessState(); }
    /// Asks the database to open; on success lists and tasks are loaded.
    void requestAccess() { loader_.requestAccess(); }
    /// Takes the state the database reports; loads when access has become possible. The way out of `failed`.
    void refreshAccessState() { loader_.refreshAccessState(); }
    /// Another database answers from now on: everything of the former one is forgotten, what it answers late
    /// is dropped, and the new one is asked to open if that was. Commit what is pending before.
    void databaseWasExchanged();

    // What is shown

    [[nodiscard]] const std::vector<ReminderList>& lists() const { return loader_.lists(); }
    /// The tasks that pass the filters, in order. The search is not applied.
    [[nodiscard]] const ReminderTaskList& tasks() const { return shown_.tasks(); }
    /// The tasks to show: those of tasks() that the search finds. Cached; reading it again costs nothing.
    [[nodiscard]] const ReminderTaskList& visibleTasks() const { return shown_.visibleTasks(); }
    /// Any open reminder of the last fetch, filtered out or not; null when there is none with this id. The
    /// pointer is good until control returns to the event loop.
    [[nodiscard]] const ReminderTask* task(const QString& id) const { return shown_.task(id); }
    /// Counts over all tasks of the last fetch.
    [[nodiscard]] const ReminderFilterCounts& filterCounts() const { return shown_.filterCounts(); }
    [[nodiscard]] bool isLoading() const { return loader_.isLoading(); }
    /// True once a fetch has been applied, until another database answers.
    [[nodiscard]] bool hasLoaded() const { return loader_.hasLoaded(); }
    /// Completions asked for and not yet committed; their cards look completed.
    [[nodiscard]] const QSet<QString>& pendingCompletionIDs() const { return completions_.ids(); }
    [[nodiscard]] const std::optional<ReminderRevealRequest>& reminderRevealRequest() const {
        return reminderRevealRequest_;
    }
    [[nodiscard]] const std::vector<CompletionRecord>& completionRecords() const {
        return reconciler_.records();
    }
    /// Set while the completion ledger cannot be written.
    [[nodiscard]] const std::optional<TextPair>& completionLedgerError() const { return reconciler_.error(); }
    /// Files or sources of the database that could not be read, one sentence each.
    [[nodiscard]] const std::vector<TextPair>& problems() const { return loader_.problems(); }
    /// Every placed task by id, from first to last.
    [[nodiscard]] const QStringList& manualOrderIDs() const { return arrangement_.manualOrderIDs(); }

    // Selection and presentation

    [[nodiscard]] const std::optional<QString>& selectedListID() const { return loader_.selectedListID(); }
    /// Absent shows all lists. Written to the preferences; loads the tasks anew.
    void setSelectedListID(const std::optional<QString>& id) { loader_.setSelectedListID(id); }
    [[nodiscard]] ReminderSortMode sortMode() const { return arrangement_.sortMode(); }
    /// Written to the preferences and recorded in the history.
    void setSortMode(ReminderSortMode mode) { arrangement_.setSortMode(mode); }
    [[nodiscard]] const ReminderFilters& filters() const { return shown_.filters(); }
    void setShowsTodayOnly(bool on) { setFilter(&ReminderFilters::todayOnly, on); }
    void setShowsOverdueOnly(bool on) { setFilter(&ReminderFilters::overdueOnly, on); }
    void setShowsFlaggedOnly(bool on) { setFilter(&ReminderFilters::flaggedOnly, on); }
    [[nodiscard]] bool isFlagLoading() const { return flags_.isLoading(); }
    /// Why flags set elsewhere are not known; beside the filter for flagged ones.
    [[nodiscard]] const std::optional<TextPair>& flagFilterError() const { return flags_.error(); }
    /// Reminders whose flag is being written.
    [[nodiscard]] const QSet<QString>& pendingFlagIDs() const { return flags_.pendingIDs(); }
    [[nodiscard]] const QString& searchQuery() const { return shown_.searchQuery(); }
    void setSearchQuery(const QString& query) { shown_.setSearchQuery(query); }
    /// The list that receives new reminders when none is selected or chosen.
    [[nodiscard]] std::optional<QString> defaultListID() const;

    // Loading

    void reloadLists() { loader_.reloadLists(); }
    void reloadTasks() { loader_.reloadTasks(); }
    /// Reads the flags set elsewhere; the way to try again after flagFilterError().
    void reloadFlags();
    /// Loads lists, tasks and flags 0.3 s after the last call.
    void scheduleReload() { loader_.scheduleReload(); }
    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake();

    // Changes

    /// On success the completion is given the new reminder's id, and the card is revealed. `known` is called
    /// after a creation whose outcome was unknown at its completion, once it is known.
    void create(const NewReminder& reminder, CreationCompletion completion, CreationCompletion known = {}) {
        writer_.create(reminder, std::move(completion), std::move(known));
    }
    /// The initial content of an edit form; absent when the reminder is gone.
    [[nodiscard]] std::optional<ReminderEditDetails> editDetails(const QString& id) const {
        return writer_.editDetails(id);
    }
    /// How the reminder repeats; empty for not at all.
    [[nodiscard]] std::vector<EKRecurrenceRule> recurrenceRules(const QString& id) const {
        return writer_.recurrenceRules(id);
    }
    /// Writes what differs from the present details. With `repeat`, has the reminder repeat from its due date
    /// on, whatever rules it had; absent, or what it does already, leaves its rules as they are.
    void edit(const QString& id, const ReminderEditDetails& details, std::optional<ReminderRepeat> repeat,
              Completion completion) {
        writer_.edit(id, details, repeat, std::move(completion));
    }
    void edit(const QString& id, const ReminderEditDetails& details, Completion completion) {
        writer_.edit(id, details, std::nullopt, std::move(completion));
    }
    void rename(const QString& id, const QString& title, Completion completion) {
        writer_.rename(id, title, std::move(completion));
    }
    /// `dueDate` as in ReminderEditDetails. The alert keeps its distance where it still can.
    void reschedule(const QString& id, Instant dueDate, bool includesTime, Completion completion);
    /// The same with this alert, or none.
    void reschedule(const QString& id, Instant dueDate, bool includesTime,
                    const std::optional<ReminderAlertSchedule>& alert, Completion completion) {
        writer_.reschedule(id, dueDate, includesTime, alert, std::move(completion));
    }
    /// Also removes the alert and the repetition.
    void clearDueDate(const QString& id, Completion completion) {
        writer_.clearDueDate(id, std::move(completion));
    }
    /// The same, as the calendar's action.
    void removeFromCalendar(const QString& id, Completion completion) {
        writer_.removeFromCalendar(id, std::move(completion));
    }
    void move(const QString& id, const QString& listID, Completion completion) {
        writer_.move(id, listID, std::move(completion));
    }
    void remove(const QString& id, Completion completion) { writer_.remove(id, std::move(completion)); }
    /// Flags or unflags at once. The completion tells whether that reached the database; the flag stays as it
    /// was set here in any case.
    void setFlagged(const QString& id, bool flag, Completion completion) {
        flagging_.setFlagged(id, flag, std::move(completion));
    }
    void toggleFlag(const QString& id, Completion completion) { flagging_.toggle(id, std::move(completion)); }

    /// Marks as completed, to be committed 0.75 s later, or takes the mark back. Does nothing while the
    /// commit is under way. A failure shows as `accessState` `failed`; what was loaded stays.
    void toggleCompletion(const QString& id) { completions_.toggle(id); }
    /// Completes without the wait.
    void completeNow(const QString& id, Completion completion) {
        completions_.completeNow(id, std::move(completion));
    }
    /// Commits every pending completion now, for an orderly end of the program; `done` is called when all
    /// that was begun has ended, the ledger included.
    void commitPendingCompletions(std::function<void()> done);

    /// The order after a drag: the ids of the tasks that were on show, first to last. Tasks that were hidden
    /// keep their places. Written to the preferences and recorded in the history. `moved` is the one that was
    /// dragged, for what is said of it.
    void commitManualOrder(const QStringList& ids, const QString& moved = {});

    void reveal(const QString& id);

    /// Calls back once, on a later turn, when no fetch, change or reconciliation is under way; delayed
    /// reconciliations are brought forward. Not called when the store goes first.
    void whenIdle(std::function<void()> done) { work_.whenIdle(std::move(done)); }

  Q_SIGNALS:
    void accessStateChanged();
    void listsChanged();
    /// tasks() or visibleTasks() has changed.
    void tasksChanged();
    void filterCountsChanged();
    void isLoadingChanged();
    void pendingCompletionIDsChanged();
    void isFlagLoadingChanged();
    void flagFilterErrorChanged();
    void revealRequested(const kestrant::ReminderRevealRequest& request);
    void completionRecordsChanged();
    void completionLedgerErrorChanged();
    void problemsChanged();
    void selectedListIDChanged();
    void sortModeChanged();
    void filtersChanged();
    void searchQueryChanged();
    /// A day has begun or a task fell due: due dates in words and their colour may read differently.
    void presentChanged();

  private:
    void connectSignals();
    void connectParts();
    void setFilter(bool ReminderFilters::*filter, bool on);

    const ReminderStoreServices services_;
    HistoryReferences references_;
    ReminderFlagSync flags_;
    CompletionReconciler reconciler_;
    ReminderWork work_;
    ReminderArrangement arrangement_;
    ReminderLoader loader_;
    ShownReminders shown_;
    RecordedChanges recorder_;
    PendingCompletions completions_;
    ReminderFlagging flagging_;
    ReminderWriter writer_;

    std::optional<ReminderRevealRequest> reminderRevealRequest_;
    /// A reminder that has just come, to be revealed once it has been fetched.
    QString revealOnceLoaded_;
};

}  // namespace kestrant
