#pragma once

#include "eventkit/model/OpenReminders.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/store/ReminderStoreServices.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace kestrant {

class ReminderWork;

/// Access to the database, and what is read there: the lists, the open reminders of the selected list or of
/// all, and the sources that could not be read. Loads by itself when access becomes possible, and 0.3 s after
/// the database has changed. Thread: main.
class ReminderLoader : public QObject {
    Q_OBJECT

  public:
    /// Restores the selection; nothing is fetched before access is granted. `work` outlives this object.
    ReminderLoader(const ReminderStoreServices& services, ReminderWork& work);

    [[nodiscard]] const ReminderAccessState& accessState() const { return accessState_; }
    [[nodiscard]] const std::vector<ReminderList>& lists() const { return lists_; }
    [[nodiscard]] bool isLoading() const { return isLoading_; }
    [[nodiscard]] bool hasLoaded() const { return hasLoaded_; }
    [[nodiscard]] const std::vector<TextPair>& problems() const { return problems_; }
    [[nodiscard]] const std::optional<QString>& selectedListID() const { return selectedListID_; }
    void setSelectedListID(const std::optional<QString>& id);

    void requestAccess();
    void refreshAccessState();
    /// The database has refused a change for this reason.
    void fail(const TextPair& reason);
    /// Forgets everything, for another database. True when access to the former one had been requested.
    bool forget();

    void reloadLists();
    void reloadTasks();
    /// Lists and tasks; in the state `failed`, the way out of it.
    void reload();
    void scheduleReload();

  Q_SIGNALS:
    void accessStateChanged();
    void listsChanged();
    void isLoadingChanged();
    void problemsChanged();
    void selectedListIDChanged();
    /// A fetch has come back; `isOfOneList` when it was restricted to the selected list.
    void fetched(const kestrant::OpenReminders::Reminders& reminders, bool isOfOneList);
    /// All that belongs to a fetch has been told.
    void loaded();
    /// Flags set elsewhere may have changed.
    void flagsOutdated();

  private:
    void setAccessState(ReminderAccessState state);
    void setLoading(bool loading);
    void updateProblems();

    const ReminderStoreServices& services_;
    ReminderWork& work_;
    ReminderAccessState accessState_;
    std::vector<ReminderList> lists_;
    std::vector<TextPair> problems_;
    std::optional<QString> selectedListID_;
    bool isLoading_ = false;
    bool hasLoaded_ = false;
    int fetchGeneration_ = 0;
    int accessGeneration_ = 0;
    ScheduledTask reloadTask_;
    Subscription storeObserver_;
    Subscription eventObserver_;
    Subscription zoneObserver_;
};

}  // namespace kestrant
