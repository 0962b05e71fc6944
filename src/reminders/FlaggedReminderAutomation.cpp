#include "reminders/FlaggedReminderAutomation.h"

#include "reminders/ReminderFlagIndex.h"

#include <utility>

namespace kestrant {

QString scriptLiteral(const QString& text) {
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

FlaggedReminderAutomation::FlaggedReminderAutomation(ScriptHost& host, BackgroundExecutor& queue,
                                                     Scheduler& scheduler)
    : host_(host)
    , queue_(queue)
    , scheduler_(scheduler) {}

FlaggedReminderAutomation::~FlaggedReminderAutomation() {
    host_.interrupt();
}

QString FlaggedReminderAutomation::readScript() {
    return QStringLiteral("with timeout of 8 seconds\n"
                          "    tell application \"Reminders\"\n"
                          "        return id of every reminder whose flagged is true and completed is false\n"
                          "    end tell\n"
                          "end timeout");
}

QString FlaggedReminderAutomation::writeScript(const QString& targetSuffix, bool flag,
                                               const std::optional<QString>& listName) {
    const QString value = flag ? QStringLiteral("true") : QStringLiteral("false");
    QStringList lines{QStringLiteral("with timeout of 8 seconds"),
                      QStringLiteral("    tell application \"Reminders\""),
                      QStringLiteral("        set targetSuffix to ") + scriptLiteral(targetSuffix)};
    if (listName && !listName->isEmpty())
        lines << QStringLiteral("        try")
              << QStringLiteral("    set flagged of (first reminder of list ") + scriptLiteral(*listName) +
                     QStringLiteral(" whose id ends with targetSuffix) to ") + value
              << QStringLiteral("    return") << QStringLiteral("end try");
    lines << QStringLiteral("        repeat with aList in lists") << QStringLiteral("            try")
          << QStringLiteral("                set flagged of (first reminder of aList whose id ends with "
                            "targetSuffix) to ") +
                 value
          << QStringLiteral("                return") << QStringLiteral("            end try")
          << QStringLiteral("        end repeat") << QStringLiteral("    end tell")
          << QStringLiteral("end timeout");
    return lines.join(QLatin1Char('\n'));
}

void FlaggedReminderAutomation::run(const QString& script, std::function<void(Result)> completion) {
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
    run(readScript(), [completion = std::move(completion)](const Result& result) {
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
    run(writeScript(targetSuffix, flag, listName),
        [completion = std::move(completion)](const Result& result) {
            if (result)
                completion({});
            else
                completion(tl::unexpected(AutomationError{
                    text("The flag could not be updated.", "Le drapeau n’a pas pu être modifié.")}));
        });
}

}  // namespace kestrant
