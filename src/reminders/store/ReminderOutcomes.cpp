#include "reminders/store/ReminderOutcomes.h"

#include "eventkit/model/EKReminder.h"
#include "reminders/model/ReminderConversion.h"
#include "reminders/model/ReminderDueText.h"

namespace kestrant {
namespace {

QString shortened(const QString& title) {
    constexpr qsizetype longest = 60;
    const QString name = title.simplified();
    return name.size() > longest ? name.first(longest - 1) + u'…' : name;
}

}  // namespace

TextPair outcomeText(const TextPair& sentence, const QString& title, const TextPair& detail) {
    const QString name = shortened(title);
    const auto filled = [&](const QString& words, const QString& more) {
        return words.contains(QLatin1String("%2")) ? words.arg(name, more) : words.arg(name);
    };
    return {filled(sentence.english, detail.english), filled(sentence.french, detail.french)};
}

ReminderActionHistory::Outcome completionOutcome(const QString& title, const std::optional<TextPair>& next) {
    const TextPair sentence = next ? text("“%1” completed · next on %2", "« %1 » terminé · prochain le %2")
                                   : text("“%1” completed", "« %1 » terminé");
    return {outcomeText(sentence, title, next.value_or(TextPair{})),
            outcomeText(text("“%1” is open again", "« %1 » est de nouveau ouvert"), title)};
}

std::optional<TextPair> dueInWords(const EKReminderData& reminder, Instant now, const TimeZone& zone,
                                   ClockHours hours) {
    const ReminderEditDetails details = reminderEditDetails(reminder, zone);
    if (!details.dueDate)
        return std::nullopt;
    const auto in = [&](Language language) {
        QString day = dateInWords(zone.dayOf(*details.dueDate), zone.dayOf(now), language);
        if (!details.dueDateIncludesTime)
            return day;
        const auto clock = language == Language::french ? ClockHours::twentyFour : hours;
        return day + QLatin1Char(' ') + clockText(zone.timeOf(*details.dueDate), clock);
    };
    return TextPair{in(Language::english), in(Language::french)};
}

TextPair reschedulingOutcome(const QString& title, const std::optional<TextPair>& due) {
    return due ? outcomeText(text("“%1” moved to %2", "« %1 » déplacé au %2"), title, *due)
               : outcomeText(text("“%1” has no due date any more", "« %1 » n’a plus d’échéance"), title);
}

}  // namespace kestrant
