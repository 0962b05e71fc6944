#include "reminders/alerts/DueAlertRinger.h"

#include "foundation/UserDefaults.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/alerts/DueAlerts.h"
#include "reminders/model/ReminderConversion.h"
#include "reminders/model/ReminderDueText.h"
#include "reminders/store/ReminderStore.h"

#include <QJsonObject>
#include <QPointer>
#include <QUuid>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr Duration refreshDelay = 300ms;
/// After which a notification that could not be shown is tried again.
constexpr Duration retryDelay = 1min;
/// The next alarm is looked for at least this often, whatever the clock did.
constexpr Duration longestWait = 24h;
constexpr Duration memory = 30 * 24h;

}  // namespace

DueAlertRinger::DueAlertRinger(const DueAlertServices& services, QObject* parent)
    : QObject(parent)
    , services_(services) {
    restoreMemory();
    storeObserver_ = services_.eventStore.observeChanges(
        [this] { refreshTask_ = services_.scheduler.after(refreshDelay, [this] { refresh(); }); });
    zoneObserver_ = services_.currentZone.observeChanges([this] { refresh(); });
    answerObserver_ = services_.notifier.observeAnswers(
        [this](const QString& id, AlertAnswer given) { answer(id, given); });
    refresh();
}

DueAlertRinger::~DueAlertRinger() {
    for (const auto& [id, instant] : showing_)
        services_.notifier.withdraw(id);
}

void DueAlertRinger::restoreMemory() {
    const Instant now = services_.clock.now();
    const auto since = services_.defaults.number(preferenceKeys::reminderAlertsSince);
    since_ = since ? instantFromSecondsSinceReferenceDate(*since) : now;
    if (!since)
        services_.defaults.set(preferenceKeys::reminderAlertsSince, secondsSinceReferenceDate(now));
    since_ = std::max(since_, now - memory);
    const QJsonObject rung = services_.defaults.object(preferenceKeys::reminderAlertsRung).toObject();
    for (auto entry = rung.begin(); entry != rung.end(); ++entry) {
        const Instant instant = instantFromSecondsSinceReferenceDate(entry.value().toDouble());
        if (instant > since_)
            rung_[entry.key()] = instant;
    }
}

void DueAlertRinger::rememberRung(const QString& id, Instant instant) {
    since_ = std::max(since_, services_.clock.now() - memory);
    std::erase_if(rung_, [&](const auto& entry) { return entry.second <= since_; });
    rung_[id] = instant;
    QJsonObject stored;
    for (const auto& [reminder, until] : rung_)
        stored.insert(reminder, secondsSinceReferenceDate(until));
    services_.defaults.set(preferenceKeys::reminderAlertsRung, stored);
}

Instant DueAlertRinger::rungUntil(const QString& id) const {
    const auto found = rung_.find(id);
    return found == rung_.end() ? since_ : std::max(found->second, since_);
}

void DueAlertRinger::refresh() {
    refreshTask_.cancel();
    const int generation = ++generation_;
    services_.openReminders.fetch(
        [self = QPointer(this), generation](const OpenReminders::Reminders& reminders) {
            if (self && generation == self->generation_)
                self->apply(*reminders);
        });
}

void DueAlertRinger::apply(const EKReminders& reminders) {
    const Instant now = services_.clock.now();
    const TimeZone zone = services_.currentZone.zone();
    Instant next = now + longestWait;
    QHash<QString, const EKReminderData*> open;
    for (const auto& reminder : reminders) {
        const EKReminderData& data = *reminder;
        if (data.alarms.empty())
            continue;
        open.insert(data.calendarItemIdentifier, &data);
        if (const auto instant = nextAlert(data, now, zone))
            next = std::min(next, *instant);
    }
    withdrawWhatIsOver(open);
    std::vector<std::pair<Instant, const EKReminderData*>> due;
    for (const EKReminderData* data : std::as_const(open)) {
        if (const auto instant = dueAlert(*data, rungUntil(data->calendarItemIdentifier), now, zone))
            due.emplace_back(*instant, data);
    }
    std::sort(due.begin(), due.end());
    for (const auto& [instant, data] : due)
        ring(*data, instant);
    alarmTask_ = services_.scheduler.after(next - now, [this] { refresh(); });
}

