#include "speech/Dates.h"
#include "speech/Grammar.h"

#include <algorithm>
#include <array>

namespace kestrant::speech {
namespace {

using Frequency = Rule::Frequency;
using Kind = Token::Kind;
using Need = Atom::Need;

constexpr std::uint8_t monday = 1;
constexpr std::uint8_t workingDays = 0b0011111;
constexpr std::uint8_t weekend = 0b1100000;

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
        if (!day)
            break;
        days |= static_cast<std::uint8_t>(monday << (day->word.value - 1));
        end = day->end;
        at = day->end;
        if (tokens_.isSign(at, u'.') && day->word.isShort)
            ++at;
        if (tokens_.isSign(at, u',') || tokens_.isSign(at, u'/') || tokens_.isSign(at, u'&') ||
            tokens_.isSign(at, u'+'))
            ++at;
        at = senses_.past(at, Sense::and_);
        at = senses_.past(at, Sense::the);
    }
    return days;
}

/// "every 2 weeks", "tous les lundis", "weekdays", "un mardi sur deux", "le dernier vendredi de chaque mois".
void Grammar::addRules(int i, Atoms& result) const {
    const auto add = [&](int end, const Rule& rule, Need need = Need::nothing, Meaning meaning = {}) {
        meaning.rule = rule;
        result.push_back({.end = end, .meaning = meaning, .need = need, .leads = leadsToDay | leadsToSpan});
    };
    if (const Found* often = senses_.find(i, Sense::frequency)) {
        // From "daily" on: daily, weekly, fortnightly, monthly, yearly, -, quarterly.
        constexpr std::array units{Unit::day,  Unit::week, Unit::fortnight,  Unit::month,
                                   Unit::year, Unit::year, Unit::quarterYear};
        const auto place = static_cast<std::size_t>(often->word.value - 3);
        if (place < units.size()) {
            const bool isAdverb = !often->word.isShort && often->word.language == Language::french;
            add(often->end, *everyUnit(units.at(place), 1), isAdverb ? Need::nothing : Need::help);
            result.back().helpedBy = 0;
            // At the end of the line an adverb says how often; before a word it says of what kind.
            if (tokens_.isStop(often->end) && i > 0 && !often->word.isShort)
                result.back().need = Need::nothing;
        }
    }
    if (const Found* days = senses_.find(i, Sense::workdays)) {
        const Rule rule{.frequency = Frequency::weekly, .weekdays = workingDays};
        if (!days->word.isShort) {
            add(days->end, rule, Need::help);
            result.back().helpedBy = leadsToDay;
        }
    }
    if (senses_.has(i, Sense::weekdays)) {
        int end = i;
        const std::uint8_t days = weekdayList(i, end, Sense::weekdays);
        const bool isLast = tokens_.isStop(end) && i > 0;
        add(end, {.frequency = Frequency::weekly, .weekdays = days}, isLast ? Need::room : Need::help);
        result.back().helpedBy = leadsToDay;
    }
    // "once a week", "deux fois par mois" is left, since it names no days.
    if (const Found* once = senses_.find(i, Sense::once); once && once->word.value == 0) {
        const int at = tokens_.isKind(once->end, Kind::word) && tokens_[once->end].text == u"par"
                           ? once->end + 1
                           : senses_.past(once->end, Sense::article);
        if (const Found* unit = unitAt(at); unit && at != once->end) {
            if (const auto rule = everyUnit(static_cast<Unit>(unit->word.value), 1))
                add(unit->end, *rule);
        }
    }
    // "un mardi sur deux", "une semaine sur deux"
    if (const auto one = number(i); one && one->value == 1) {
        const Found* weekday = senses_.find(one->end, Sense::weekday);
        const Found* unit = unitAt(one->end);
        const int end = weekday ? weekday->end : unit ? unit->end : 0;
        if (const Found* outOf = end != 0 ? senses_.find(end, Sense::outOf) : nullptr) {
            if (const auto count = number(outOf->end); count && count->value >= 2 && count->value <= 12) {
                if (weekday)
                    add(count->end,
                        {.frequency = Frequency::weekly,
                         .interval = count->value,
                         .weekdays = static_cast<std::uint8_t>(monday << (weekday->word.value - 1))});
                else if (auto rule = everyUnit(static_cast<Unit>(unit->word.value), count->value))
                    add(count->end, *rule);
            }
        }
    }
    // "the last friday of every month", "le 15 de chaque mois"
    {
        int nth = 0;
        int at = i;
        if (const auto count = dayOfMonth(i)) {
            nth = count->value;
            at = count->end;
        } else if (const Found* last = senses_.find(i, Sense::last)) {
            nth = -1;
            at = last->end;
        }
        if (nth != 0) {
            const Found* weekday = senses_.find(at, Sense::weekday);
            const Found* unit = unitAt(at);
            const bool isDay = unit && unit->word.value == static_cast<int>(Unit::day);
            const int behind = weekday ? weekday->end : isDay ? unit->end : at;
            for (const int of : {behind, senses_.past(behind, Sense::of)}) {
                const Found* every = senses_.find(of, Sense::every);
                const Found* month = every ? unitAt(every->end) : nullptr;
                if (!month || month->word.value != static_cast<int>(Unit::month))
                    continue;
                Rule rule{.frequency = Frequency::monthly};
                if (weekday) {
                    rule.weekdays = static_cast<std::uint8_t>(monday << (weekday->word.value - 1));
                    rule.nth = nth;
                } else {
                    rule.monthDays = nth > 0 ? std::uint32_t{1} << nth : 1;
                }
                add(month->end, rule);
                break;
            }
        }
    }
    const Found* every = senses_.find(i, Sense::every);
    if (!every)
        return;
    int at = every->end;
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
    }
    // "every 2nd week"
    if (const auto nth = ordinal(at);
        nth && count == 1 && nth->value >= 2 && nth->digits > 0 && unitAt(nth->end)) {
        count = nth->value;
        at = nth->end;
    }
    if (const Found* unit = unitAt(at)) {
        if (auto rule = everyUnit(static_cast<Unit>(unit->word.value), count))
            add(unit->end, *rule);
    }
    if (const Found* days = senses_.find(at, Sense::workdays))
        add(days->end, {.frequency = Frequency::weekly, .interval = count, .weekdays = workingDays});
    if (senses_.has(at, Sense::weekday) || senses_.has(at, Sense::weekdays)) {
        int end = at;
        const std::uint8_t days = weekdayList(at, end, Sense::weekday);
        add(end, {.frequency = Frequency::weekly, .interval = count, .weekdays = days});
    }
    if (const Found* part = senses_.find(at, Sense::part))
        add(part->end, {.frequency = Frequency::daily, .interval = count}, Need::nothing,
            {.part = static_cast<DayPart>(part->word.value + 1)});
    if (const Found* month = senses_.find(at, Sense::month)) {
        Rule rule{.frequency = Frequency::yearly};
        rule.month = month->word.value;
        int end = month->end;
        if (const auto day = dayOfMonth(end)) {
            rule.monthDays = std::uint32_t{1} << day->value;
            end = day->end;
        } else {
            rule.monthDays = 2;
        }
        add(end, rule);
    }
    if (const Found* noonAt = senses_.find(at, Sense::clock)) {
        Meaning meaning;
        meaning.minute = noonAt->word.value;
        add(noonAt->end, {.frequency = Frequency::daily}, Need::nothing, meaning);
    }
    if (const Found* found = senses_.find(at, Sense::feast)) {
        const QDate day = feast(found->word.value, today_.year());
        const int number = found->word.value;
        if (number < 8 || number == 10 || number > 14)
            add(found->end, {.frequency = Frequency::yearly,
                             .monthDays = std::uint32_t{1} << day.day(),
                             .month = day.month()});
    }
    // "every 15th", "every last friday", "chaque 1er du mois", "every 1st and 15th"
    int nth = 0;
    int end = at;
    if (const auto day = dayOfMonth(at);
        day && (ordinal(at) || senses_.has(day->end, Sense::month) || senses_.has(day->end, Sense::of))) {
        nth = day->value;
        end = day->end;
    } else if (const Found* last = senses_.find(at, Sense::last)) {
        nth = -1;
        end = last->end;
    }
    if (nth == 0)
        return;
    Rule rule{.frequency = Frequency::monthly};
    if (senses_.has(end, Sense::weekday) || senses_.has(end, Sense::weekdays)) {
        int listEnd = end;
        rule.weekdays = weekdayList(end, listEnd, Sense::weekday);
        rule.nth = nth;
        end = listEnd;
    } else {
        rule.monthDays = nth > 0 ? std::uint32_t{1} << nth : 1;
        if (const Found* unit = unitAt(end); unit && unit->word.value == static_cast<int>(Unit::day))
            end = unit->end;
        else if (nth < 0)
            return;
        for (int more = 0; more < 6; ++more) {
            const int from = senses_.past(senses_.past(end, Sense::and_), Sense::the);
            const auto also = from != end ? ordinal(from) : std::nullopt;
            if (!also || also->value > 31)
                break;
            rule.monthDays |= std::uint32_t{1} << also->value;
            end = also->end;
        }
    }
    for (const Found* of = senses_.begin(end); of != senses_.end(end); ++of) {
        if (of->word.sense != Sense::of)
            continue;
        const int from = senses_.past(senses_.past(of->end, Sense::the), Sense::every);
        if (const Found* month = unitAt(from); month && month->word.value == static_cast<int>(Unit::month)) {
            end = month->end;
            break;
        }
        if (const Found* month = senses_.find(from, Sense::month)) {
            rule.frequency = Frequency::yearly;
            rule.month = month->word.value;
            end = month->end;
            break;
        }
    }
    if (const Found* month = senses_.find(end, Sense::month); month && rule.weekdays == 0) {
        rule.frequency = Frequency::yearly;
        rule.month = month->word.value;
        end = month->end;
    }
    add(end, rule);
}

