#include "eventkit/vdir/VdirEventStore.h"

#include "eventkit/EKErrors.h"
#include "eventkit/ReminderChanges.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// Changes within this time are read in together.
constexpr Duration gatheringTime = 200ms;
/// How often everything is compared where changes are not told.
constexpr Duration comparisonInterval = 10s;

QByteArray nativeRoot(const QString& root) {
    return QFile::encodeName(QDir::cleanPath(QDir(root).absolutePath()));
}

}  // namespace

VdirEventStore::VdirEventStore(const QString& root, Scheduler& scheduler, const Clock& clock,
                               const CurrentCalendar& calendar)
    : scheduler_(scheduler)
    , clock_(clock)
    , calendar_(calendar)
    , watcher_(nativeRoot(root),
               [this](const vdir::Changes& changes) { onMain([this, changes] { filesChanged(changes); }); })
    , database_(
          nativeRoot(root),
          [this](const std::vector<QByteArray>& collections) { isWatched_ = watcher_.watch(collections); })
    , worker_(std::make_unique<SerialWorker>()) {}

VdirEventStore::~VdirEventStore() = default;

void VdirEventStore::onMain(std::function<void()> work) {
    scheduler_.post([weak = std::weak_ptr(self_), work = std::move(work)] {
        if (!weak.expired())
            work();
    });
}

void VdirEventStore::publish(bool announce) {
    onMain([this, snapshot = database_.snapshot(), watched = isWatched_, announce] {
        // What the old one held is freed where that keeps nobody waiting.
        worker_->run([old = std::exchange(snapshot_, snapshot)] {});
        if (watched)
            comparison_.cancel();
        else if (!comparison_.isPending())
            comparison_ =
                scheduler_.every(comparisonInterval, [this] { filesChanged({.everything = true}); });
        if (announce)
            observers_.notify();
    });
}

void VdirEventStore::filesChanged(const vdir::Changes& changes) {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return;
    pendingChanges_.add(changes);
    if (!readTask_.isPending())
        readTask_ = scheduler_.after(gatheringTime, [this] { readChanges(); });
}

void VdirEventStore::readChanges() {
    worker_->run([this, changes = std::exchange(pendingChanges_, {}), local = calendar_.calendar()] {
        if (database_.refresh(changes, local))
            publish(true);
    });
}

EKAuthorizationStatus VdirEventStore::authorizationStatus(EKEntityType) const {
    return status_;
}

