#include "eventkit/memory/InMemoryEventStore.h"

#include "eventkit/icalendar/Event.h"
#include "eventkit/items/EventFetch.h"
#include "eventkit/memory/MemoryStorage.h"
#include "eventkit/model/EKErrors.h"
#include "foundation/CurrentTimeZone.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrant {

using icalendar::Document;
using items::FileLocation;

namespace {

constexpr Duration shownFor = std::chrono::days(5 * 365);

/// Runs a database's work on the main thread.
class MainQueue final : public items::WorkQueues {
  public:
    explicit MainQueue(Scheduler& scheduler) : scheduler_(scheduler) {}

    void run(const QByteArray&, std::function<void()> work) override {
        scheduler_.post([weak = std::weak_ptr(isAlive_), work = std::move(work)] {
            if (!weak.expired())
                work();
        });
    }
    [[nodiscard]] bool areSeveral() const override { return false; }
    void finish(std::function<void()> last) override { last(); }

  private:
    Scheduler& scheduler_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace

InMemoryEventStore::InMemoryEventStore(Scheduler& scheduler, const Clock& clock,
                                       const CurrentTimeZone& currentZone)
    : ItemEventStore(
          scheduler, clock, currentZone,
          [](const items::StorageObserver&) { return std::make_unique<items::MemoryStorage>(); },
          std::make_unique<MainQueue>(scheduler))
    , clock_(clock)
    , currentZone_(currentZone) {
    openNow();
}

InMemoryEventStore::~InMemoryEventStore() = default;

items::MemoryStorage& InMemoryEventStore::files() {
    return static_cast<items::MemoryStorage&>(storage());
}

void InMemoryEventStore::requestFullAccessToReminders(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void InMemoryEventStore::requestFullAccessToEvents(AccessCompletion completion) {
    requestAccess(std::move(completion));
}

void InMemoryEventStore::requestAccess(AccessCompletion completion) {
    onMain([this, completion = std::move(completion)] {
        if (const auto found = failures_.find(Operation::requestAccess); found != failures_.end())
            return completion(false, found->second);
        const auto status = authorizationStatus(EKEntityType::reminder);
        if (status == EKAuthorizationStatus::notDetermined)
            setAuthorizationStatus(EKAuthorizationStatus::fullAccess);
        completion(authorizationStatus(EKEntityType::reminder) == EKAuthorizationStatus::fullAccess,
                   std::nullopt);
    });
}

void InMemoryEventStore::setAuthorizationStatus(EKAuthorizationStatus status) {
    ItemEventStore::setAuthorizationStatus(status);
}

void InMemoryEventStore::fetchReminders(const EKPredicate& matching, FetchCompletion completion) {
    if (authorizationStatus(EKEntityType::reminder) == EKAuthorizationStatus::fullAccess)
        ItemEventStore::fetchReminders(matching, std::move(completion));
    else
        onMain([completion = std::move(completion)] { completion({}); });
}

void InMemoryEventStore::events(const EKEventPredicate& matching, EventsCompletion completion) {
    if (authorizationStatus(EKEntityType::event) == EKAuthorizationStatus::fullAccess)
        ItemEventStore::events(matching, std::move(completion));
    else
        onMain([completion = std::move(completion)] { completion({}); });
}

void InMemoryEventStore::setFailure(Operation operation, std::optional<EKError> error) {
    if (error)
        failures_.insert_or_assign(operation, std::move(*error));
    else
        failures_.erase(operation);
}

std::optional<EKError> InMemoryEventStore::failure(Operation operation) const {
    if (const auto found = failures_.find(operation); found != failures_.end())
        return found->second;
    if (authorizationStatus(EKEntityType::reminder) != EKAuthorizationStatus::fullAccess)
        return accessDeniedError();
    return std::nullopt;
}

void InMemoryEventStore::attempt(Operation operation, const QString& title, const SaveCompletion& completion,
                                 const Operate& change) {
    if (!isAnswering_) {
        EKError unknown = outcomeUnknownError(title, {});
        unknown.change = ++lastChange_;
        undecided_[unknown.change].change = [this, operation, title, change](const SaveCompletion& told) {
            attempt(operation, title, told, change);
        };
        onMain([completion, unknown] { completion(tl::unexpected(unknown)); });
    } else if (const auto error = failure(operation)) {
        onMain([completion, error] { completion(tl::unexpected(*error)); });
    } else {
        change(completion);
    }
}

void InMemoryEventStore::setAnswering(bool answers) {
    isAnswering_ = answers;
    if (!answers)
        return;
    for (const auto& [number, undecided] : std::exchange(undecided_, {})) {
        undecided.change([waiters = undecided.waiters](const auto& result) {
            for (const SaveCompletion& waiter : waiters)
                waiter(result);
        });
    }
}

void InMemoryEventStore::setKeepsIdentifiers(bool keeps) {
    files().setKeepsUids(keeps);
}

void InMemoryEventStore::awaitOutcome(const EKError& unknown, SaveCompletion completion) {
    if (const auto undecided = undecided_.find(unknown.change); undecided != undecided_.end())
        undecided->second.waiters.push_back(std::move(completion));
}

void InMemoryEventStore::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    if (isAnswering_ && !failure(Operation::save))
        return ItemEventStore::saveAll(reminders, std::move(completion));
    struct Gathering {
        std::vector<tl::expected<EKSaveResult, EKError>> results;
        std::size_t missing;
        SaveAllCompletion completion;
    };
    const auto gathering = std::make_shared<Gathering>(
        Gathering{std::vector<tl::expected<EKSaveResult, EKError>>(reminders.size()), reminders.size(),
                  std::move(completion)});
    for (std::size_t i = 0; i < reminders.size(); ++i) {
        attempt(
            Operation::save, reminders[i]->data.title,
            [gathering, i](auto result) {
                gathering->results[i] = std::move(result);
                if (--gathering->missing == 0)
                    gathering->completion(std::move(gathering->results));
            },
            [this, reminder = reminders[i]](const SaveCompletion& told) {
                ItemEventStore::saveAll({reminder}, [told](auto results) { told(results.front()); });
            });
    }
}

void InMemoryEventStore::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    attempt(Operation::remove, reminder->data.title, completion,
            [this, reminder](const SaveCompletion& told) { ItemEventStore::remove(reminder, told); });
}

void InMemoryEventStore::revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                                SaveCompletion completion) {
    const auto present = reminder(identifier);
    attempt(Operation::revert, present ? present->title : identifier, completion,
            [this, change, identifier](const SaveCompletion& told) {
                ItemEventStore::revert(change, identifier, told);
            });
}

