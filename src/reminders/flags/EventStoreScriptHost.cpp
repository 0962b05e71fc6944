#include "reminders/flags/EventStoreScriptHost.h"

#include "reminders/flags/ReminderFlagIndex.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

using Result = tl::expected<QStringList, ScriptError>;
using Answer = std::function<void(Result)>;

Result failure(ScriptError::Code code, const QString& message) {
    return tl::unexpected(ScriptError{code, message});
}

EKPredicate allCompleted() {
    return EKEventStore::predicateForCompletedReminders(std::nullopt, std::nullopt, std::nullopt);
}

/// Sets the flag of the first reminder that has the key and takes the change: open ones before completed
/// ones, the lists of the given name before the others.
class FlagSetting : public std::enable_shared_from_this<FlagSetting> {
  public:
    FlagSetting(EKEventStore& store, ReminderScript::SetFlag request, Answer answer)
        : store_(store)
        , request_(std::move(request))
        , answer_(std::move(answer)) {}

    void start(OpenReminders& openReminders) {
        openReminders.fetch([self = shared_from_this()](const OpenReminders::Reminders& open) {
            if (self->setAmong(*open))
                return;
            self->store_.fetchReminders(allCompleted(), [self](const EKReminders& completed) {
                if (!self->setAmong(completed))
                    self->answer_(QStringList{});
            });
        });
    }

  private:
    /// False when none of them has the key.
    [[nodiscard]] bool setAmong(const EKReminders& reminders) {
        std::copy_if(
            reminders.begin(), reminders.end(), std::back_inserter(found_), [&](const auto& reminder) {
                return ReminderFlagIndex::flagKey(reminder->calendarItemIdentifier) == request_.targetSuffix;
            });
        if (found_.empty())
            return false;
        // The next one to try is the last.
        std::stable_partition(found_.begin(), found_.end(),
                              [&](const auto& each) { return !isInNamedList(*each); });
        setNext();
        return true;
    }
    [[nodiscard]] bool isInNamedList(const EKReminderData& reminder) const {
        const auto list = store_.calendarWithIdentifier(reminder.calendarIdentifier);
        return list && request_.listName && list->title == *request_.listName;
    }
    void setNext() {
        const auto reminder = std::make_shared<EKReminder>(store_, found_.back());
        found_.pop_back();
        reminder->data.isFlagged = request_.flag;
        store_.save(reminder, [self = shared_from_this()](const tl::expected<EKSaveResult, EKError>& saved) {
            if (saved)
                self->answer_(QStringList{});
            else if (!self->found_.empty() && saved.error().code != EKError::Code::outcomeUnknown)
                self->setNext();
            else
                self->answer_(failure(saved.error().code == EKError::Code::accessDenied
                                          ? ScriptError::Code::notPermitted
                                          : ScriptError::Code::failed,
                                      saved.error().message.english));
        });
    }

    EKEventStore& store_;
    ReminderScript::SetFlag request_;
    Answer answer_;
    EKReminders found_;
};

}  // namespace

EventStoreScriptHost::EventStoreScriptHost(EKEventStore& eventStore, OpenReminders& openReminders,
                                           Scheduler& scheduler)
    : eventStore_(eventStore)
    , openReminders_(openReminders)
    , scheduler_(scheduler) {}

EventStoreScriptHost::~EventStoreScriptHost() {
    interrupt();
}

tl::expected<QStringList, ScriptError> EventStoreScriptHost::execute(const ReminderScript& script) {
    const auto result = std::make_shared<std::optional<Result>>();
    const Answer answer = [shared = shared_, result](Result given) {
        const std::lock_guard lock(shared->mutex);
        if (!*result)
            *result = std::move(given);
        shared->changed.notify_all();
    };
    scheduler_.post([this, weak = std::weak_ptr(isAlive_), script, answer] {
        if (weak.expired())
            return;
        timeLimit_ = scheduler_.after(ReminderScript::timeout, [answer] {
            answer(failure(ScriptError::Code::timedOut, QStringLiteral("the time limit is over")));
        });
        if (eventStore_.authorizationStatus(EKEntityType::reminder) != EKAuthorizationStatus::fullAccess)
            return answer(failure(ScriptError::Code::notPermitted,
                                  QStringLiteral("there is no access to the reminders")));
        std::visit([&](const auto& request) { execute(request, answer); }, script.request);
    });
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait(lock, [&] { return result->has_value() || shared_->isInterrupted; });
    if (shared_->isInterrupted)
        return failure(ScriptError::Code::interrupted, QStringLiteral("interrupted"));
    scheduler_.post([this, weak = std::weak_ptr(isAlive_)] {
        if (!weak.expired())
            timeLimit_.cancel();
    });
    return std::move(**result);
}

void EventStoreScriptHost::execute(const ReminderScript::ReadFlagged&, const Answer& answer) {
    openReminders_.fetch([answer](const OpenReminders::Reminders& reminders) {
        QStringList result;
        for (const auto& reminder : *reminders) {
            if (reminder->isFlagged)
                result.push_back(QStringLiteral("x-kestrant-reminder://") + reminder->calendarItemIdentifier);
        }
        answer(std::move(result));
    });
}

void EventStoreScriptHost::execute(const ReminderScript::SetFlag& request, const Answer& answer) {
    std::make_shared<FlagSetting>(eventStore_, request, answer)->start(openReminders_);
}

void EventStoreScriptHost::interrupt() {
    const std::lock_guard lock(shared_->mutex);
    shared_->isInterrupted = true;
    shared_->changed.notify_all();
}

}  // namespace kestrant
