#include "reminders/flags/ReminderScript.h"

#include <QStringList>

namespace kestrant {
namespace {

QStringList lines(const ReminderScript::ReadFlagged&) {
    return {
        QStringLiteral("        return id of every reminder whose flagged is true and completed is false")};
}

QStringList lines(const ReminderScript::SetFlag& request) {
    const QString value = request.flag ? QStringLiteral("true") : QStringLiteral("false");
    QStringList result{QStringLiteral("        set targetSuffix to ") + scriptLiteral(request.targetSuffix)};
    if (request.listName && !request.listName->isEmpty())
        result << QStringLiteral("        try")
               << QStringLiteral("    set flagged of (first reminder of list ") +
                      scriptLiteral(*request.listName) +
                      QStringLiteral(" whose id ends with targetSuffix) to ") + value
               << QStringLiteral("    return") << QStringLiteral("end try");
    result << QStringLiteral("        repeat with aList in lists") << QStringLiteral("            try")
           << QStringLiteral("                set flagged of (first reminder of aList whose id ends with "
                             "targetSuffix) to ") +
                  value
           << QStringLiteral("                return") << QStringLiteral("            end try")
           << QStringLiteral("        end repeat");
    return result;
}

}  // namespace

QString ReminderScript::source() const {
    QStringList result{QStringLiteral("with timeout of %1 seconds").arg(timeout.count()),
                       QStringLiteral("    tell application \"Reminders\"")};
    result += std::visit([](const auto& known) { return lines(known); }, request);
    result << QStringLiteral("    end tell") << QStringLiteral("end timeout");
    return result.join(QLatin1Char('\n'));
}

QString scriptLiteral(const QString& text) {
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

}  // namespace kestrant