void DueAlertRinger::withdrawWhatIsOver(const QHash<QString, const EKReminderData*>& open) {
    const TimeZone zone = services_.currentZone.zone();
    std::erase_if(showing_, [&](const auto& shown) {
        const auto& [id, instant] = shown;
        const auto reminder = open.constFind(id);
        if (reminder != open.cend() && dueAlert(**reminder, instant - 1us, instant, zone) == instant)
            return false;
        services_.notifier.withdraw(id);
        return true;
    });
}

UserNotification DueAlertRinger::notificationFor(const EKReminderData& reminder) const {
    const TimeZone zone = services_.currentZone.zone();
    const Language language = services_.localization.language();
    UserNotification notification{.id = reminder.calendarItemIdentifier, .title = reminder.title};
    const ReminderTask task = reminderTask(reminder, zone, false);
    QStringList parts;
    if (task.dueDate)
        parts.append(reminderDueText(*task.dueDate, task.dueDateIncludesTime, services_.clock.now(), zone,
                                     language, services_.localization.clockHours()));
    if (const auto list = services_.eventStore.calendarWithIdentifier(reminder.calendarIdentifier))
        parts.append(list->title);
    notification.body = parts.join(QStringLiteral(" · "));
    for (const AlertAnswer answer : {AlertAnswer::complete, AlertAnswer::snoozeTenMinutes,
                                     AlertAnswer::snoozeOneHour, AlertAnswer::snoozeUntilTomorrow})
        notification.actions.push_back({answer, label(answer).in(language)});
    return notification;
}

void DueAlertRinger::ring(const EKReminderData& reminder, Instant instant) {
    const QString id = reminder.calendarItemIdentifier;
    const auto shown = showing_.find(id);
    if (shown != showing_.end() && shown->second == instant)
        return;
    showing_[id] = instant;
    // A notification that could not be shown is tried again, but rings once.
    if (std::exchange(announced_[id], instant) != instant)
        Q_EMIT rang(id);
    services_.notifier.show(notificationFor(reminder), [self = QPointer(this), id, instant](bool succeeded) {
        if (!self)
            return;
        if (succeeded)
            return self->rememberRung(id, instant);
        const auto failed = self->showing_.find(id);
        if (failed != self->showing_.end() && failed->second == instant)
            self->showing_.erase(failed);
        self->retryTask_ = self->services_.scheduler.after(retryDelay, [self] { self->refresh(); });
    });
}

void DueAlertRinger::answer(const QString& id, AlertAnswer given) {
    showing_.erase(id);
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    if (!reminder || reminder->data.isCompleted)
        return;
    const auto orShowAgain =
        [this, notification = notificationFor(reminder->data)](const std::optional<TextPair>& failure) {
            if (failure)
                showFailure(notification, *failure);
        };
    if (given == AlertAnswer::complete) {
        services_.reminders.completeNow(id, [self = QPointer(this), orShowAgain](const auto& result) {
            if (self && !result)
                orShowAgain(result.error().message());
        });
        return;
    }
    const TimeZone zone = services_.currentZone.zone();
    const Instant now = services_.clock.now();
    if (const auto until = snoozedUntil(given, now, zone)) {
        const QByteArray identifier = QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
        write(
            id, [&](EKReminderData& data) { snoozeAlert(data, *until, now, identifier, zone); }, orShowAgain);
        return;
    }
    write(id, [&](EKReminderData& data) { acknowledgeAlerts(data, now, zone); }, {});
    if (given == AlertAnswer::open)
        Q_EMIT openRequested(id);
}

void DueAlertRinger::write(const QString& id, const std::function<void(EKReminderData&)>& edit,
                           Answered answered) {
    const EKReminderRef reminder = services_.eventStore.calendarItem(id);
    edit(reminder->data);
    services_.eventStore.save(reminder, [self = QPointer(this), answered = std::move(answered)](
                                            const tl::expected<EKSaveResult, EKError>& result) {
        if (self && answered)
            answered(result ? std::nullopt : std::optional(result.error().message));
    });
}

void DueAlertRinger::showFailure(UserNotification notification, const TextPair& failure) {
    showing_[notification.id] = rungUntil(notification.id);
    notification.body = failure.in(services_.localization.language());
    services_.notifier.show(notification, [](bool) {});
}

}  // namespace kestrant
