#include "reminders/store/ReminderStore.h"

#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/store/ReminderActionHistory.h"

#include <QUuid>

namespace kestrant {

ReminderStore::ReminderStore(ReminderStoreServices services, QObject* parent)
    : QObject(parent)
    , services_(std::move(services))
    , flags_(services_.scheduler, services_.defaults, services_.flags)
    , reconciler_(services_.eventStore, services_.scheduler, services_.clock, services_.currentZone,
                  services_.ledger)
    , work_(services_.scheduler, [this] { return flags_.isBusy() || reconciler_.bringForward(); })
    , arrangement_(services_, references_)
    , loader_(services_, work_)
    , shown_(services_, arrangement_, flags_)
    , recorder_(services_, references_, arrangement_, flags_, reconciler_, work_)
    , completions_(services_, loader_, shown_, recorder_, reconciler_, work_)
    , flagging_(services_, flags_, references_, work_)
    , writer_(services_, loader_, recorder_, reconciler_, work_) {
    connectParts();
    connectSignals();
}

ReminderStore::~ReminderStore() = default;

void ReminderStore::connectParts() {
    connect(&loader_, &ReminderLoader::fetched, &shown_, &ShownReminders::show);
    connect(&loader_, &ReminderLoader::loaded, this, [this] {
        if (!revealOnceLoaded_.isEmpty())
            reveal(std::exchange(revealOnceLoaded_, {}));
        reconciler_.schedule();
    });
    connect(&loader_, &ReminderLoader::flagsOutdated, this, &ReminderStore::reloadFlags);
    connect(&recorder_, &RecordedChanges::changed, &loader_, &ReminderLoader::reload);
    connect(&recorder_, &RecordedChanges::cameBack, this,
            [this](const QString& id) { revealOnceLoaded_ = id; });
    connect(&writer_, &ReminderWriter::created, this, [this](const QString& id, bool isFlagged) {
        if (isFlagged)
            flagging_.flagNew(id);
        revealOnceLoaded_ = id;
        services_.notifications.post(QLatin1String(reminderCreatedNotification));
    });
    connect(&reconciler_, &CompletionReconciler::ended, this, [this] { work_.check(); });
    connect(&flags_, &ReminderFlagSync::ended, this, [this] { work_.check(); });
}

void ReminderStore::connectSignals() {
    using Store = ReminderStore;
    connect(&loader_, &ReminderLoader::accessStateChanged, this, &Store::accessStateChanged);
    connect(&loader_, &ReminderLoader::listsChanged, this, &Store::listsChanged);
    connect(&loader_, &ReminderLoader::isLoadingChanged, this, &Store::isLoadingChanged);
    connect(&loader_, &ReminderLoader::problemsChanged, this, &Store::problemsChanged);
    connect(&loader_, &ReminderLoader::selectedListIDChanged, this, &Store::selectedListIDChanged);
    connect(&shown_, &ShownReminders::tasksChanged, this, &Store::tasksChanged);
    connect(&shown_, &ShownReminders::filterCountsChanged, this, &Store::filterCountsChanged);
    connect(&shown_, &ShownReminders::filtersChanged, this, &Store::filtersChanged);
    connect(&shown_, &ShownReminders::searchQueryChanged, this, &Store::searchQueryChanged);
    connect(&shown_, &ShownReminders::presentChanged, this, &Store::presentChanged);
    connect(&arrangement_, &ReminderArrangement::sortModeChanged, this, &Store::sortModeChanged);
    connect(&completions_, &PendingCompletions::idsChanged, this, &Store::pendingCompletionIDsChanged);
    connect(&flags_, &ReminderFlagSync::isLoadingChanged, this, &Store::isFlagLoadingChanged);
    connect(&flags_, &ReminderFlagSync::errorChanged, this, &Store::flagFilterErrorChanged);
    connect(&reconciler_, &CompletionReconciler::recordsChanged, this, &Store::completionRecordsChanged);
    connect(&reconciler_, &CompletionReconciler::errorChanged, this, &Store::completionLedgerErrorChanged);
}

void ReminderStore::databaseWasExchanged() {
    const bool wasRequested = loader_.forget();
    shown_.clear();
    if (services_.history)
        services_.history->clear();
    if (wasRequested)
        requestAccess();
}

void ReminderStore::reloadFlags() {
    if (accessState().kind == ReminderAccessState::Kind::authorized)
        flags_.load();
}

void ReminderStore::systemDidWake() {
    shown_.presentDidChange();
    if (services_.history)
        services_.history->removeExpired();
}

void ReminderStore::setFilter(bool ReminderFilters::*filter, bool on) {
    ReminderFilters filters = shown_.filters();
    filters.*filter = on;
    shown_.setFilters(filters);
}

std::optional<QString> ReminderStore::defaultListID() const {
    return services_.defaults.string(preferenceKeys::defaultReminderListID);
}

void ReminderStore::reschedule(const QString& id, Instant dueDate, bool includesTime, Completion completion) {
    const auto present = editDetails(id);
    reschedule(id, dueDate, includesTime, present ? present->dueAlertSchedule : std::nullopt,
               std::move(completion));
}

void ReminderStore::commitPendingCompletions(std::function<void()> done) {
    completions_.commitAll();
    // Before anything was shown nothing can have been changed, and the first reading may take long.
    if (!hasLoaded())
        return services_.scheduler.post(std::move(done));
    whenIdle(std::move(done));
}

void ReminderStore::commitManualOrder(const QStringList& ids, const QString& moved) {
    const ReminderTask* dragged = task(moved);
    arrangement_.commitManualOrder(ids, dragged ? dragged->title : QString());
}

void ReminderStore::reveal(const QString& id) {
    reminderRevealRequest_ = {QUuid::createUuid(), id};
    Q_EMIT revealRequested(*reminderRevealRequest_);
}

}  // namespace kestrant
