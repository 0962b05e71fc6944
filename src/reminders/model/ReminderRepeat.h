#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Choice.h"
#include "foundation/Text.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace kestrant {

/// How often a reminder repeats, as far as forms offer it. Rules that are none of these are kept and shown in
/// words.
enum class ReminderRepeat { none, daily, weekly, monthly, yearly };

template <>
inline constexpr auto choicesOf<ReminderRepeat> = std::to_array<Choice<ReminderRepeat>>({
    {ReminderRepeat::none, "none", "never", "jamais"},
    {ReminderRepeat::daily, "daily", "daily", "tous les jours"},
    {ReminderRepeat::weekly, "weekly", "weekly", "toutes les semaines"},
    {ReminderRepeat::monthly, "monthly", "monthly", "tous les mois"},
    {ReminderRepeat::yearly, "yearly", "yearly", "tous les ans"},
});

/// Which of the choices these rules are; absent when they are something else.
[[nodiscard]] std::optional<ReminderRepeat> reminderRepeat(const std::vector<EKRecurrenceRule>& rules);
/// The rules that stand for a choice.
[[nodiscard]] std::vector<EKRecurrenceRule> recurrenceRules(ReminderRepeat repeat);

/// Any rules in words, for use inside a sentence: "never", "yearly", "every Mon, Thu",
/// "monthly on the last Friday, until 3 May 2027", "twice a day", "custom" for what takes more words.
[[nodiscard]] QString repeatInWords(const std::vector<EKRecurrenceRule>& rules, Language language);
/// How often alone, for where there is little room: "every 2 weeks". Empty where that cannot be said.
[[nodiscard]] QString shortRepeatText(const std::vector<EKRecurrenceRule>& rules, Language language);

}  // namespace kestrant
