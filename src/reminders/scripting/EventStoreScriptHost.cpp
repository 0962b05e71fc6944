#include "reminders/scripting/EventStoreScriptHost.h"

#include "reminders/scripting/ScriptInterpreter.h"

#include <chrono>
#include <optional>
#include <utility>

namespace kestrant {

using scripting::ScriptDatabase;

namespace {

ScriptError scriptError(const EKError& error) {
    const auto code = error.code == EKError::Code::accessDenied ? ScriptError::Code::notPermitted
                                                                : ScriptError::Code::failed;
    return {code, error.message.english};
}

}  // namespace

/// The database as a script's thread sees it: each call is asked on the main thread and waited for.
class EventStoreScriptHost::Database final : public ScriptDatabase {
  public:
    explicit Database(EventStoreScriptHost& host) : host_(host) {}

    tl::expected<std::vector<List>, ScriptError> lists() override {
        using Lists = tl::expected<std::vector<List>, ScriptError>;
        return ask<std::vector<List>>([&store = host_.eventStore_](const std::function<void(Lists)>& answer) {
            if (const auto denied = reasonNotToRead(store))
                return answer(tl::unexpected(*denied));
            std::vector<List> result;
            for (const EKCalendar& list : store.calendars(EKEntityType::reminder))
                result.push_back({list.calendarIdentifier, list.title});
            answer(std::move(result));
        });
    }

    tl::expected<std::vector<Reminder>, ScriptError> reminders(Kind kind) override {
        using Fetched = std::vector<EKReminderRef>;
        const auto fetched =
            ask<Fetched>([&store = host_.eventStore_,
                          kind](const std::function<void(tl::expected<Fetched, ScriptError>)>& answer) {
                if (const auto denied = reasonNotToRead(store))
                    return answer(tl::unexpected(*denied));
                const EKPredicate predicate = kind == Kind::open
                                                  ? EKEventStore::predicateForIncompleteReminders(
                                                        std::nullopt, std::nullopt, std::nullopt)
                                                  : EKEventStore::predicateForCompletedReminders(
                                                        std::nullopt, std::nullopt, std::nullopt);
                store.fetchReminders(predicate,
                                     [answer](Fetched reminders) { answer(std::move(reminders)); });
            });
        if (!fetched)
            return tl::unexpected(fetched.error());
        std::vector<Reminder> result;
        result.reserve(fetched->size());
        for (const EKReminderRef& reminder : *fetched)
            result.push_back({reminder->data.calendarItemIdentifier, reminder->data.calendarIdentifier,
                              reminder->data.isFlagged});
        return result;
    }

    tl::expected<void, ScriptError> setFlagged(const QString& reminderID, bool flag) override {
        struct Done {};
        using Answer = tl::expected<Done, ScriptError>;
        const auto done = ask<Done>(
            [&store = host_.eventStore_, reminderID, flag](const std::function<void(Answer)>& answer) {
                const EKReminderRef reminder = store.calendarItem(reminderID);
                if (!reminder)
                    return answer(tl::unexpected(
                        ScriptError{ScriptError::Code::failed, QStringLiteral("the reminder is gone")}));
                reminder->data.isFlagged = flag;
                store.save(reminder, [answer](const tl::expected<EKSaveResult, EKError>& result) {
                    if (result)
                        answer(Done{});
                    else
                        answer(tl::unexpected(scriptError(result.error())));
                });
            });
        if (!done)
            return tl::unexpected(done.error());
        return {};
    }

    void beginTimeLimit(int seconds) override {
        const int number = ++host_.timeLimits_;
        setTimeLimit(number);
        host_.onMain([&host = host_, seconds, number] {
            host.timeLimitTask_ =
                host.scheduler_.after(std::chrono::seconds(seconds), [shared = host.shared_, number] {
                    const std::lock_guard lock(shared->mutex);
                    shared->expiredTimeLimit = number;
                    shared->changed.notify_all();
                });
        });
    }
    void endTimeLimit() override {
        setTimeLimit(0);
        host_.onMain([&host = host_] { host.timeLimitTask_.cancel(); });
    }

  private:
    void setTimeLimit(int number) {
        const std::lock_guard lock(host_.shared_->mutex);
        host_.shared_->timeLimit = number;
    }

    static std::optional<ScriptError> reasonNotToRead(const EKEventStore& store) {
        if (store.authorizationStatus(EKEntityType::reminder) == EKAuthorizationStatus::fullAccess)
            return std::nullopt;
        return ScriptError{ScriptError::Code::notPermitted,
                           QStringLiteral("there is no access to the reminders")};
    }

    /// Puts a question on the main thread and waits for its answer.
    template <typename Result>
    tl::expected<Result, ScriptError>
    ask(std::function<void(const std::function<void(tl::expected<Result, ScriptError>)>&)> question) {
        const auto shared = host_.shared_;
        const auto given = std::make_shared<std::optional<tl::expected<Result, ScriptError>>>();
        host_.onMain([shared, given, question = std::move(question)] {
            question([shared, given](tl::expected<Result, ScriptError> answer) {
                const std::lock_guard lock(shared->mutex);
                *given = std::move(answer);
                shared->changed.notify_all();
            });
        });
        std::unique_lock lock(shared->mutex);
        shared->changed.wait(
            lock, [&] { return given->has_value() || shared->isInterrupted || shared->isOverTime(); });
        if (shared->isInterrupted)
            return tl::unexpected(ScriptError{ScriptError::Code::interrupted, QStringLiteral("interrupted")});
        if (shared->isOverTime())
            return tl::unexpected(
                ScriptError{ScriptError::Code::timedOut, QStringLiteral("the time limit is over")});
        return std::move(**given);
    }

    EventStoreScriptHost& host_;
};

EventStoreScriptHost::EventStoreScriptHost(EKEventStore& eventStore, Scheduler& scheduler)
    : eventStore_(eventStore)
    , scheduler_(scheduler) {}

EventStoreScriptHost::~EventStoreScriptHost() {
    interrupt();
}

void EventStoreScriptHost::onMain(std::function<void()> work) {
    scheduler_.post([weak = std::weak_ptr(isAlive_), work = std::move(work)] {
        if (!weak.expired())
            work();
    });
}

tl::expected<QStringList, ScriptError> EventStoreScriptHost::execute(const QString& source) {
    Database database(*this);
    return scripting::runScript(source, database);
}

void EventStoreScriptHost::interrupt() {
    const std::lock_guard lock(shared_->mutex);
    shared_->isInterrupted = true;
    shared_->changed.notify_all();
}

}  // namespace kestrant
