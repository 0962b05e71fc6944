#include "reminders/flags/FlaggedReminderAutomation.h"

#include "reminders/flags/ReminderFlagIndex.h"

#include <utility>

namespace kestrant {

FlaggedReminderAutomation::FlaggedReminderAutomation(ScriptHost& host, BackgroundExecutor& queue,
                                                     Scheduler& scheduler)
    : host_(host)
    , queue_(queue)
    , scheduler_(scheduler) {}

FlaggedReminderAutomation::~FlaggedReminderAutomation() {
    host_.interrupt();
}

void FlaggedReminderAutomation::run(const ReminderScript& script, std::function<void(Result)> completion) {
    queue_.run([&host = host_, &scheduler = scheduler_, script, weak = std::weak_ptr(isAlive_),
                completion = std::move(completion)]() mutable {
        Result result = host.execute(script);
        scheduler.post([weak, completion = std::move(completion), result = std::move(result)]() mutable {
            if (!weak.expired())
                completion(std::move(result));
        });
    });
}

void FlaggedReminderAutomation::readFlaggedIdentifiers(ReadCompletion completion) {
    run({ReminderScript::ReadFlagged{}}, [completion = std::move(completion)](const Result& result) {
        if (!result) {
            const bool denied = result.error().code == ScriptError::Code::notPermitted;
            completion(
                tl::unexpected(AutomationError{denied ? text("Access to Reminders flags was denied.",
                                                             "L’accès aux drapeaux de Rappels a été refusé.")
                                                      : text("Failed to read flagged reminders.",
                                                             "Impossible de lire les rappels marqués.")}));
            return;
        }
        QSet<QString> keys;
        keys.reserve(result->size());
        for (const QString& identifier : *result)
            keys.insert(ReminderFlagIndex::flagKey(identifier));
        completion(std::move(keys));
    });
}

void FlaggedReminderAutomation::setFlag(const QString& targetSuffix, bool flag,
                                        const std::optional<QString>& listName, SetCompletion completion) {
    run({ReminderScript::SetFlag{targetSuffix, flag, listName}},
        [completion = std::move(completion)](const Result& result) {
            if (result)
                completion({});
            else
                completion(tl::unexpected(AutomationError{
                    text("The flag could not be updated.", "Le drapeau n’a pas pu être modifié.")}));
        });
}

}  // namespace kestrant
