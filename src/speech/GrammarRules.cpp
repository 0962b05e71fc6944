#include "speech/Dates.h"
#include "speech/Grammar.h"

#include <algorithm>
#include <array>
#include <bit>

namespace kestrant::speech {
namespace {

using Frequency = Rule::Frequency;
using Kind = Token::Kind;
using Need = Atom::Need;

constexpr std::uint8_t monday = 1;

std::optional<Rule> everyUnit(Unit unit, int count) {
    Rule rule{.interval = count};
    switch (unit) {
    case Unit::hour:
        rule.frequency = Frequency::hourly;
        break;
    case Unit::day:
        rule.frequency = Frequency::daily;
        break;
    case Unit::week:
        rule.frequency = Frequency::weekly;
        break;
    case Unit::fortnight:
        rule.frequency = Frequency::weekly;
        rule.interval = 2 * count;
        break;
    case Unit::month:
        rule.frequency = Frequency::monthly;
        break;
    case Unit::quarterYear:
        rule.frequency = Frequency::monthly;
        rule.interval = 3 * count;
        break;
    case Unit::year:
        rule.frequency = Frequency::yearly;
        break;
    case Unit::weekend:
        rule.frequency = Frequency::weekly;
        rule.weekdays = 0b0100000;
        break;
    case Unit::workday:
        rule.frequency = Frequency::weekly;
        rule.weekdays = workingDays;
        break;
    case Unit::minute:
        return std::nullopt;
    }
    return rule;
}

}  // namespace

/// "mon, wed and friday"; at most seven.
std::uint8_t Grammar::weekdayList(int i, int& end, Sense sense) const {
    std::uint8_t days = 0;
    int at = i;
    for (int count = 0; count < 7; ++count) {
        const Found* day = senses_.find(at, sense);
        if (!day)
            day = senses_.find(at, sense == Sense::weekday ? Sense::weekdays : Sense::weekday);
        if (!day || (count > 0 && tokens_[at].gap == Token::Gap::hyphen))
            break;
        days |= small(monday << (day->word.value - 1));
        end = day->end;
        at = day->end;
        if (tokens_.isSign(at, u'.') && day->word.isShort) {
            ++at;
            end = tokens_.isGlued(at - 1) ? at : end;
        }
        if (tokens_.isSign(at, u',') || tokens_.isSign(at, u'/') || tokens_.isSign(at, u'&') ||
            tokens_.isSign(at, u'+'))
            ++at;
        at = senses_.past(at, Sense::and_);
        for (const Sense filler : {Sense::every, Sense::on, Sense::the})
            at = senses_.past(at, filler);
    }
    return days;
}

void Grammar::addRules(int i, Atoms& result) const {
    addAdverbs(i, result);
    addListedDays(i, result);
    addNthOfEvery(i, result);
    addEvery(i, result);
}

namespace {

Atom repeating(int end, const Rule& rule, Need need = Need::nothing, Meaning meaning = {}) {
    meaning.rule = rule;
    return {.end = end, .meaning = meaning, .need = need, .leads = leadsToDay | leadsToSpan};
}

/// Several times a day, at the usual times of its parts.
std::optional<Rule> timesOfDay(int times, Meaning& meaning) {
    constexpr std::array parts{DayPart::morning, DayPart::evening, DayPart::afternoon};
    if (times < 2 || times > static_cast<int>(parts.size()))
        return std::nullopt;
    Rule rule{.frequency = Frequency::daily};
    for (int k = 0; k < times; ++k)
        rule.hours |= std::uint32_t{1} << usualTime(parts.at(static_cast<std::size_t>(k))).hour();
    meaning.minute = usualTime(parts.front()).hour() * 60;
    return rule;
}

}  // namespace

/// "daily", "weekdays", "mondays", "once a week", "un mardi sur deux".
void Grammar::addAdverbs(int i, Atoms& result) const {
    if (const Found* often = senses_.find(i, Sense::frequency)) {
        // From "daily" on: daily, weekly, fortnightly, monthly, yearly, -, quarterly, half-yearly, twice a
        // day.
        constexpr std::array units{Unit::day,  Unit::week, Unit::fortnight,   Unit::month,
                                   Unit::year, Unit::year, Unit::quarterYear, Unit::quarterYear};
        constexpr std::size_t halfYearly = 7;
        constexpr std::size_t twiceDaily = 8;
        const auto place = static_cast<std::size_t>(often->word.value - 3);
        const bool isAdverb = !often->word.isShort && often->word.language == Language::french;
        // At the end of the line an adverb says how often; before a word it says of what kind.
        const bool isLast = tokens_.isStop(often->end) && i > 0 && !often->word.isShort;
        const Need need = isAdverb || isLast ? Need::nothing : Need::help;
        Meaning meaning;
        const auto rule = place == twiceDaily ? timesOfDay(2, meaning)
                                              : everyUnit(units.at(place), place == halfYearly ? 2 : 1);
        result.push_back(repeating(often->end, *rule, need, meaning));
    }
    if (const Found* days = senses_.find(i, Sense::workdays); days && !days->word.isShort) {
        result.push_back(repeating(
            days->end,
            {.frequency = Frequency::weekly, .weekdays = days->word.value == 0 ? workingDays : weekend},
            Need::help));
        result.back().helpedBy = leadsToDay;
    }
    if (senses_.has(i, Sense::weekdays)) {
        int end = i;
        const std::uint8_t days = weekdayList(i, end, Sense::weekdays);
        const bool isLast = tokens_.isStop(end) && i > 0;
        result.push_back(repeating(end, {.frequency = Frequency::weekly, .weekdays = days},
                                   isLast ? Need::room : Need::help));
        result.back().helpedBy = leadsToDay;
    }
    // "three times a week" names no days.
    if (const Found* once = senses_.find(i, Sense::once)) {
        const int at = std::max(senses_.past(once->end, Sense::per), senses_.past(once->end, Sense::article));
        if (const Found* unit = unitAt(at); unit && at != once->end) {
            const auto kind = static_cast<Unit>(unit->word.value);
            Meaning meaning;
            const auto rule = once->word.value == 1 ? everyUnit(kind, 1)
                              : kind == Unit::day   ? timesOfDay(once->word.value, meaning)
                                                    : std::nullopt;
            if (rule)
                result.push_back(repeating(unit->end, *rule, Need::nothing, meaning));
        }
    }
    if (const auto one = number(i); one && one->value == 1) {
        const Found* weekday = senses_.find(one->end, Sense::weekday);
        const Found* unit = unitAt(one->end);
        const int end = weekday ? weekday->end : unit ? unit->end : 0;
        // "un mercredi soir sur deux"
        const Found* part = weekday ? senses_.find(end, Sense::part) : nullptr;
        const Found* outOf = end != 0 ? senses_.find(part ? part->end : end, Sense::outOf) : nullptr;
        const auto count = outOf ? number(outOf->end) : std::nullopt;
        if (count && count->value >= 2 && count->value <= 12) {
            const auto rule =
                weekday ? Rule{.frequency = Frequency::weekly,
                               .interval = count->value,
                               .weekdays = small(monday << (weekday->word.value - 1))}
                        : everyUnit(static_cast<Unit>(unit->word.value), count->value).value_or(Rule{});
            const Meaning meaning{.part = part ? static_cast<DayPart>(part->word.value + 1) : DayPart::none};
            if (rule.frequency != Frequency::none)
                result.push_back(repeating(count->end, rule, Need::nothing, meaning));
        }
    }
}

/// "mon wed fri", "lundi et mercredi": those days, once each. "mon-fri" is a list only where it has a time.
void Grammar::addListedDays(int i, Atoms& result) const {
    const Found* first = senses_.find(i, Sense::weekday);
    const Found* other = senses_.find(i, Sense::otherWord);
    // "with Sam friday"
    if (!first || (other && other->word.value == 2 && tokens_[i].isCapital))
        return;
    const auto add = [&](int end, std::uint8_t days, QDate start, Need need) {
        Rule rule{.frequency = Frequency::weekly, .weekdays = days};
        rule.count = std::popcount(days);
        rule.isList = true;
        result.push_back(repeating(end, rule, need, {.start = start}));
        result.back().helpedBy = isClear;
    };
    int end = i;
    const std::uint8_t days = weekdayList(i, end, Sense::weekday);
    if (std::popcount(days) > 1) {
        // "sat", "sun" and the like need a clearer word or a joint among them.
        bool isSure = false;
        for (int at = i; at < end; ++at)
            isSure |= !senses_.has(at, Sense::otherWord) && !tokens_.isSign(at, u'.');
        add(end, days, today_.addDays(1), isSure && tokens_.isStop(end) && i > 0 ? Need::room : Need::help);
    }
    const int at = tokens_[std::min(first->end, tokens_.size() - 1)].gap == Token::Gap::hyphen
                       ? first->end
                       : joint(first->end, false);
    const Found* last = senses_.find(senses_.past(at, Sense::the), Sense::weekday);
    if (last && (at != first->end || last != senses_.find(i, Sense::weekday)) &&
        first->end < tokens_.size() && last->word.value > first->word.value &&
        (at != first->end || tokens_[first->end].gap == Token::Gap::hyphen)) {
        std::uint8_t range = 0;
        for (int day = first->word.value; day <= last->word.value; ++day)
            range |= small(monday << (day - 1));
        add(last->end, range, nextWeekday(today_, first->word.value), Need::help);
    }
}

/// "the last friday of every month", "le 15 de chaque mois", "first and third Monday of each month".
void Grammar::addNthOfEvery(int i, Atoms& result) const {
    std::optional<NthDays> nth = nthDays(i);
    if (!nth) {
        if (const auto day = dayOfMonth(i))
            nth = NthDays{.nths = std::uint32_t{1} << day->value, .end = day->end};
    }
    if (!nth || nth->span)
        return;
    const bool areSeveral = (nth->nths & (nth->nths - 1)) != 0;
    for (const int of : {nth->end, senses_.past(nth->end, Sense::of)}) {
        const Found* every = senses_.find(of, Sense::every);
        const Found* month = every        ? unitAt(every->end)
                             : areSeveral ? unitAt(senses_.past(of, Sense::the))
                                          : nullptr;
        if (month && month->word.value == static_cast<int>(Unit::month)) {
            result.push_back(repeating(month->end, nth->rule()));
            return;
        }
    }
}

/// "every 2 weeks", "tous les lundis", "chaque 1er du mois", "every 1st and 15th".
void Grammar::addEvery(int i, Atoms& result) const {
    // "once every 3 months"
    const Found* once = senses_.find(i, Sense::once);
    const Found* every = senses_.find(once && once->word.value == 1 ? once->end : i, Sense::every);
    if (!every)
        return;
    const auto add = [&](int end, const Rule& rule, const Meaning& meaning = {}) {
        result.push_back(repeating(end, rule, Need::nothing, meaning));
    };
    int at = every->end;
    if (tokens_.isSign(at, u'!') && tokens_.isGlued(at))
        ++at;
    int count = 1;
    if (const Found* other = senses_.find(at, Sense::other);
        other && other->word.language == Language::english &&
        (senses_.has(other->end, Sense::weekday) || unitAt(other->end)) &&
        !(other->end < tokens_.size() && senses_.has(senses_.past(other->end, Sense::weekday), Sense::of))) {
        count = other->word.value;
        at = other->end;
    } else if (const auto given = number(at);
               given && (unitAt(given->end) || senses_.has(given->end, Sense::weekdays))) {
        if (given->value < 1 || given->value > 400)
            return;
        count = given->value;
        at = given->end;
    } else if (const auto nth = ordinal(at); nth && nth->value >= 2 && nth->digits > 0 && unitAt(nth->end)) {
        // "every 2nd week"
        count = nth->value;
        at = nth->end;
    }
    if (const Found* unit = unitAt(at)) {
        if (auto rule = everyUnit(static_cast<Unit>(unit->word.value), count))
            add(unit->end, *rule);
    }
    if (const Found* days = senses_.find(at, Sense::workdays))
        add(days->end, {.frequency = Frequency::weekly,
                        .interval = count,
                        .weekdays = days->word.value == 0 ? workingDays : weekend});
    if (senses_.has(at, Sense::weekday) || senses_.has(at, Sense::weekdays)) {
        int end = at;
        const std::uint8_t days = weekdayList(at, end, Sense::weekday);
        add(end, {.frequency = Frequency::weekly, .interval = count, .weekdays = days});
    }
    if (const Found* part = senses_.find(at, Sense::part))
        add(part->end, {.frequency = Frequency::daily, .interval = count},
            {.part = static_cast<DayPart>(part->word.value + 1)});
    if (const Found* month = senses_.find(at, Sense::month)) {
        const auto day = dayOfMonth(month->end);
        add(day ? day->end : month->end, {.frequency = Frequency::yearly,
                                          .monthDays = std::uint32_t{1} << (day ? day->value : 1),
                                          .month = month->word.value});
    }
    if (const Found* noonAt = senses_.find(at, Sense::clock))
        add(noonAt->end, {.frequency = Frequency::daily}, {.minute = noonAt->word.value});
    if (const Found* found = senses_.find(at, Sense::feast); found && isFixedFeast(found->word.value)) {
        const QDate day = feast(found->word.value, today_.year());
        add(found->end, {.frequency = Frequency::yearly,
                         .monthDays = std::uint32_t{1} << day.day(),
                         .month = day.month()});
    }
    std::optional<NthDays> nth = count == 1 ? nthDays(at) : std::nullopt;
    if (!nth && count == 1) {
        // "chaque 13 janvier", "tous les 20 du mois"
        const auto day = dayOfMonth(at);
        if (day && (senses_.has(day->end, Sense::month) || senses_.has(day->end, Sense::of)))
            nth = NthDays{.nths = std::uint32_t{1} << day->value, .end = day->end};
    }
    if (!nth || nth->span)
        return;
    Rule rule = nth->rule();
    int end = nth->end;
    const auto inMonth = [&](int from) {
        if (const Found* unit = unitAt(from); unit && unit->word.value == static_cast<int>(Unit::month)) {
            end = unit->end;
            return true;
        }
        const Found* month = senses_.find(from, Sense::month);
        if (!month)
            return false;
        rule.frequency = Frequency::yearly;
        rule.month = month->word.value;
        end = month->end;
        return true;
    };
    bool isInMonth = inMonth(end);
    for (const Found* of = senses_.begin(nth->end); !isInMonth && of != senses_.end(nth->end); ++of) {
        if (of->word.sense == Sense::of)
            isInMonth = inMonth(senses_.past(senses_.past(of->end, Sense::the), Sense::every));
    }
    add(end, rule);
}

}  // namespace kestrant::speech
