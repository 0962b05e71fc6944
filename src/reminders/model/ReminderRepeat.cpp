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

/// "1, 15 and 20"
QString listed(const QStringList& names, Language language) {
    if (names.size() < 2)
        return names.join(QString());
    return names.mid(0, names.size() - 1).join(QStringLiteral(", ")) + text(" and ", " et ").in(language) +
           names.back();
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

/// "first and third"; absent for a number that has no word.
std::optional<QString> ordinalsInWords(const std::vector<int>& ordinals, Language language) {
    QStringList names;
    for (const int ordinal : ordinals) {
        const auto name = ordinalInWords(ordinal);
        if (!name)
            return std::nullopt;
        names.append(name->in(language));
    }
    return listed(names, language);
}

/// "second and fourth Tuesday", "last working day"
std::optional<QString> countedWeekday(const RecurrenceRule& rule, Language language) {
    std::vector<int> ordinals = rule.bySetPosition;
    QString name = namesOf(language).dayName(rule.byDay.front().day);
    if (!ordinals.empty()) {
        bool areWorkingDays = rule.byDay.size() == 5;
        for (const auto& day : rule.byDay)
            areWorkingDays &= day.ordinal == 0 && day.day <= 5;
        if (!areWorkingDays)
            return std::nullopt;
        name = text("working day", "jour ouvré").in(language);
    }
    for (const auto& day : rule.byDay) {
        if (rule.bySetPosition.empty() && day.day != rule.byDay.front().day)
            return std::nullopt;
        if (rule.bySetPosition.empty())
            ordinals.push_back(day.ordinal);
    }
    const auto words = ordinalsInWords(ordinals, language);
    return words ? std::optional(*words + QLatin1Char(' ') + name) : std::nullopt;
}

/// On which days of the month: " on the last Friday", " on day 15".
std::optional<QString> daysOfTheMonth(const RecurrenceRule& rule, Language language) {
    if (!rule.byDay.empty()) {
        const auto weekday = rule.byMonthDay.empty() ? countedWeekday(rule, language) : std::nullopt;
        return weekday ? std::optional(text(" on the %1", ", le %1").in(language).arg(*weekday))
                       : std::nullopt;
    }
    if (rule.byMonthDay == std::vector<int>{-1})
        return text(" on the last day", ", le dernier jour").in(language);
    QStringList days;
    for (const int day : rule.byMonthDay) {
        if (day < 0)
            return std::nullopt;
        days.append(QString::number(day));
    }
    const TextPair lead = days.size() == 1 ? text(" on day %1", ", le %1") : text(" on days %1", ", les %1");
    return lead.in(language).arg(listed(days, language));
}

/// On which day of the year: " on 5 June", " on the last Monday of May".
std::optional<QString> dayOfTheYear(const RecurrenceRule& rule, Language language) {
    if (rule.byMonth.size() != 1)
        return std::nullopt;
    const QString month = namesOf(language).standaloneMonthName(rule.byMonth.front());
    if (rule.byDay.empty() && rule.byMonthDay.size() == 1 && rule.byMonthDay.front() > 0)
        return text(" on %1 %2", ", le %1 %2").in(language).arg(rule.byMonthDay.front()).arg(month);
    const auto weekday =
        rule.byMonthDay.empty() && !rule.byDay.empty() ? countedWeekday(rule, language) : std::nullopt;
    if (!weekday)
        return std::nullopt;
    const bool isElided = QStringView(u"ao").contains(month.front().toLower());
    return text(" on the %1 of %2", isElided ? ", le %1 d’%2" : ", le %1 de %2")
        .in(language)
        .arg(*weekday, month);
}

/// "twice a day", of which the times are those of the first date.
QString timesADay(std::size_t times, Language language) {
    return times == 2 ? text("twice a day", "deux fois par jour").in(language)
                      : text("%1 times a day", "%1 fois par jour").in(language).arg(times);
}

/// The days a rule picks; absent when that takes more than a few words.
std::optional<QString> daysInWords(const RecurrenceRule& rule, Language language) {
    if (!rule.hasByParts())
        return QString();
    RecurrenceRule others = rule;
    others.byDay.clear();
    others.byMonthDay.clear();
    others.bySetPosition.clear();
    if (rule.frequency == RecurrenceRule::Frequency::yearly)
        others.byMonth.clear();
    if (others.hasByParts())
        return std::nullopt;
    if (picksDaysOfTheWeek(rule) && rule.bySetPosition.empty())
        return text(" on %1", " : %1").in(language).arg(daysOfTheWeek(rule.byDay, language));
    if (rule.frequency == RecurrenceRule::Frequency::monthly)
        return daysOfTheMonth(rule, language);
    if (rule.frequency == RecurrenceRule::Frequency::yearly)
        return dayOfTheYear(rule, language);
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
    auto rule = rules.size() == 1 ? RecurrenceRule::parse(rules.front().text.toUtf8()) : std::nullopt;
    if (!rule)
        return text("custom", "personnalisée").in(language);
    if (rule->frequency == RecurrenceRule::Frequency::hourly && !rule->hasByParts())
        return (rule->interval == 1
                    ? text("every hour", "toutes les heures").in(language)
                    : text("every %1 hours", "toutes les %1 heures").in(language).arg(rule->interval)) +
               endInWords(*rule, language);
    const std::size_t times = rule->byHour.size();
    rule->byHour.clear();
    const bool isDaily = rule->frequency == RecurrenceRule::Frequency::daily && rule->interval == 1;
    if (times > 1 && isDaily && !rule->hasByParts())
        return timesADay(times, language) + endInWords(*rule, language);
    const QString often = howOften(rules.front().frequency, rules.front().interval, language);
    const auto days = daysInWords(*rule, language);
    if (often.isEmpty() || !days || times == 1)
        return text("custom", "personnalisée").in(language);
    const QString onDays =
        rule->interval == 1 && picksDaysOfTheWeek(*rule)
            ? text("every %1", "tous les %1").in(language).arg(daysOfTheWeek(rule->byDay, language))
            : often + *days;
    return onDays + (times > 1 ? QStringLiteral(", ") + timesADay(times, language) : QString()) +
           endInWords(*rule, language);
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
