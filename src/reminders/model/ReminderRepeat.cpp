#include "reminders/model/ReminderRepeat.h"

#include "eventkit/recurrence/RecurrenceRule.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using icalendar::RecurrenceRule;

/// The simple rules that forms offer.
struct SimpleRepeat {
    ReminderRepeat repeat;
    EKRecurrenceFrequency frequency;
    /// With the interval in the place of %1.
    const char* english;
    const char* french;
    /// The French adjective, half as long as the words.
    const char* shortFrench;
};
constexpr auto simpleRepeats = std::to_array<SimpleRepeat>({
    {ReminderRepeat::daily, EKRecurrenceFrequency::daily, "every %1 days", "tous les %1 jours", "quotidien"},
    {ReminderRepeat::weekly, EKRecurrenceFrequency::weekly, "every %1 weeks", "toutes les %1 semaines",
     "hebdo"},
    {ReminderRepeat::monthly, EKRecurrenceFrequency::monthly, "every %1 months", "tous les %1 mois",
     "mensuel"},
    {ReminderRepeat::yearly, EKRecurrenceFrequency::yearly, "every %1 years", "tous les %1 ans", "annuel"},
});

const SimpleRepeat* simpleRepeat(EKRecurrenceFrequency frequency) {
    for (const SimpleRepeat& each : simpleRepeats) {
        if (each.frequency == frequency)
            return &each;
    }
    return nullptr;
}

QLocale namesOf(Language language) {
    return language == Language::french ? QLocale(QLocale::French, QLocale::France)
                                        : QLocale(QLocale::English, QLocale::UnitedStates);
}

QString howOften(EKRecurrenceFrequency frequency, int interval, Language language) {
    const SimpleRepeat* repeat = simpleRepeat(frequency);
    if (!repeat)
        return {};
    return interval == 1 ? title(repeat->repeat).in(language)
                         : text(repeat->english, repeat->french).in(language).arg(interval);
}

std::optional<TextPair> ordinalInWords(int ordinal) {
    switch (ordinal) {
    case 1:
        return text("first", "premier");
    case 2:
        return text("second", "deuxième");
    case 3:
        return text("third", "troisième");
    case 4:
        return text("fourth", "quatrième");
    case -1:
        return text("last", "dernier");
    default:
        return std::nullopt;
    }
}

bool picksDaysOfTheWeek(const RecurrenceRule& rule) {
    return rule.frequency == RecurrenceRule::Frequency::weekly && rule.byMonthDay.empty() &&
           !rule.byDay.empty() && std::all_of(rule.byDay.begin(), rule.byDay.end(), [](const auto& day) {
               return day.ordinal == 0;
           });
}

/// "Mon, Thu"
QString daysOfTheWeek(const std::vector<RecurrenceRule::WeekDay>& days, Language language) {
    QStringList names;
    for (const auto& day : days)
        names.append(namesOf(language).dayName(day.day, QLocale::ShortFormat));
    return names.join(QStringLiteral(", "));
}

/// On which day of the month: " on the last Friday", " on day 15".
std::optional<QString> dayOfTheMonth(const RecurrenceRule& rule, Language language) {
    if (rule.byDay.empty() && rule.byMonthDay == std::vector<int>{-1})
        return text(" on the last day", ", le dernier jour").in(language);
    if (rule.byDay.empty() && rule.byMonthDay.size() == 1 && rule.byMonthDay.front() > 0)
        return text(" on day %1", ", le %1").in(language).arg(rule.byMonthDay.front());
    if (!rule.byMonthDay.empty() || rule.byDay.size() != 1)
        return std::nullopt;
    const auto ordinal = ordinalInWords(rule.byDay.front().ordinal);
    if (!ordinal)
        return std::nullopt;
    return text(" on the %1 %2", ", le %1 %2")
        .in(language)
        .arg(ordinal->in(language), namesOf(language).dayName(rule.byDay.front().day));
}

/// The days a rule picks; absent when that takes more than a few words.
std::optional<QString> daysInWords(const RecurrenceRule& rule, Language language) {
    if (!rule.hasByParts())
        return QString();
    RecurrenceRule others = rule;
    others.byDay.clear();
    others.byMonthDay.clear();
    if (others.hasByParts())
        return std::nullopt;
    if (picksDaysOfTheWeek(rule))
        return text(" on %1", " : %1").in(language).arg(daysOfTheWeek(rule.byDay, language));
    if (rule.frequency == RecurrenceRule::Frequency::monthly)
        return dayOfTheMonth(rule, language);
    return std::nullopt;
}

QString endInWords(const RecurrenceRule& rule, Language language) {
    if (rule.count)
        return text(", %1 times", ", %1 fois").in(language).arg(*rule.count);
    if (rule.until)
        return text(", until %1", ", jusqu’au %1")
            .in(language)
            .arg(namesOf(language).toString(rule.until->time.day, QStringLiteral("d MMM yyyy")));
    return {};
}

}  // namespace

std::optional<ReminderRepeat> reminderRepeat(const std::vector<EKRecurrenceRule>& rules) {
    if (rules.empty())
        return ReminderRepeat::none;
    if (rules.size() > 1 || !rules.front().isSimple || rules.front().interval != 1)
        return std::nullopt;
    const SimpleRepeat* found = simpleRepeat(rules.front().frequency);
    return found ? std::optional(found->repeat) : std::nullopt;
}

std::vector<EKRecurrenceRule> recurrenceRules(ReminderRepeat repeat) {
    for (const SimpleRepeat& each : simpleRepeats) {
        if (each.repeat == repeat)
            return {EKRecurrenceRule::every(each.frequency)};
    }
    return {};
}

QString repeatInWords(const std::vector<EKRecurrenceRule>& rules, Language language) {
    if (rules.empty())
        return title(ReminderRepeat::none).in(language);
    const auto rule = rules.size() == 1 ? RecurrenceRule::parse(rules.front().text.toUtf8()) : std::nullopt;
    const QString often =
        rule ? howOften(rules.front().frequency, rules.front().interval, language) : QString();
    const auto days = rule ? daysInWords(*rule, language) : std::nullopt;
    if (often.isEmpty() || !days)
        return text("custom", "personnalisée").in(language);
    if (rule->interval == 1 && picksDaysOfTheWeek(*rule))
        return text("every %1", "tous les %1").in(language).arg(daysOfTheWeek(rule->byDay, language)) +
               endInWords(*rule, language);
    return often + *days + endInWords(*rule, language);
}

QString shortRepeatText(const std::vector<EKRecurrenceRule>& rules, Language language) {
    if (rules.size() != 1)
        return {};
    const EKRecurrenceRule& rule = rules.front();
    const SimpleRepeat* simple = simpleRepeat(rule.frequency);
    if (simple && language == Language::french && rule.interval == 1)
        return QString::fromUtf8(simple->shortFrench);
    return howOften(rule.frequency, rule.interval, language);
}

}  // namespace kestrant
