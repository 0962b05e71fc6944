#include "reminders/model/ReminderRepeat.h"

#include "eventkit/recurrence/RecurrenceRule.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using icalendar::RecurrenceRule;

struct RepeatChoice {
    ReminderRepeat repeat;
    QLatin1String rawValue;
    /// `other` for none.
    EKRecurrenceFrequency frequency;
};

/// In the order of the enumeration.
constexpr std::array repeatChoices{
    RepeatChoice{ReminderRepeat::none, QLatin1String("none"), EKRecurrenceFrequency::other},
    RepeatChoice{ReminderRepeat::daily, QLatin1String("daily"), EKRecurrenceFrequency::daily},
    RepeatChoice{ReminderRepeat::weekly, QLatin1String("weekly"), EKRecurrenceFrequency::weekly},
    RepeatChoice{ReminderRepeat::monthly, QLatin1String("monthly"), EKRecurrenceFrequency::monthly},
    RepeatChoice{ReminderRepeat::yearly, QLatin1String("yearly"), EKRecurrenceFrequency::yearly},
};

template <typename Field, typename Value>
std::optional<ReminderRepeat> repeatWhere(Field RepeatChoice::*field, const Value& value) {
    for (const RepeatChoice& choice : repeatChoices) {
        if (choice.*field == value)
            return choice.repeat;
    }
    return std::nullopt;
}

QLocale namesOf(Language language) {
    return language == Language::french ? QLocale(QLocale::French, QLocale::France)
                                        : QLocale(QLocale::English, QLocale::UnitedStates);
}

QString howOften(EKRecurrenceFrequency frequency, int interval, Language language) {
    const bool each = interval == 1;
    const auto words = [&](const TextPair& one, const TextPair& several) {
        return each ? one.in(language) : several.in(language).arg(interval);
    };
    switch (frequency) {
    case EKRecurrenceFrequency::daily:
        return words(text("daily", "tous les jours"), text("every %1 days", "tous les %1 jours"));
    case EKRecurrenceFrequency::weekly:
        return words(text("weekly", "toutes les semaines"), text("every %1 weeks", "toutes les %1 semaines"));
    case EKRecurrenceFrequency::monthly:
        return words(text("monthly", "tous les mois"), text("every %1 months", "tous les %1 mois"));
    case EKRecurrenceFrequency::yearly:
        return words(text("yearly", "tous les ans"), text("every %1 years", "tous les %1 ans"));
    case EKRecurrenceFrequency::other:
        break;
    }
    return {};
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

QString rawValue(ReminderRepeat repeat) {
    return repeatChoices.at(std::size_t(repeat)).rawValue;
}

std::optional<ReminderRepeat> reminderRepeat(QStringView raw) {
    return repeatWhere(&RepeatChoice::rawValue, raw);
}

std::optional<ReminderRepeat> reminderRepeat(const std::vector<EKRecurrenceRule>& rules) {
    if (rules.empty())
        return ReminderRepeat::none;
    const EKRecurrenceRule& rule = rules.front();
    if (rules.size() > 1 || !rule.isSimple || rule.interval != 1 ||
        rule.frequency == EKRecurrenceFrequency::other)
        return std::nullopt;
    return repeatWhere(&RepeatChoice::frequency, rule.frequency);
}

std::vector<EKRecurrenceRule> recurrenceRules(ReminderRepeat repeat) {
    if (repeat == ReminderRepeat::none)
        return {};
    return {EKRecurrenceRule::every(repeatChoices.at(std::size_t(repeat)).frequency)};
}

QString repeatInWords(const std::vector<EKRecurrenceRule>& rules, Language language) {
    if (rules.empty())
        return text("never", "jamais").in(language);
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
    // The adjectives are half as long.
    if (language == Language::french && rule.interval == 1) {
        switch (rule.frequency) {
        case EKRecurrenceFrequency::daily:
            return QStringLiteral("quotidien");
        case EKRecurrenceFrequency::weekly:
            return QStringLiteral("hebdo");
        case EKRecurrenceFrequency::monthly:
            return QStringLiteral("mensuel");
        case EKRecurrenceFrequency::yearly:
            return QStringLiteral("annuel");
        case EKRecurrenceFrequency::other:
            return {};
        }
    }
    return howOften(rule.frequency, rule.interval, language);
}

}  // namespace kestrant
