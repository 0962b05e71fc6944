#pragma once

#include "eventkit/EKEventStore.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/ZoneCalendar.h"
#include "reminders/ReminderFiltering.h"
#include "reminders/ReminderFlagIndex.h"
#include "reminders/ReminderStoreError.h"
#include "reminders/ReminderTask.h"

#include <QLocale>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrant {

class CompletionLedgerRepository;
class NotificationCenter;
class ReminderActionHistory;
class UserDefaults;
struct CompletionRecord;

/// What a ReminderStore works with. Everything here outlives the store.
struct ReminderStoreServices {
    EKEventStore& eventStore;
    Scheduler& scheduler;
    Clock& clock;
    CurrentCalendar& calendar;
    UserDefaults& defaults;
    NotificationCenter& notifications;
    CompletionLedgerRepository& ledger;
    /// The locale of titles' order and of search, asked anew for each recomputation.
    std::function<QLocale()> locale;
    /// Told the number of completions that were just committed from here; may be empty.
    std::function<void(int count)> completionsCommitted;
    /// May be null: then nothing is recorded.
    ReminderActionHistory* history = nullptr;
};

/// Owns everything the panel shows about reminders and carries out every change to them. State is read
/// through the functions below; each signal says which of it has changed, and is emitted after the change. A
/// signal is never emitted for a change that is none.
///
/// Changes are written to the database at once and end with a completion that is called exactly once, on a
/// later turn, with the failure if there was one; it may be empty. It is called even when the store is gone
/// by then.
///
/// Thread: main.
class ReminderStore : public QObject {
    Q_OBJECT

  public:
    using Completion = std::function<void(tl::expected<void, ReminderStoreError>)>;
    using CreationCompletion = std::function<void(tl::expected<QString, ReminderStoreError>)>;

    /// Posted after a reminder has been created.
    static constexpr auto reminderCreatedNotification = "kestrantReminderCreated";
    /// Where the home platform lets the person allow access.
    static constexpr auto privacyPage =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Reminders";

    /// Restores the preferences; nothing is fetched before access is granted.
    explicit ReminderStore(ReminderStoreServices services, QObject* parent = nullptr);
    /// Pending completions that were not committed are lost: see commitPendingCompletions().
    ~ReminderStore() override;

    // Access

    [[nodiscard]] const ReminderAccessState& accessState() const;
    /// Asks the database to open; on success lists and tasks are loaded.
    void requestAccess();
    /// Takes the state the database reports; loads when access has become possible. The way out of `failed`.
    void refreshAccessState();

    // What is shown

    [[nodiscard]] const std::vector<ReminderList>& lists() const;
    /// The tasks that pass the filters, in order. The search is not applied.
    [[nodiscard]] const std::vector<ReminderTask>& tasks() const;
    /// The tasks to show: those of tasks() that the search finds. Cached; reading it again costs nothing.
    [[nodiscard]] const std::vector<ReminderTask>& visibleTasks() const;
    /// Any open reminder of the last fetch, filtered out or not; null when there is none with this id. The
    /// pointer is good until control returns to the event loop.
    [[nodiscard]] const ReminderTask* task(const QString& id) const;
    /// Counts over all tasks of the last fetch.
    [[nodiscard]] const ReminderFilterCounts& filterCounts() const;
    [[nodiscard]] bool isLoading() const;
    /// True once a fetch has been applied.
    [[nodiscard]] bool hasLoaded() const;
    /// Completions asked for and not yet committed; their cards look completed.
    [[nodiscard]] const QSet<QString>& pendingCompletionIDs() const;
    [[nodiscard]] const std::optional<ReminderRevealRequest>& reminderRevealRequest() const;
    [[nodiscard]] const std::vector<CompletionRecord>& completionRecords() const;
    [[nodiscard]] const std::optional<TextPair>& completionLedgerError() const;
    /// Every placed task by id, from first to last.
    [[nodiscard]] const QStringList& manualOrderIDs() const;

    // Selection and presentation

    [[nodiscard]] const std::optional<QString>& selectedListID() const;
    /// Absent shows all lists. Written to the preferences; loads the tasks anew.
    void setSelectedListID(const std::optional<QString>& id);
    [[nodiscard]] ReminderSortMode sortMode() const;
    /// Written to the preferences and recorded in the history.
    void setSortMode(ReminderSortMode mode);
    [[nodiscard]] const ReminderFilters& filters() const;
    void setShowsTodayOnly(bool on);
    void setShowsOverdueOnly(bool on);
    void setShowsFlaggedOnly(bool on);
    [[nodiscard]] const QString& searchQuery() const;
    void setSearchQuery(const QString& query);
    /// The list that receives new reminders when none is selected or chosen.
    [[nodiscard]] std::optional<QString> defaultListID() const;
    void setDefaultListID(const std::optional<QString>& id);

    // Loading

    void reloadLists();
    void reloadTasks();
    /// Loads lists and tasks 0.3 s after the last call.
    void scheduleReload();
    /// To be called when the machine has woken up: timers stand still while it sleeps.
    void systemDidWake();

    // Changes

    /// On success the completion is given the new reminder's id, and the card is revealed.
    void create(const NewReminder& reminder, CreationCompletion completion);
    /// What an edit form starts from; absent when the reminder is gone.
    [[nodiscard]] std::optional<ReminderEditDetails> editDetails(const QString& id) const;
    /// Writes what differs from the present details.
    void edit(const QString& id, const ReminderEditDetails& details, Completion completion);
    void rename(const QString& id, const QString& title, Completion completion);
    /// `dueDate` as in ReminderEditDetails. The alert keeps its distance where it still can.
    void reschedule(const QString& id, Instant dueDate, bool includesTime, Completion completion);
    /// Also removes the alert.
    void clearDueDate(const QString& id, Completion completion);
    void move(const QString& id, const QString& listID, Completion completion);
    void remove(const QString& id, Completion completion);

    /// Marks as completed, to be committed 0.75 s later, or takes the mark back. Does nothing while the
    /// commit is under way. A failure shows as `accessState` `failed`.
    void toggleCompletion(const QString& id);
    /// Completes without the wait.
    void completeNow(const QString& id, Completion completion);
    /// Commits every pending completion now, for an orderly end of the program; `done` is called when all
    /// that was begun has ended, the ledger included.
    void commitPendingCompletions(std::function<void()> done);

    /// The order after a drag: the ids of the tasks that were on show, first to last. Tasks that were hidden
    /// keep their places. Written to the preferences and recorded in the history.
    void commitManualOrder(const QStringList& ids);

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
    void revealRequested(const kestrant::ReminderRevealRequest& request);
    void completionRecordsChanged();
    void completionLedgerErrorChanged();
    void manualOrderIDsChanged();
    void selectedListIDChanged();
    void sortModeChanged();
    void filtersChanged();
    void searchQueryChanged();
    void defaultListIDChanged();
    /// A day has begun or a task fell due: due dates in words and their colour may read differently.
    void presentChanged();

  private:
    ReminderStoreServices services_;
};

}  // namespace kestrant
