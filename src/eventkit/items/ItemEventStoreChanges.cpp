#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/ItemReading.h"
#include "eventkit/items/ItemEventStore.h"
#include "eventkit/model/EKErrors.h"

#include <algorithm>
#include <atomic>
#include <utility>

// Changes on their way through the queues.

namespace kestrant::items {

namespace {

using SaveAnswer = tl::expected<EKSaveResult, EKError>;
using SaveAnswers = std::vector<SaveAnswer>;

/// The title of an item that is not there any more.
QString titleIn(const ItemState& state, bool isEvent) {
    const auto document = icalendar::Document::parse(state.text);
    if (!document)
        return {};
    for (const icalendar::ComponentView& component : document->components(isEvent ? "VEVENT" : "VTODO")) {
        if (auto title = icalendar::readText(component, "SUMMARY"))
            return *std::move(title);
    }
    return {};
}

}  // namespace

struct ItemEventStore::Operation {
    enum class State { waiting, begun, dropped };

    QByteArray queue;
    std::vector<Subject> subjects;
    std::atomic<State> state = State::waiting;

    // On the main thread.

    /// Ends it for whoever asked, with an error for each subject.
    std::function<void(const std::function<EKError(const Subject& subject)>& error)> fail;
    /// The sentence, once whoever asked has been told that nobody knows what becomes of it; and the title of
    /// the list that does not answer.
    std::optional<TextPair> unknown;
    QString silentList;
    struct Waiter {
        std::uint64_t change;
        SaveCompletion completion;
    };
    std::vector<Waiter> waiters;

    /// False where it is in another state by now.
    bool becomes(State next) {
        State expected = State::waiting;
        return state.compare_exchange_strong(expected, next);
    }
    [[nodiscard]] bool isAbout(const QString& identifier) const {
        return std::ranges::find(subjects, identifier, &Subject::identifier) != subjects.end();
    }
    [[nodiscard]] bool has(std::uint64_t change) const {
        return std::ranges::find(subjects, change, &Subject::change) != subjects.end();
    }

    // The answers that operations have, and those for one of their subjects.

