#include "ui/recap/CelebrationViewModel.h"

#include "cues/SensoryFeedback.h"
#include "eventkit/model/EKEventStore.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/DateComponents.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Preferences.h"
#include "reminders/model/ReminderFiltering.h"
#include "reminders/store/ReminderStore.h"
#include "ui/panel/Localizer.h"

#include <QJsonObject>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

/// The completed card has closed by then, and further ones count as one occasion.
constexpr Duration settlingDelay = std::chrono::milliseconds(400);
constexpr std::chrono::milliseconds length{1'500};

const QString dayKey = QStringLiteral("day");
const QString weekKey = QStringLiteral("week");
const QString roundNumberKey = QStringLiteral("roundNumber");

Celebrated celebratedIn(const UserDefaults& defaults) {
    const QJsonObject stored = defaults.object(preferenceKeys::celebrated).toObject();
    return {.day = QDate::fromString(stored.value(dayKey).toString(), Qt::ISODate),
            .week = QDate::fromString(stored.value(weekKey).toString(), Qt::ISODate),
            .roundNumber = stored.value(roundNumberKey).toInt()};
}

QJsonObject stored(const Celebrated& celebrated) {
    return {{dayKey, celebrated.day.toString(Qt::ISODate)},
            {weekKey, celebrated.week.toString(Qt::ISODate)},
            {roundNumberKey, celebrated.roundNumber}};
}

}  // namespace

CelebrationViewModel::CelebrationViewModel(const Services& services, QObject* parent)
    : QObject(parent)
    , services_(services) {
    connect(&services_.reminders, &ReminderStore::pendingCompletionIDsChanged, this,
            &CelebrationViewModel::notePending);
    connect(&services_.interaction, &NotchInteractionModel::phaseChanged, this,
            &CelebrationViewModel::dismiss);
}

int CelebrationViewModel::duration() {
    return int(length.count());
}

QString CelebrationViewModel::title() const {
    if (!celebration_)
        return {};
    switch (celebration_->reason) {
    case CelebrationReason::dayDone:
        return services_.localizer(text("All done for today", "Tout est fait pour aujourd’hui"));
    case CelebrationReason::weekKept:
        return services_.localizer(text("A whole week kept", "Une semaine tenue d’un bout à l’autre"));
    case CelebrationReason::roundNumber:
        break;
    }
    return services_.localizer(text("%1 reminders completed", "%1 rappels terminés"))
        .arg(services_.localizer.locale().toString(celebration_->count));
}

QString CelebrationViewModel::detail() const {
    if (!celebration_)
        return {};
    const auto counted = [this](int count, const TextPair& one, const TextPair& several) {
        return services_.localizer(count == 1 ? one : several).arg(count);
    };
    QString days = celebration_->streak < 2
                       ? QString()
                       : counted(celebration_->streak, {}, text("%1 days in a row", "%1 jours de suite"));
    if (celebration_->reason == CelebrationReason::roundNumber)
        return days;
    QString completed =
        counted(celebration_->count, text("%1 completed", "%1 terminé"), text("%1 completed", "%1 terminés"));
    if (days.isEmpty() || celebration_->reason == CelebrationReason::weekKept)
        return completed;
    return completed + QStringLiteral(" · ") + days;
}

void CelebrationViewModel::notePending() {
    const auto present = ReminderTimeContext::at(services_.clock.now(), services_.currentZone.zone());
    for (const QString& id : services_.reminders.pendingCompletionIDs()) {
        const ReminderTask* task = services_.reminders.task(id);
        if (task && isDueToday(*task, present))
            ofToday_.insert(id);
    }
}

void CelebrationViewModel::noteCompleted(int count) {
    completedHere_ += count;
    looking_ = services_.scheduler.after(settlingDelay, [this] {
        // The record of completions has taken them in by then.
        services_.reminders.whenIdle([self = QPointer(this)] {
            if (self)
                self->look();
        });
    });
}

void CelebrationViewModel::look() {
    const TimeZone zone = services_.currentZone.zone();
    const QDate today = zone.dayOf(services_.clock.now());
    const Instant start = zone.startOfDay(today);
    const Instant end = zone.startOfDay(today.addDays(1));
    // The store may hold one list alone.
    services_.eventStore.fetchReminders(EKEventStore::predicateForIncompleteReminders(start, end, {}),
                                        [self = QPointer(this), zone, start, end](const EKReminders& open) {
                                            if (!self)
                                                return;
                                            self->decide(std::ranges::any_of(open, [&](const auto& reminder) {
                                                const auto due =
                                                    reminder->dueDateComponents
                                                        ? zone.instantFrom(*reminder->dueDateComponents)
                                                        : std::nullopt;
                                                return due && *due >= start && *due < end;
                                            }));
                                        });
}

void CelebrationViewModel::decide(bool anythingOfTodayIsOpen) {
    const int completedHere = std::exchange(completedHere_, 0);
    const QSet<QString> ofToday = std::exchange(ofToday_, {});
    if (completedHere == 0 || !services_.preferences.celebrates() || !services_.interaction.isExpanded())
        return;
    const TimeZone zone = services_.currentZone.zone();
    const Instant now = services_.clock.now();
    const QDate today = zone.dayOf(now);
    const auto& records = services_.reminders.completionRecords();
    const std::vector<CompletedDay> days = completedDays(records, zone, now);
    const auto recap = [&](RecapKind kind) {
        return recapOf(periodContaining(kind, today, services_.locale().firstDayOfWeek()), days, today);
    };
    UserDefaults& defaults = services_.preferences.defaults();
    const Celebrated before = celebratedIn(defaults);
    Celebrated celebrated = before;
    const auto celebration =
        celebrationFor({.today = today,
                        .completedHere = completedHere,
                        .completedLastOfToday = !anythingOfTodayIsOpen && !ofToday.isEmpty(),
                        .total = int(records.size()),
                        .day = recap(RecapKind::day),
                        .week = recap(RecapKind::week)},
                       celebrated);
    if (celebrated != before)
        defaults.set(preferenceKeys::celebrated, stored(celebrated));
    if (celebration)
        show(*celebration);
}

void CelebrationViewModel::show(const Celebration& celebration) {
    celebration_ = celebration;
    ending_ = services_.scheduler.after(length, [this] { dismiss(); });
    services_.feedback.play(Cue::drop);
    services_.feedback.performHaptic(HapticPattern::levelChange);
    Q_EMIT changed();
}

void CelebrationViewModel::dismiss() {
    if (!celebration_)
        return;
    celebration_.reset();
    ending_.cancel();
    Q_EMIT changed();
}

}  // namespace kestrant