/// What only a repetition can have: an end, a number, days that are left out, several days.
void Grammar::addRuleTails(int i, Atoms& result) const {
    const auto add = [&](int end, const Rule& rule, QDate start = {}) {
        Atom atom{.end = end, .need = Need::help, .isOfRule = true};
        atom.meaning.rule = rule;
        atom.meaning.start = start;
        result.push_back(atom);
    };
    for (const Found* until = senses_.begin(i); until != senses_.end(i); ++until) {
        if (until->word.sense == Sense::until) {
            Atoms days;
            const int at = senses_.past(until->end, Sense::the);
            addDays(at, days);
            addMonths(at, days);
            for (const Atom& day : days) {
                if (day.until || day.meaning.isPast || (day.isBare && at == until->end))
                    continue;
                const auto moment = resolved(day.meaning, present_);
                if (!moment)
                    continue;
                add(day.end, {.until = moment->day});
            }
        } else if (until->word.sense == Sense::duration) {
            if (const auto spoken = length(until->end); spoken && spoken->length.minutes == 0)
                add(spoken->end, {.lasts = spoken->length});
        } else if (until->word.sense == Sense::except) {
            int end = until->end;
            const int at = senses_.past(until->end, Sense::the);
            if (const std::uint8_t days = weekdayList(at, end, Sense::weekday); days != 0) {
                // Everything but these days, as a rule of weeks.
                add(end, {.frequency = Frequency::none, .weekdays = days});
            } else if (const Found* unit = unitAt(at);
                       unit && unit->word.value == static_cast<int>(Unit::weekend)) {
                add(unit->end, {.frequency = Frequency::none, .weekdays = weekend});
            }
        } else if (until->word.sense == Sense::starting) {
            if (const auto day = dayAt(senses_.past(until->end, Sense::the))) {
                if (const auto moment = resolved(day->meaning, present_))
                    add(day->end, {}, moment->day);
            }
        }
    }
    int counted = i;
    if (senses_.has(i, Sense::duration))
        counted = senses_.past(i, Sense::duration);
    if (const auto count = number(counted); count && count->value >= 1 && count->value <= 1000) {
        if (const Found* times = senses_.find(count->end, Sense::times))
            add(times->end, {.count = count->value});
    }
    // "on Mon and Thu" beside "every 2 weeks"; a day alone is joined like any other.
    if (senses_.has(i, Sense::weekday) || senses_.has(i, Sense::weekdays)) {
        int end = i;
        const std::uint8_t days = weekdayList(i, end, Sense::weekday);
        if (days != 0 && (days & (days - 1)) != 0) {
            Rule rule{.weekdays = days};
            rule.frequency = Frequency::weekly;
            add(end, rule);
        }
    }
    // "on the first monday" beside "every month"
    int nth = 0;
    int at = i;
    if (const auto count = ordinal(i); count && count->value <= 5) {
        nth = count->value;
        at = count->end;
    } else if (const Found* last = senses_.find(i, Sense::last)) {
        nth = -1;
        at = last->end;
    }
    if (nth != 0) {
        if (const Found* weekday = senses_.find(at, Sense::weekday)) {
            Rule rule{.weekdays = static_cast<std::uint8_t>(monday << (weekday->word.value - 1)), .nth = nth};
            rule.frequency = Frequency::monthly;
            int end = weekday->end;
            const Found* of = senses_.find(end, Sense::of);
            const Found* month = of ? unitAt(senses_.past(of->end, Sense::the)) : nullptr;
            if (month && month->word.value == static_cast<int>(Unit::month))
                end = month->end;
            add(end, rule);
        } else if (const Found* unit = unitAt(at);
                   nth < 0 && unit && unit->word.value == static_cast<int>(Unit::day)) {
            Rule rule{.monthDays = 1};
            rule.frequency = Frequency::monthly;
            add(unit->end, rule);
        }
    }
}

}  // namespace kestrant::speech
