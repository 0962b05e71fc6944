#include "ui/reminders/RepeatChoices.h"

#include "ui/calendar/Capitalized.h"

namespace kestrant {

QString repeatTitle(const std::vector<EKRecurrenceRule>& rules, const Localizer& localizer) {
    return capitalized(repeatInWords(rules, localizer.language()));
}

QVariantList repeatChoices(const std::vector<EKRecurrenceRule>& present, const Localizer& localizer) {
    QVariantList choices;
    const auto offer = [&](const QString& id, const std::vector<EKRecurrenceRule>& rules) {
        choices.append(QVariantMap{{QStringLiteral("id"), id},
                                   {QStringLiteral("title"), repeatTitle(rules, localizer)}});
    };
    for (const auto& repeat : choicesOf<ReminderRepeat>)
        offer(rawValue(repeat.value), recurrenceRules(repeat.value));
    if (!reminderRepeat(present))
        offer({}, present);
    return choices;
}

}  // namespace kestrant
