#include "reminders/store/ReminderArrangement.h"

#include "eventkit/model/HistoryReferences.h"
#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/model/ReminderManualOrder.h"
#include "reminders/store/ReminderActionHistory.h"
#include "reminders/store/ReminderOutcomes.h"

#include <QPointer>
#include <QSet>

#include <utility>

namespace kestrant {
namespace {

QStringList storedOrder(const UserDefaults& defaults) {
    return defaults.stringList(preferenceKeys::reminderManualOrder).value_or(QStringList());
}

}  // namespace

ReminderArrangement::ReminderArrangement(const ReminderStoreServices& services, HistoryReferences& references)
    : services_(services)
    , references_(references)
    , order_(storedOrder(services.defaults)) {
    order_.removeDuplicates();
    if (const auto stored = services.defaults.string(preferenceKeys::reminderSortMode))
        sortMode_ = fromRawValue<ReminderSortMode>(*stored).value_or(sortMode_);
}

void ReminderArrangement::setSortMode(ReminderSortMode mode) {
    const ReminderSortMode before = sortMode_;
    if (mode == before)
        return;
    applySortMode(mode);
    record(
        text("Change sort order", "Changer le tri"),
        {QStringLiteral("Sorted: %1").arg(title(mode).english),
         QStringLiteral("Tri : %1").arg(title(mode).french)},
        [this, before] { applySortMode(before); }, [this, mode] { applySortMode(mode); });
}

void ReminderArrangement::applySortMode(ReminderSortMode mode) {
    if (mode == sortMode_)
        return;
    sortMode_ = mode;
    services_.defaults.set(preferenceKeys::reminderSortMode, rawValue(mode));
    Q_EMIT sortModeChanged();
    Q_EMIT arranged();
}

QStringList ReminderArrangement::present(const QStringList& ids) const {
    QStringList result;
    for (const QString& id : ids)
        result.append(references_.current(id));
    return result;
}

void ReminderArrangement::commitManualOrder(const QStringList& ids, const QString& title) {
    const Placement before{order_, sortMode_};
    const Placement after{mergedManualOrder(order_, present(ids)), ReminderSortMode::manual};
    if (after.ids == before.ids && after.mode == before.mode)
        return;
    const bool switches = after.mode != before.mode;
    apply(after);
    record(
        text("Move reminder", "Déplacer le rappel"),
        outcomeText(switches
                        ? text("“%1” moved · now in manual order", "« %1 » déplacé · ordre manuel désormais")
                        : text("“%1” moved", "« %1 » déplacé"),
                    title),
        [this, before] { restore(before); }, [this, after] { restore(after); });
}

void ReminderArrangement::restore(const Placement& placement) {
    QStringList arranged = present(placement.ids);
    const QSet<QString> placed(order_.begin(), order_.end());
    arranged.removeIf([&](const QString& id) { return !placed.contains(id); });
    apply({mergedManualOrder(order_, arranged), placement.mode});
}

void ReminderArrangement::apply(const Placement& placement) {
    services_.defaults.setStringList(preferenceKeys::reminderManualOrder, placement.ids);
    setManualOrderIDs(placement.ids);
    if (placement.mode == sortMode_)
        Q_EMIT arranged();
    else
        applySortMode(placement.mode);
}

void ReminderArrangement::setManualOrderIDs(const QStringList& ids) {
    if (ids == order_)
        return;
    order_ = ids;
    Q_EMIT manualOrderIDsChanged();
}

void ReminderArrangement::restorePlace(const QString& id, const QStringList& former) {
    setManualOrderIDs(withPlaceRestored(order_, present(former), id));
}

void ReminderArrangement::follow(const QString& formerID, const QString& id) {
    const auto renamed = [&](QStringList ids) {
        if (const auto place = ids.indexOf(formerID); place >= 0)
            ids[place] = id;
        return ids;
    };
    setManualOrderIDs(renamed(order_));
    const QStringList stored = storedOrder(services_.defaults);
    if (const QStringList followed = renamed(stored); followed != stored)
        services_.defaults.setStringList(preferenceKeys::reminderManualOrder, followed);
}

void ReminderArrangement::record(const TextPair& title, const TextPair& outcome, std::function<void()> undo,
                                 std::function<void()> redo) {
    if (!services_.history)
        return;
    const auto operation = [self = QPointer(this)](std::function<void()> work) {
        return [self, work = std::move(work)](const ReminderActionHistory::Done& done) {
            if (self)
                work();
            done({});
        };
    };
    services_.history->record(title, operation(std::move(undo)), operation(std::move(redo)),
                              {.done = outcome});
}

}  // namespace kestrant
