#include "speech/Grammar.h"

namespace kestrant::speech {

using Frequency = Rule::Frequency;
using Need = Atom::Need;

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
        } else if (until->word.sense == Sense::and_) {
            // "at 8am and 8pm"
            const auto also = clock(senses_.past(until->end, Sense::at));
            if (also && (!also->isBare || tokens_.isStop(also->end))) {
                Meaning meaning = also->meaning;
                const int minute = minuteOfDay(meaning);
                add(also->end, {.hours = std::uint32_t{1} << minute / 60});
                result.back().meaning.minute = minute;
            }
        } else if (until->word.sense == Sense::from) {
            // "from May 10 to May 20"
            const auto first = dayAt(senses_.past(until->end, Sense::the));
            const int at = first ? joint(first->end, false) : 0;
            const auto last = first && at != first->end ? dayAt(senses_.past(at, Sense::the)) : std::nullopt;
            const auto start = last ? resolved(first->meaning, present_) : std::nullopt;
            Moment begin = start.value_or(Moment{});
            const auto stop =
                start ? resolvedEnd(last->meaning, first->meaning, begin, present_) : std::nullopt;
            if (stop)
                add(last->end, {.until = stop->day}, start->day);
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
        if (days != 0 && ((days & (days - 1)) != 0 || senses_.has(i, Sense::weekdays))) {
            Rule rule{.weekdays = days};
            rule.frequency = Frequency::weekly;
            add(end, rule);
        }
    }
    // "on the first monday" beside "every month"
    const auto nth = nthDays(i);
    if (!nth || !nth->isNamed || nth->span)
        return;
    add(nth->end, nth->rule());
    const Found* of = senses_.find(nth->end, Sense::of);
    const Found* month = of ? unitAt(senses_.past(of->end, Sense::the)) : nullptr;
    if (month && month->word.value == static_cast<int>(Unit::month))
        add(month->end, nth->rule());
}

}  // namespace kestrant::speech
