#include "speech/Dates.h"
#include "speech/Grammar.h"

#include <chrono>
#include <utility>
#include <vector>

namespace kestrant::speech {

using Gap = Token::Gap;

std::optional<SpokenLength> Grammar::length(int i) const {
    SpokenLength result{.end = i, .isWeeks = true};
    auto smallest = static_cast<int>(Unit::workday) + 1;
    int at = i;
    for (int parts = 0; parts < 4; ++parts) {
        const auto amount = amountInQuarters(at);
        if (!amount)
            break;
        const Found* found = unitAt(amount->end);
        if (!found || found->word.value >= smallest)
            break;
        auto unit = static_cast<Unit>(found->word.value);
        smallest = found->word.value;
        int quarters = amount->value;
        int end = found->end;
        if (const Found* mark = senses_.find(end, Sense::fractionMark)) {
            quarters += mark->word.value;
            end = mark->end;
        }
        if (unit == Unit::weekend)
            return std::nullopt;
        result.isWeeks &= unit == Unit::week || unit == Unit::fortnight;
        result.isWorkdays |= unit == Unit::workday;
        switch (unit) {
        case Unit::minute:
            result.length.minutes += (quarters + 2) / 4;
            break;
        case Unit::hour: {
            result.length.minutes += quarters * 15;
            const auto minutes = number(end);
            if (!minutes || minutes->value >= 60)
                break;
            // "1 h 30"
            const bool inDigits = minutes->digits > 0 && !unitAt(minutes->end) &&
                                  (tokens_.isGlued(end) || tokens_.ends(minutes->end));
            // "une heure dix"
            const bool inWords = minutes->digits == 0 && found->word.language == Language::french &&
                                 minutes->value % 5 == 0 && tokens_.isStop(minutes->end);
            if (inDigits || inWords) {
                result.length.minutes += minutes->value;
                end = minutes->end;
            }
            break;
        }
        case Unit::day:
        case Unit::workday:
            if (quarters % 4 == 0)
                result.length.days += quarters / 4;
            else
                result.length.minutes += quarters * 360;
            break;
        case Unit::week:
        case Unit::fortnight: {
            result.length.days += quarters * (unit == Unit::week ? 7 : 14) / 4;
            break;
        }
        case Unit::month:
            result.length.months += quarters / 4;
            result.length.days += quarters % 4 * 15 / 2;
            break;
        case Unit::quarterYear:
            result.length.months += quarters * 3 / 4;
            break;
        case Unit::year:
            result.length.months += quarters * 3;
            break;
        case Unit::weekend:
            break;
        }
        result.end = end;
        at = senses_.past(end, Sense::and_);
        if (tokens_.isSign(at, u','))
            ++at;
    }
    if (result.length.isNothing())
        return std::nullopt;
    return result;
}

/// "1:45"
std::optional<SpokenLength> Grammar::lengthInDigits(int i) const {
    const bool isParted = tokens_.isSign(i + 1, u':') && tokens_.isGlued(i + 1) && tokens_.isGlued(i + 2);
    if (!isParted || !tokens_.isKind(i, Token::Kind::number) || !tokens_.isKind(i + 2, Token::Kind::number) ||
        tokens_[i].digits > 2 || tokens_[i + 2].digits != 2 || tokens_[i + 2].number > 59)
        return std::nullopt;
    SpokenLength result{.end = i + 3};
    result.length.minutes = tokens_[i].number * 60 + tokens_[i + 2].number;
    return result.length.isNothing() ? std::nullopt : std::optional(result);
}

Meaning Grammar::after(const SpokenLength& length, QDate day, int sign) const {
    Meaning meaning;
    if (length.isWorkdays) {
        for (int left = length.length.days; left > 0;) {
            day = day.addDays(sign);
            left -= day.dayOfWeek() < 6 ? 1 : 0;
        }
        meaning.date = day;
    } else {
        meaning.date = length.length.addedTo(day, sign);
    }
    return meaning;
}

Meaning Grammar::fromNow(const SpokenLength& length) const {
    Meaning meaning = after(length, today_);
    if (length.length.minutes == 0)
        return meaning;
    Instant base = present_.now;
    if (length.length.days != 0 || length.length.months != 0)
        base = present_.zone.instantAt(meaning.date, present_.zone.timeOf(present_.now));
    meaning.date = {};
    meaning.moment = base + std::chrono::minutes(length.length.minutes);
    return meaning;
}

/// "the Monday after Easter", "le vendredi avant Noël", "the week before Christmas".
void Grammar::addAroundDays(int i, Atoms& result) const {
    const Found* weekday = senses_.find(i, Sense::weekday);
    // "week before" needs its article.
    const int from = senses_.past(i, Sense::the);
    const Found* week = weekday || (from == i && i > 0) ? nullptr : senses_.find(from, Sense::unit);
    const bool isWeek = week && !week->word.isShort && week->word.value == static_cast<int>(Unit::week);
    if (!weekday && !isWeek)
        return;
    const int end = weekday ? weekday->end : week->end;
    for (const auto& [sense, sign] : {std::pair(Sense::before, -1), std::pair(Sense::after, 1)}) {
        const Found* found = senses_.find(end, sense);
        const auto day = found ? dayAt(senses_.past(found->end, Sense::the)) : std::nullopt;
        // Of a plain weekday no other one is counted: "friday before monday".
        const bool isDate = day && (day->meaning.date.isValid() || day->meaning.monthDay != 0);
        const auto moment = isDate ? resolved(day->meaning, present_) : std::nullopt;
        if (!moment)
            continue;
        QDate date = moment->day.addDays(7 * sign);
        if (weekday)
            date = sign > 0 ? nextWeekday(moment->day, weekday->word.value)
                            : nextWeekday(moment->day.addDays(-8), weekday->word.value);
        if (date >= today_)
            result.push_back({.end = day->end, .meaning = {.date = date}});
    }
}

void Grammar::addLengths(int i, Atoms& result) const {
    const bool isPlus = tokens_.isSign(i, u'+');
    const auto relative = [&](int end, const SpokenLength& spoken) {
        if (const Found* ago = senses_.find(end, Sense::ago);
            ago && ago->word.language == Language::english) {
            Meaning past = fromNow(spoken);
            past.isPast = true;
            result.push_back({.end = ago->end, .meaning = past});
            return;
        }
        result.push_back({.end = end, .meaning = fromNow(spoken)});
    };
    if (isPlus) {
        if (const auto spoken = length(i + 1); spoken && tokens_.isGlued(i + 1))
            relative(spoken->end, *spoken);
        return;
    }
    for (const Found* lead = senses_.begin(i); lead != senses_.end(i); ++lead) {
        if (lead->word.sense == Sense::in ||
            (lead->word.sense == Sense::ago && lead->word.language == Language::french)) {
            const auto spoken = lead->word.sense == Sense::in && !length(lead->end)
                                    ? lengthInDigits(lead->end)
                                    : length(lead->end);
            if (!spoken)
                continue;
            if (lead->word.sense == Sense::ago) {
                Meaning past = fromNow(*spoken);
                past.isPast = true;
                result.push_back({.end = spoken->end, .meaning = past});
                continue;
            }
            // "sous 48h" is two days, not a time.
            SpokenLength whole = *spoken;
            if (whole.length.minutes >= 2 * 1440 && whole.length.minutes % 1440 == 0) {
                whole.length.days += static_cast<int>(whole.length.minutes / 1440);
                whole.length.minutes = 0;
            }
            int end = spoken->end;
            if (tokens_.isSign(end, u'\'') || tokens_.isSign(end, u'’'))
                ++end;
            const int behind = senses_.past(end, Sense::inTime);
            relative(behind != end ? behind : senses_.past(spoken->end, Sense::fromNow), whole);
        }
    }
    // "in 3 fridays", "3 fridays from now"
    const Found* in = senses_.find(i, Sense::in);
    const auto times = number(in ? in->end : i);
    if (const Found* weekday = times ? senses_.find(times->end, Sense::weekdays) : nullptr;
        weekday && times->value >= 1 && times->value <= 53) {
        const int behind = senses_.past(weekday->end, Sense::fromNow);
        if (in || behind != weekday->end)
            result.push_back(
                {.end = behind,
                 .meaning = {.date =
                                 nextWeekday(today_, weekday->word.value).addDays(7 * (times->value - 1))}});
    }
    addAroundDays(i, result);
    for (const auto& [sense, sign] : {std::pair(Sense::eve, -1), std::pair(Sense::morrow, 1)}) {
        if (const Found* found = senses_.find(i, sense)) {
            if (const auto day = dayAt(found->end)) {
                if (const auto moment = resolved(day->meaning, present_))
                    result.push_back({.end = day->end, .meaning = {.date = moment->day.addDays(sign)}});
            }
        }
    }
    const auto spoken = length(i);
    if (!spoken)
        return;
    if (const Found* behind = senses_.find(spoken->end, Sense::fromNow))
        result.push_back({.end = behind->end, .meaning = fromNow(*spoken)});
    if (senses_.has(spoken->end, Sense::ago))
        relative(spoken->end, *spoken);
    if (spoken->length.minutes != 0)
        return;
    struct Joint {
        int end;
        int sign;
    };
    std::vector<Joint> joints;
    if (senses_.has(spoken->end, Sense::before))
        joints.push_back({senses_.past(spoken->end, Sense::before), -1});
    if (senses_.has(spoken->end, Sense::after))
        joints.push_back({senses_.past(spoken->end, Sense::after), 1});
    // "a week tomorrow", "a week on friday"
    if (spoken->isWeeks && joints.empty())
        joints.push_back({senses_.past(spoken->end, Sense::weekOut), 1});
    for (const Joint& each : joints) {
        const auto day = dayAt(senses_.past(each.end, Sense::the));
        const auto moment = day ? resolved(day->meaning, present_) : std::nullopt;
        if (moment)
            result.push_back({.end = day->end, .meaning = after(*spoken, moment->day, each.sign)});
    }
}

}  // namespace kestrant::speech