void InMemoryEventStore::save(const EKEventRef& event, EKSpan span, SaveCompletion completion) {
    attempt(Operation::save, event->data.title, completion,
            [this, event, span](const SaveCompletion& told) { ItemEventStore::save(event, span, told); });
}

void InMemoryEventStore::remove(const EKEventRef& event, EKSpan span, SaveCompletion completion) {
    attempt(Operation::remove, event->data.title, completion,
            [this, event, span](const SaveCompletion& told) { ItemEventStore::remove(event, span, told); });
}

void InMemoryEventStore::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    if (const auto error = failure(Operation::saveCalendar))
        onMain([completion = std::move(completion), error] { completion(tl::unexpected(*error)); });
    else
        ItemEventStore::saveCalendar(calendar, std::move(completion));
}

std::vector<TextPair> InMemoryEventStore::problems() const {
    std::vector<TextPair> result = problems_;
    std::ranges::copy(ItemEventStore::problems(), std::back_inserter(result));
    return result;
}

QString InMemoryEventStore::putCalendar(const EKCalendar& calendar) {
    const QByteArray name = files().putCollection(calendar);
    readNow({.collections = true});
    return QFile::decodeName(name);
}

void InMemoryEventStore::setDefaultForNewEvents(const QString& identifier) {
    files().setDefaultForEvents(QFile::encodeName(identifier));
    readNow({.collections = true});
}