    static void failWith(SaveAnswer& answer, const std::vector<Subject>& subjects, const auto& error) {
        answer = tl::unexpected(error(subjects.front()));
    }
    static void failWith(tl::expected<EKCalendar, EKError>& answer, const std::vector<Subject>& subjects,
                         const auto& error) {
        answer = tl::unexpected(error(subjects.front()));
    }
    static void failWith(SaveAnswers& answers, const std::vector<Subject>& subjects, const auto& error) {
        for (const Subject& subject : subjects)
            answers.push_back(tl::unexpected(error(subject)));
    }
    void tellWaiters(const SaveAnswer& answer) {
        for (const Waiter& waiter : std::exchange(waiters, {}))
            waiter.completion(answer);
    }
    void tellWaiters(const tl::expected<EKCalendar, EKError>&) {}
    void tellWaiters(const SaveAnswers& answers) {
        for (const Waiter& waiter : std::exchange(waiters, {})) {
            for (std::size_t i = 0; i < answers.size(); ++i) {
                if (subjects[i].change == waiter.change) {
                    waiter.completion(answers[i]);
                    break;
                }
            }
        }
    }
};

QByteArray ItemEventStore::queueFor(const std::vector<Subject>& subjects, const QString& from,
                                    const QString& to) const {
    // Changes of one item are made in the order in which they were asked for, wherever it is moved.
    for (const auto& operation : operations_) {
        for (const Subject& subject : subjects) {
            if (!subject.identifier.isEmpty() && operation->isAbout(subject.identifier))
                return operation->queue;
        }
    }
    // Changes across two lists delay neither list's own.
    const QString name = from.isEmpty() || from == to ? to : from + QLatin1Char('|') + to;
    return name.toUtf8();
}

template <typename Change, typename Adopt, typename Completion>
void ItemEventStore::execute(const QByteArray& queue, std::vector<Subject> subjects, Change change,
                             Adopt adopt, Completion completion) {
    using Result = decltype(change(Instant(), currentZone_.zone()));
    const auto operation = std::make_shared<Operation>();
    operation->queue = queue;
    operation->subjects = std::move(subjects);
    for (Subject& subject : operation->subjects)
        subject.change = ++lastChange_;
    operation->fail = [weak = std::weak_ptr(operation), completion](const auto& error) {
        Result answer;
        Operation::failWith(answer, weak.lock()->subjects, error);
        completion(std::move(answer));
    };
    const auto isStuck = [&](const auto& other) { return other->unknown && other->queue == queue; };
    if (const auto stuck = std::find_if(operations_.begin(), operations_.end(), isStuck);
        stuck != operations_.end()) {
        onMain([operation, list = (*stuck)->silentList] {
            operation->fail([&](const Subject&) { return noAnswerError(list); });
        });
        return;
    }
    operations_.push_back(operation);
    queues_->run(queue, [this, operation, change = std::move(change), now = clock_.now(),
                         local = currentZone_.zone(), adopt = std::move(adopt),
                         completion = std::move(completion)]() mutable {
        if (!operation->becomes(Operation::State::begun))
            return;
        const auto before = database_.snapshot();
        auto result = change(now, local);
        publish(database_.snapshot() != before);
        onMain([this, operation, adopt = std::move(adopt), completion = std::move(completion),
                result = std::move(result)]() mutable {
            std::erase(operations_, operation);
            adopt(result);
            if (!operation->unknown) {
                completion(std::move(result));
                return;
            }
            operation->tellWaiters(result);
            observers_.notify();
        });
    });
}

void ItemEventStore::operationsOverdue(const QByteArray& queue, const QString& list) {
    const auto operations = operations_;
    for (const auto& operation : operations) {
        if (operation->queue != queue || operation->unknown)
            continue;
        if (operation->becomes(Operation::State::dropped)) {
            std::erase(operations_, operation);
            operation->fail([&](const Subject&) { return noAnswerError(list); });
            continue;
        }
        const auto unknown = [&](const Subject& subject) {
            EKError error = outcomeUnknownError(subject.title, list);
            error.change = subject.change;
            return error;
        };
        operation->unknown = unknown(operation->subjects.front()).message;
        operation->silentList = list;
        operation->fail(unknown);
    }
    observers_.notify();
}

void ItemEventStore::awaitOutcome(const EKError& unknown, SaveCompletion completion) {
    const auto found = std::find_if(operations_.begin(), operations_.end(), [&](const auto& operation) {
        return operation->unknown && operation->has(unknown.change);
    });
    if (found == operations_.end())
        onMain([completion = std::move(completion)] { completion(tl::unexpected(itemNotFoundError())); });
    else
        (*found)->waiters.push_back({unknown.change, std::move(completion)});
}

std::vector<TextPair> ItemEventStore::problems() const {
    std::vector<TextPair> problems;
    for (const auto& told : {waiting_, unsent_}) {
        if (told)
            problems.push_back(*told);
    }
    for (const auto& operation : operations_) {
        if (operation->unknown)
            problems.push_back(*operation->unknown);
    }
    problems.insert(problems.end(), snapshot_->problems.begin(), snapshot_->problems.end());
    return problems;
}

void ItemEventStore::save(const EKReminderRef& reminder, SaveCompletion completion) {
    saveAll({reminder},
            [completion = std::move(completion)](auto results) { completion(std::move(results.front())); });
}

/// Those of each list are saved together.
void ItemEventStore::saveAll(const std::vector<EKReminderRef>& reminders, SaveAllCompletion completion) {
    struct Group {
        std::vector<std::size_t> indices;
        std::vector<Subject> subjects;
        std::vector<ReminderEdit> edits;
    };
    std::map<QByteArray, Group> groups;
    for (std::size_t i = 0; i < reminders.size(); ++i) {
        const auto& [stored, data] = std::tie(reminders[i]->stored(), reminders[i]->data);
        const Subject subject{data.calendarItemIdentifier, data.title};
        const QString from = stored ? stored->calendarIdentifier : QString();
        const QByteArray queue =
            queues_->areSeveral() ? queueFor({subject}, from, data.calendarIdentifier) : QByteArray();
        Group& group = groups[queue];
        group.indices.push_back(i);
        group.subjects.push_back(subject);
        group.edits.push_back({stored, data});
    }
    struct Gathering {
        SaveAnswers answers;
        std::size_t missing = 0;
        SaveAllCompletion completion;
    };
    const auto gathering = std::make_shared<Gathering>();
    gathering->answers.resize(reminders.size());
    gathering->missing = groups.size();
    gathering->completion = std::move(completion);
    if (groups.empty())
        onMain([gathering] { gathering->completion({}); });
    for (auto& [queue, group] : groups) {
        execute(
            queue, std::move(group.subjects),
            [this, edits = std::move(group.edits)](Instant now, const TimeZone& local) {
                if (edits.size() > 1)
                    return database_.saveAll(edits, now, local);
                return SaveAnswers{database_.save(edits.front().base, edits.front().edited, now, local)};
            },
            [this, reminders, indices = group.indices](const SaveAnswers& results) {
                for (std::size_t i = 0; i < results.size(); ++i) {
                    if (!results[i])
                        continue;
                    if (auto stored = storedReminder(results[i]->calendarItemIdentifier))
                        reminders[indices[i]]->setStored(std::move(stored));
                }
            },
            [gathering, indices = group.indices](SaveAnswers results) {
                for (std::size_t i = 0; i < results.size(); ++i)
                    gathering->answers[indices[i]] = std::move(results[i]);
                if (--gathering->missing == 0)
                    gathering->completion(std::move(gathering->answers));
            });
    }
}

void ItemEventStore::remove(const EKReminderRef& reminder, SaveCompletion completion) {
    const std::vector<Subject> subjects{{reminder->calendarItemIdentifier(), reminder->data.title}};
    const auto& stored = reminder->stored();
    const QString list = stored ? stored->calendarIdentifier : reminder->data.calendarIdentifier;
    execute(
        queueFor(subjects, list, list), subjects,
        [this, identifier = reminder->calendarItemIdentifier()](Instant, const TimeZone& local) {
            return database_.remove(identifier, local);
        },
        [](const SaveAnswer&) {}, std::move(completion));
}

void ItemEventStore::revert(const std::shared_ptr<const EKItemChange>& change, const QString& identifier,
                            SaveCompletion completion) {
    const auto record = std::dynamic_pointer_cast<const ChangeRecord>(change);
    if (!record || record->items.empty()) {
        onMain([completion = std::move(completion)] { completion(tl::unexpected(itemNotFoundError())); });
        return;
    }
    const ItemChange& item = record->items.front();
    const bool isEvent = record->type == EKEntityType::event;
    const auto listOf = [](const std::optional<ItemState>& state) {
        return state ? QString::fromUtf8(state->collection) : QString();
    };
    QString title = titleIn(item.before ? *item.before : *item.after, isEvent);
    if (const auto reminder = isEvent ? nullptr : storedReminder(identifier))
        title = reminder->title;
    else if (const auto event = isEvent ? snapshot_->firstEvent(identifier) : nullptr)
        title = event->title;
    const std::vector<Subject> subjects{{identifier, title}};
    const QString from = listOf(item.after ? item.after : item.before);
    // An occurrence that left its series goes back to the list of the series.
    const auto& former = isEvent ? record->items.back().before : item.before;
    execute(
        queueFor(subjects, from, former ? listOf(former) : from), subjects,
        [this, record, identifier](Instant now, const TimeZone& local) {
            return database_.revert(*record, identifier, now, local);
        },
        [](const SaveAnswer&) {}, std::move(completion));
}

void ItemEventStore::save(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    const EKEventData& data = event->data;
    const std::vector<Subject> subjects{{data.calendarItemIdentifier, data.title}};
    const auto& stored = event->stored();
    execute(
        queueFor(subjects, stored ? stored->calendarIdentifier : QString(), data.calendarIdentifier),
        subjects,
        [this, edited = data, base = stored](Instant now, const TimeZone& local) {
            return database_.saveEvent(base, edited, now, local);
        },
        [this, event](const SaveAnswer& result) {
            if (!result)
                return;
            const QString& identifier = result->calendarItemIdentifier;
            auto shown = snapshot_->event(identifier, event->data.occurrenceDate);
            if (!shown)
                shown = snapshot_->firstEvent(identifier);
            if (shown)
                event->setStored(std::move(shown));
        },
        std::move(completion));
}

void ItemEventStore::remove(const EKEventRef& event, EKSpan, SaveCompletion completion) {
    const EKEventData& data = event->stored() ? *event->stored() : event->data;
    const std::vector<Subject> subjects{{data.calendarItemIdentifier, data.title}};
    execute(
        queueFor(subjects, data.calendarIdentifier, data.calendarIdentifier), subjects,
        [this, base = event->stored()](Instant now, const TimeZone& local) -> SaveAnswer {
            if (!base)
                return tl::unexpected(itemNotFoundError());
            return database_.removeEvent(*base, now, local);
        },
        [](const SaveAnswer&) {}, std::move(completion));
}

void ItemEventStore::saveCalendar(const EKCalendar& calendar, CalendarCompletion completion) {
    execute(
        {}, {{{}, calendar.title}},
        [this, calendar](Instant, const TimeZone& local) { return database_.saveCalendar(calendar, local); },
        [](const auto&) {}, std::move(completion));
}

}  // namespace kestrant::items