void VdirEventStore::requestFullAccessToReminders(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void VdirEventStore::requestFullAccessToEvents(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void VdirEventStore::requestAccess(AccessCompletion completion) {
    worker_->run([this, completion = std::move(completion), local = calendar_.calendar()]() mutable {
        std::optional<EKError> error;
        if (!database_.isOpen())
            error = database_.open(local);
        publish(false);
        onMain([this, completion = std::move(completion), error = std::move(error)] {
            const bool opened = !error && status_ != EKAuthorizationStatus::fullAccess;
            status_ = error ? EKAuthorizationStatus::denied : EKAuthorizationStatus::fullAccess;
            completion(!error, error);
            if (opened)
                observers_.notify();
        });
    });
}

std::vector<EKCalendar> VdirEventStore::calendars(EKEntityType type) const {
    std::vector<EKCalendar> result;
    if (status_ != EKAuthorizationStatus::fullAccess)
        return result;
    std::copy_if(snapshot_->calendars.begin(), snapshot_->calendars.end(), std::back_inserter(result),
                 [&](const EKCalendar& calendar) {
                     return type == EKEntityType::reminder ? calendar.allowsReminders : calendar.allowsEvents;
                 });
    return result;
}

std::optional<EKCalendar> VdirEventStore::calendarWithIdentifier(const QString& identifier) const {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return std::nullopt;
    const auto found =
        std::find_if(snapshot_->calendars.begin(), snapshot_->calendars.end(),
                     [&](const EKCalendar& calendar) { return calendar.calendarIdentifier == identifier; });
    return found == snapshot_->calendars.end() ? std::nullopt : std::optional(*found);
}

std::optional<EKCalendar> VdirEventStore::firstWritable(EKEntityType type) const {
    const auto all = calendars(type);
    const auto found = std::find_if(all.begin(), all.end(), [](const EKCalendar& calendar) {
        return calendar.allowsContentModifications;
    });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<EKCalendar> VdirEventStore::defaultCalendarForNewReminders() const {
    return firstWritable(EKEntityType::reminder);
}

std::optional<EKCalendar> VdirEventStore::defaultCalendarForNewEvents() const {
    return firstWritable(EKEntityType::event);
}

void VdirEventStore::fetchReminders(const EKPredicate& matching, FetchCompletion completion) {
    worker_->run(
        [this, matching, completion = std::move(completion), local = calendar_.calendar()]() mutable {
            std::vector<EKReminderRef> result;
            if (database_.isOpen()) {
                for (const vdir::Entry& entry : database_.snapshot()->reminders) {
                    if (matches(matching, *entry.data, local))
                        result.push_back(std::make_shared<EKReminder>(*this, entry.data, entry.version));
                }
            }
            onMain([completion = std::move(completion), result = std::move(result)]() mutable {
                completion(std::move(result));
            });
        });
}

EKReminderRef VdirEventStore::calendarItem(const QString& withIdentifier) {
    const auto stored = storedReminder(withIdentifier);
    return stored ? std::make_shared<EKReminder>(*this, stored->data, stored->version) : nullptr;
}

std::optional<EKEventStore::Stored> VdirEventStore::storedReminder(const QString& identifier) const {
    const auto found = snapshot_->reminders.constFind(identifier);
    if (status_ != EKAuthorizationStatus::fullAccess || found == snapshot_->reminders.cend())
        return std::nullopt;
    return Stored{found->data, found->version};
}

template <typename Change, typename Completion>
void VdirEventStore::carryOut(Change change, Completion completion) {
    worker_->run([this, change = std::move(change), now = clock_.now(), local = calendar_.calendar(),
                  completion = std::move(completion)]() mutable {
        const auto before = database_.snapshot();
        auto result = change(now, local);
        publish(database_.snapshot() != before);
        onMain([completion = std::move(completion), result = std::move(result)]() mutable {
            completion(std::move(result));
        });
    });
}

void VdirEventStore::save(const EKReminderRef& reminder, SaveCompletion completion) {
    carryOut([this, edited = reminder->data, base = reminder->stored()](
                 Instant now, const ZoneCalendar& local) { return database_.save(base, edited, now, local); },
             [this, reminder, completion = std::move(completion)](auto result) {
                 if (result) {
                     if (const auto stored = storedReminder(result->calendarItemIdentifier))
                         reminder->setStored(stored->data, stored->version);
                 }
                 completion(std::move(result));
             });
}

void VdirEventStore::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    carryOut([this, identifier = reminder->calendarItemIdentifier()](
                 Instant, const ZoneCalendar& local) { return database_.remove(identifier, local); },
             std::move(completion));
}

void VdirEventStore::revert(const std::shared_ptr<const EKReminderChange>& change, const QString& identifier,
                            SaveCompletion completion) {
    carryOut(
        [this, change = std::dynamic_pointer_cast<const vdir::ReminderChange>(change),
         identifier](Instant now, const ZoneCalendar& local) -> tl::expected<EKSaveResult, EKError> {
            if (!change)
                return tl::unexpected(itemNotFoundError());
            return database_.revert(*change, identifier, now, local);
        },
        std::move(completion));
}

void VdirEventStore::events(const EKEventPredicate& matching, EventsCompletion completion) {
    worker_->run(
        [this, matching, completion = std::move(completion), local = calendar_.calendar()]() mutable {
            std::vector<EKEventRef> result;
            if (database_.isOpen()) {
                if (database_.adopt(local))
                    publish(false);
                for (vdir::Snapshot::ShownEvent& shown : database_.snapshot()->eventsMatching(matching))
                    result.push_back(std::make_shared<EKEvent>(std::move(shown.data), shown.version));
            }
            onMain([completion = std::move(completion), result = std::move(result)]() mutable {
                completion(std::move(result));
            });
        });
}

EKEventRef VdirEventStore::event(const QString& withIdentifier) {
    if (status_ != EKAuthorizationStatus::fullAccess)
        return nullptr;
    auto shown = snapshot_->firstEvent(withIdentifier);
    return shown ? std::make_shared<EKEvent>(std::move(shown->data), shown->version) : nullptr;
}

void VdirEventStore::save(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    carryOut(
        [this, edited = event->data, base = event->stored()](Instant now, const ZoneCalendar& local) {
            return database_.saveEvent(base, edited, now, local);
        },
        [this, event, completion = std::move(completion)](auto result) {
            if (result) {
                const QString& identifier = result->calendarItemIdentifier;
                auto shown = snapshot_->event(identifier, event->data.occurrenceDate);
                if (!shown)
                    shown = snapshot_->firstEvent(identifier);
                if (shown)
                    event->setStored(std::move(shown->data), shown->version);
            }
            completion(std::move(result));
        });
}

void VdirEventStore::remove(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    carryOut(
        [this, base = event->stored()](Instant now,
                                       const ZoneCalendar& local) -> tl::expected<EKSaveResult, EKError> {
            if (!base)
                return tl::unexpected(itemNotFoundError());
            return database_.removeEvent(*base, now, local);
        },
        std::move(completion));
}

void VdirEventStore::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    carryOut([this, calendar](Instant,
                              const ZoneCalendar& local) { return database_.saveCalendar(calendar, local); },
             std::move(completion));
}

Subscription VdirEventStore::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

std::vector<TextPair> VdirEventStore::problems() const {
    return snapshot_->problems;
}

}  // namespace kestrant
