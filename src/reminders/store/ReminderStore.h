#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/ZoneCalendar.h"
#include "reminders/flags/ReminderFlagSync.h"
#include "reminders/model/ReminderFiltering.h"
#include "reminders/model/ReminderOrdering.h"
#include "reminders/model/ReminderStoreError.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/model/ReminderTaskList.h"
#include "reminders/store/CompletionReconciler.h"
#include "reminders/store/ReminderActionHistory.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace kestrant {

class Localization;
class NotificationCenter;
class UserDefaults;

/// What a ReminderStore works with. Everything here outlives the store.
struct ReminderStoreServices {
    EKEventStore& eventStore;
    Scheduler& scheduler;
    Clock& clock;
    CurrentCalendar& calendar;
    UserDefaults& defaults;
    /// The language of the first list, and the locale of titles' order and of search.
    Localization& localization;
    NotificationCenter& notifications;
    CompletionLedgerRepository& ledger;
    /// Told the number of completions that were just committed from here; may be empty.
    std::function<void(int count)> completionsCommitted;
    /// May be null: then nothing is recorded.
    ReminderActionHistory* history = nullptr;
    /// May be null: then flags are kept by this program alone.
    FlaggedReminderAutomation* flags = nullptr;
};

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
    using Completion = std::function<void(tl::expected<void, ReminderStoreError>)>;
    using CreationCompletion = std::function<void(tl::expected<QString, ReminderStoreError>)>;

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

    [[nodiscard]] const ReminderAccessState& accessState() const { return accessState_; }
    /// Asks the database to open; on success lists and tasks are loaded.
    void requestAccess();
    /// Takes the state the database reports; loads when access has become possible. The way out of `failed`.
    void refreshAccessState();
    /// Another database answers from now on: everything of the former one is forgotten, what it answers late
    /// is dropped, and the new one is asked to open if that was. Commit what is pending before.
    void databaseWasExchanged();

    // What is shown

    [[nodiscard]] const std::vector<ReminderList>& lists() const { return lists_; }
    /// The tasks that pass the filters, in order. The search is not applied.
    [[nodiscard]] const ReminderTaskList& tasks() const { return tasks_; }
    /// The tasks to show: those of tasks() that the search finds. Cached; reading it again costs nothing.
    [[nodiscard]] const ReminderTaskList& visibleTasks() const;
    /// Any open reminder of the last fetch, filtered out or not; null when there is none with this id. The
    /// pointer is good until control returns to the event loop.
    [[nodiscard]] const ReminderTask* task(const QString& id) const;
    /// Counts over all tasks of the last fetch.
    [[nodiscard]] const ReminderFilterCounts& filterCounts() const { return filterCounts_; }
    [[nodiscard]] bool isLoading() const { return isLoading_; }
    /// True once a fetch has been applied, until another database answers.
    [[nodiscard]] bool hasLoaded() const { return hasLoaded_; }
    /// Completions asked for and not yet committed; their cards look completed.
    [[nodiscard]] const QSet<QString>& pendingCompletionIDs() const { return pendingCompletionIDs_; }
    [[nodiscard]] const std::optional<ReminderRevealRequest>& reminderRevealRequest() const {
        return reminderRevealRequest_;
    }
    [[nodiscard]] const std::vector<CompletionRecord>& completionRecords() const {
        return reconciler_.records();
    }
    /// Set while the completion ledger cannot be written.
    [[nodiscard]] const std::optional<TextPair>& completionLedgerError() const { return reconciler_.error(); }
    /// Files or sources of the database that could not be read, one sentence each.
    [[nodiscard]] const std::vector<TextPair>& problems() const { return problems_; }
    /// Every placed task by id, from first to last.
    [[nodiscard]] const QStringList& manualOrderIDs() const { return manualOrderIDs_; }

    // Selection and presentation

    [[nodiscard]] const std::optional<QString>& selectedListID() const { return selectedListID_; }
    /// Absent shows all lists. Written to the preferences; loads the tasks anew.
    void setSelectedListID(const std::optional<QString>& id);
    [[nodiscard]] ReminderSortMode sortMode() const { return sortMode_; }
    /// Written to the preferences and recorded in the history.
    void setSortMode(ReminderSortMode mode);
    [[nodiscard]] const ReminderFilters& filters() const { return filters_; }
    void setShowsTodayOnly(bool on);
    void setShowsOverdueOnly(bool on);
    void setShowsFlaggedOnly(bool on);
    [[nodiscard]] bool isFlagLoading() const { return flags_.isLoading(); }
    /// Why flags set elsewhere are not known; beside the filter for flagged ones.
    [[nodiscard]] const std::optional<TextPair>& flagFilterError() const { return flags_.error(); }
    /// Reminders whose flag is being written.
    [[nodiscard]] const QSet<QString>& pendingFlagIDs() const { return flags_.pendingIDs(); }
    [[nodiscard]] const QString& searchQuery() const { return searchQuery_; }
    void setSearchQuery(const QString& query);
    /// The list that receives new reminders when none is selected or chosen.
    [[nodiscard]] std::optional<QString> defaultListID() const;
    void setDefaultListID(const std::optional<QString>& id);

    // Loading

    void reloadLists();
    void reloadTasks();
    /// Reads the flags set elsewhere; the way to try again after flagFilterError().
    void reloadFlags();
    /// Loads lists, tasks and flags 0.3 s after the last call.
    void scheduleReload();
    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake();

    // Changes

    /// On success the completion is given the new reminder's id, and the card is revealed.
    void create(const NewReminder& reminder, CreationCompletion completion);
    /// What an edit form starts from; absent when the reminder is gone.
    [[nodiscard]] std::optional<ReminderEditDetails> editDetails(const QString& id) const;
    /// How the reminder repeats; empty for not at all.
    [[nodiscard]] std::vector<EKRecurrenceRule> recurrenceRules(const QString& id) const;
    /// Writes what differs from the present details.
    void edit(const QString& id, const ReminderEditDetails& details, Completion completion) {
        edit(id, details, std::nullopt, std::move(completion));
    }
    /// The same, and has the reminder repeat from its due date on, whatever rules it had. Absent, or what it
    /// does already, leaves its rules as they are.
    void edit(const QString& id, const ReminderEditDetails& details, std::optional<ReminderRepeat> repeat,
              Completion completion);
    void rename(const QString& id, const QString& title, Completion completion);
    /// `dueDate` as in ReminderEditDetails. The alert keeps its distance where it still can.
    void reschedule(const QString& id, Instant dueDate, bool includesTime, Completion completion);
    /// The same with this alert, or none.
    void reschedule(const QString& id, Instant dueDate, bool includesTime,
                    const std::optional<ReminderAlertSchedule>& alert, Completion completion);
    /// Also removes the alert and the repetition.
    void clearDueDate(const QString& id, Completion completion);
    /// The same, as the calendar's action.
    void removeFromCalendar(const QString& id, Completion completion);
    void move(const QString& id, const QString& listID, Completion completion);
    void remove(const QString& id, Completion completion);
    /// Flags or unflags at once. The completion tells whether that reached the database; the flag stays as it
    /// was set here in any case.
    void setFlagged(const QString& id, bool flag, Completion completion);
    void toggleFlag(const QString& id, Completion completion);

    /// Marks as completed, to be committed 0.75 s later, or takes the mark back. Does nothing while the
    /// commit is under way. A failure shows as `accessState` `failed`; what was loaded stays.
    void toggleCompletion(const QString& id);
    /// Completes without the wait.
    void completeNow(const QString& id, Completion completion);
    /// Commits every pending completion now, for an orderly end of the program; `done` is called when all
    /// that was begun has ended, the ledger included.
    void commitPendingCompletions(std::function<void()> done);

    /// The order after a drag: the ids of the tasks that were on show, first to last. Tasks that were hidden
    /// keep their places. Written to the preferences and recorded in the history. `moved` is the one that was
    /// dragged, for what is said of it.
    void commitManualOrder(const QStringList& ids, const QString& moved = {});

    void reveal(const QString& id);

    // For programs that end

    /// Calls back once, on a later turn, when no fetch, change or reconciliation is under way; delayed
    /// reconciliations are brought forward. Not called when the store goes first.
    void whenIdle(std::function<void()> done);

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
    void pendingFlagIDsChanged();
    void revealRequested(const kestrant::ReminderRevealRequest& request);
    void completionRecordsChanged();
    void completionLedgerErrorChanged();
    void manualOrderIDsChanged();
    void problemsChanged();
    void selectedListIDChanged();
    void sortModeChanged();
    void filtersChanged();
    void searchQueryChanged();
    void defaultListIDChanged();
    /// A day has begun or a task fell due: due dates in words and their colour may read differently.
    void presentChanged();

  private:
    struct Placement {
        QStringList ids;
        ReminderSortMode mode = ReminderSortMode::manual;
    };
    using Edit = std::function<tl::expected<void, ReminderStoreError>(EKReminderData& reminder)>;

    void restorePreferences();
    void observe();
    /// Titles are ordered by the language's own rules.
    void languageChanged();

    void setAccessState(ReminderAccessState state);
    void reload();
    void applyFetch(EKReminders reminders, bool isRestricted);
    /// Those that were fetched before are taken over.
    [[nodiscard]] std::vector<ReminderTask> tasksOf(const EKReminders& reminders,
                                                    const ZoneCalendar& calendar) const;
    void updateProblems();
    void setFetchedTasks(std::vector<ReminderTask> tasks);
    void updateManualOrder(bool isRestricted);
    void setManualOrderIDs(QStringList ids);
    [[nodiscard]] ReminderTaskList filteredTasks(ReminderSortMode mode) const;
    /// Filters and orders the fetched tasks anew.
    void recompute();
    /// Takes the present anew: counts, filters, and the moment at which to do it again.
    void recomputeForPresent();
    void presentDidChange();
    void setFilters(const ReminderFilters& filters);
    void applySortMode(ReminderSortMode mode);
    void applyPlacement(const Placement& placement);
    void restorePlacement(const Placement& placement);
    void record(const TextPair& title, const TextPair& outcome, std::function<void()> undo,
                std::function<void()> redo);
    [[nodiscard]] ReminderPresent present() const;

    struct RecordedChange;
    using RecordedChangeRef = std::shared_ptr<RecordedChange>;
    enum class ChangeKind { creation, edit, removal, completion };
    struct HistoryReference;
    using HistoryReferenceRef = std::shared_ptr<HistoryReference>;
    [[nodiscard]] HistoryReferenceRef referenceTo(const QString& id);
    /// For the history's entry of a change whose write begins now.
    RecordedChangeRef recordChange(ChangeKind kind, const TextPair& title, const TextPair& outcome,
                                   const QString& id);
    RecordedChangeRef recordCompletion(const QString& id);
    /// When the reminder is due, in words.
    [[nodiscard]] std::optional<TextPair> dueInWords(const EKReminderData& reminder) const;
    [[nodiscard]] RecordedChangeRef newRecordedChange(ChangeKind kind, const QString& id);
    void endRecording(const RecordedChangeRef& recorded, const tl::expected<EKSaveResult, EKError>& result);
    /// Ends it at once, or when it is known what became of the change.
    void endRecordingOnceKnown(const RecordedChangeRef& recorded, const QString& id,
                               const tl::expected<EKSaveResult, EKError>& result);
    void withdraw(const RecordedChangeRef& recorded);
    /// Takes the change back, or makes it again.
    [[nodiscard]] ReminderActionHistory::Operation replayOf(const RecordedChangeRef& recorded);
    void replay(const RecordedChangeRef& recorded, const ReminderActionHistory::Done& done);
    void replayed(const RecordedChangeRef& recorded, const EKSaveResult& result);
    /// Whatever is known of the reminder by its identifier is known by this one from here on.
    void follow(const RecordedChange& recorded, const QString& id);
    /// What a reminder is called now, if undoing its removal gave it a new identifier.
    [[nodiscard]] QString currentID(const QString& id) const;

    /// What is said of the edited reminder.
    using Describe = std::function<TextPair(const EKReminderData& edited)>;
    /// Looks the reminder up, edits it and saves it.
    void change(const TextPair& title, const QString& id, const Edit& edit, const Describe& describe,
                Completion completion);
    void saveNew(const NewReminder& reminder, const EKCalendar& list, CreationCompletion completion);
    void makeInitialList(const NewReminder& reminder, CreationCompletion completion);
    void answer(const Completion& completion, tl::expected<void, ReminderStoreError> result);

    void cancelCompletion(const QString& id);
    void commitCompletion(const QString& id, Completion completion);
    void commitCompletion(const QString& id, Completion completion, const RecordedChangeRef& recorded);
    void completionSaved(const QString& id, const EKReminderRef& reminder, const RecordedChangeRef& recorded,
                         const tl::expected<EKSaveResult, EKError>& result);
    void completionCommitted(const EKReminder& reminder, const EKSaveResult& result);
    void setPendingCompletion(const QString& id, bool pending);

    void applyFlag(const QString& id, bool flag, Completion completion);
    /// Writes the flag of a reminder that was created a moment ago.
    void writeFlagOfNew(const QString& id);
    void refreshFlags();
    [[nodiscard]] std::optional<QString> listTitleOf(const EKReminderData& reminder) const;

    void beginActivity() { ++activities_; }
    void endActivity();
    void callBackWhenIdle();

    ReminderStoreServices services_;

    ReminderAccessState accessState_;
    std::vector<ReminderList> lists_;
    /// What the last fetch found, and the calendar that was used to understand it.
    struct Fetched {
        EKReminders reminders;
        std::optional<ZoneCalendar> calendar;
    };
    Fetched fetched_;
    /// The tasks of it, but for those that were completed since.
    ReminderTaskList::Tasks fetchedTasks_ = std::make_shared<const std::vector<ReminderTask>>();
    ReminderOrdering ordering_;
    ReminderTaskList tasks_;
    ReminderFilterCounts filterCounts_;
    std::vector<TextPair> problems_;
    bool isLoading_ = false;
    bool hasLoaded_ = false;
    int fetchGeneration_ = 0;
    int accessGeneration_ = 0;
    ReminderFlagSync flags_;
    /// Of new reminders whose flag is about to be written.
    std::map<QString, ScheduledTask> flagWriteTasks_;

    /// The tasks found by the search; absent when it has to be carried out again, unused while the query is
    /// blank.
    mutable std::optional<ReminderTaskList> visibleTasksCache_;

    std::optional<QString> selectedListID_;
    ReminderSortMode sortMode_ = ReminderSortMode::dueDate;
    ReminderFilters filters_;
    QString searchQuery_;
    QStringList manualOrderIDs_;

    QSet<QString> pendingCompletionIDs_;
    std::map<QString, ScheduledTask> completionTasks_;
    /// Completions being written, with everybody who waits for them.
    std::map<QString, std::vector<Completion>> committing_;
    /// The entries of completions that are pending.
    std::map<QString, RecordedChangeRef> recordedCompletions_;
    CompletionReconciler reconciler_;

    std::map<QString, std::weak_ptr<HistoryReference>> historyReferences_;

    std::optional<ReminderRevealRequest> reminderRevealRequest_;
    /// A reminder that was just created, to be revealed once it has been fetched.
    QString revealOnceLoaded_;
    /// Creations that wait for the first list to be made.
    std::vector<std::function<void(const tl::expected<EKCalendar, EKError>&)>> waitingForInitialList_;

    int activities_ = 0;
    std::vector<std::function<void()>> idleWaiters_;

    ScheduledTask eventStoreReloadTask_;
    ScheduledTask presentTask_;
    Subscription eventStoreObserver_;
    Subscription calendarEventObserver_;
    Subscription zoneObserver_;
    Subscription languageObserver_;
};

}  // namespace kestrant