void InMemoryEventStore::dropCalendar(const QString& identifier) {
    files().dropCollection(QFile::encodeName(identifier));
    readNow({.collections = true});
}

void InMemoryEventStore::put(const std::optional<FileLocation>& former, const QString& calendar,
                             const QString& identifier, const Document& document) {
    const FileLocation location{QFile::encodeName(calendar),
                                former ? former->file : identifier.toUtf8().replace('/', '_') + ".ics"};
    files().put(location, document.text());
    items::Changes changes{.files = {{location.collection, {location.file}}}};
    if (former && *former != location) {
        files().drop(*former);
        changes.files[former->collection].insert(former->file);
    }
    readNow(changes);
}

void InMemoryEventStore::drop(const FileLocation& location) {
    files().drop(location);
    readNow({.files = {{location.collection, {location.file}}}});
}

QString InMemoryEventStore::putReminder(const EKReminderData& data) {
    QString identifier = data.calendarItemIdentifier.isEmpty() ? QString::fromUtf8(items::newUid())
                                                               : data.calendarItemIdentifier;
    const TimeZone local = currentZone_.zone();
    const auto& reminders = snapshot()->reminders;
    const auto* const entry = reminders.find(identifier);
    if (!entry) {
        put(std::nullopt, data.calendarIdentifier, identifier,
            icalendar::makeTodo(identifier.toUtf8(), data, local, clock_.now()));
        return identifier;
    }
    const FileLocation location = locationOf(*entry);
    const auto stored = files().read(location);
    Document document = *Document::parse((*stored)->text);
    const icalendar::TodoItem item = icalendar::readTodos(document, local).front();
    icalendar::Component todo(document.components("VTODO")[static_cast<std::size_t>(item.index)].lines());
    icalendar::writeTodo(todo, item, data, document, local, clock_.now());
    document.replace(item.index, todo);
    put(location, data.calendarIdentifier, identifier, document);
    return identifier;
}

void InMemoryEventStore::dropReminder(const QString& identifier) {
    if (const auto* const entry = snapshot()->reminders.find(identifier))
        drop(locationOf(*entry));
}

QString InMemoryEventStore::putEvent(const EKEventData& data) {
    QString identifier = data.calendarItemIdentifier.isEmpty() ? QString::fromUtf8(items::newUid())
                                                               : data.calendarItemIdentifier;
    const auto* const entry = snapshot()->events.find(identifier);
    put(entry ? std::optional(locationOf(*entry)) : std::nullopt, data.calendarIdentifier, identifier,
        icalendar::makeEvent(identifier.toUtf8(), data, currentZone_.zone(), clock_.now()));
    return identifier;
}

void InMemoryEventStore::dropEvent(const QString& identifier) {
    if (const auto* const entry = snapshot()->events.find(identifier))
        drop(locationOf(*entry));
}

std::shared_ptr<const EKReminderData> InMemoryEventStore::reminder(const QString& identifier) const {
    return snapshot()->reminders.value(identifier).data;
}

std::vector<EKReminderData> InMemoryEventStore::reminders() const {
    std::vector<EKReminderData> result;
    for (const auto& entry : snapshot()->reminders)
        result.push_back(*entry.data);
    std::ranges::sort(result, {}, &EKReminderData::calendarItemIdentifier);
    return result;
}

std::vector<EKEventData> InMemoryEventStore::allEvents() const {
    const Instant now = clock_.now();
    const auto found = items::fetchEvents(
        *snapshot(), predicateForEvents(now - shownFor, now + shownFor, std::nullopt), now);
    std::vector<EKEventData> result;
    for (const auto& event : found.found.events)
        result.push_back(*event);
    std::ranges::sort(result, {}, [](const EKEventData& event) {
        return std::tie(event.calendarItemIdentifier, event.startDate);
    });
    return result;
}

}  // namespace kestrant
