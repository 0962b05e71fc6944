#include "speech/Dates.h"
#include "speech/Grammar.h"

#include <algorithm>
#include <array>

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;
using Need = Atom::Need;

}  // namespace

void Grammar::addDays(int i, Atoms& result) const {
    addNamedDays(i, result);
    addWeekdays(i, result);
    addSpans(i, result);
    addPlacesInSpans(i, result);
    addDates(i, result);
    addNumericDates(i, result);
    addMonths(i, result);
    addDayRanges(i, result);
    addFeasts(i, result);
}

void Grammar::addNamedDays(int i, Atoms& result) const {
    if (const Found* day = senses_.find(i, Sense::today)) {
        Meaning meaning{.date = today_.addDays(day->word.value), .isPast = day->word.value < 0};
        int end = day->end;
        // "tomorrow week"
        if (const int days = daysOfUnit(end); days != 0 && day->word.value >= 0) {
            meaning.date = meaning.date.addDays(days);
            end = senses_.past(end, Sense::unit);
        }
        result.push_back({.end = end, .meaning = meaning});
    }
    if (const Found* part = senses_.find(i, Sense::todayPart)) {
        Meaning meaning{.date = today_};
        if (part->word.value == 4)
            meaning.minute = 12 * 60;
        else
            meaning.part = static_cast<DayPart>(part->word.value + 1);
        result.push_back({.end = part->end, .meaning = meaning});
    }
    const Found* now = senses_.find(i, Sense::thisOne);
    if (!now)
        return;
    if (const Found* part = senses_.find(now->end, Sense::part)) {
        // "this night train"
        const bool isNight = part->word.value == 3;
        result.push_back({.end = part->end,
                          .meaning = {.part = static_cast<DayPart>(part->word.value + 1), .date = today_},
                          .need = isNight ? Need::room : Need::nothing,
                          .isAmbiguous = isNight});
    }
}

void Grammar::addWeekdays(int i, Atoms& result) const {
    if (const Found* next = senses_.find(i, Sense::next)) {
        if (const Found* day = senses_.find(next->end, Sense::weekday)) {
            const QDate monday = today_.addDays(8 - today_.dayOfWeek());
            result.push_back({.end = day->end,
                              .meaning = {.date = monday.addDays(day->word.value - 1)},
                              .need = day->word.isShort ? Need::room : Need::nothing});
        }
    }
    for (const Sense lead : {Sense::coming, Sense::thisOne}) {
        const Found* found = senses_.find(i, lead);
        const Found* day = found ? senses_.find(found->end, Sense::weekday) : nullptr;
        if (day)
            result.push_back(
                {.end = day->end,
                 .meaning = {.weekday = small(day->word.value), .mayBeToday = lead == Sense::thisOne},
                 .need = day->word.isShort ? Need::room : Need::nothing});
    }
    if (senses_.has(i, Sense::last)) {
        const Found* last = senses_.find(i, Sense::last);
        if (last->word.language == Language::english &&
            (senses_.has(last->end, Sense::weekday) ||
             (unitAt(last->end) && unitAt(last->end)->word.value != static_cast<int>(Unit::day)) ||
             senses_.has(last->end, Sense::part)) &&
            !senses_.has(last->end + 1, Sense::of)) {
            result.push_back({.end = last->end + 1, .meaning = {.date = today_.addDays(-1), .isPast = true}});
        }
    }
    const Found* day = senses_.find(i, Sense::weekday);
    if (!day)
        return;
    int end = day->end;
    bool hasStop = false;
    if (day->word.isShort && tokens_.isSign(end, u'.') && tokens_.isGlued(end) &&
        (end + 1 < tokens_.size() && tokens_[end + 1].gap == Gap::space)) {
        ++end;
        hasStop = true;
    }
    Atom atom{
        .end = end, .meaning = {.weekday = small(day->word.value)}, .need = Need::room, .helpedBy = isClear};
    if (day->word.isShort) {
        // Names and words of every day: "sam", "sun". At the end of a line a capital tells the day from them.
        const Found* other = senses_.find(i, Sense::otherWord);
        const bool isLast = end >= tokens_.size() && i > 0 && tokens_[i].isCapital;
        if (other && other->word.value == 2 && tokens_[i].isCapital && i > 0 && !hasStop)
            return;
        const bool isSaid = isLast && !senses_.endsWith(i, Sense::determiner);
        atom.need =
            !other || (isSaid && other->word.value == 0) || (hasStop && i == 0) ? Need::room : Need::help;
    }
    result.push_back(atom);
    const QDate next = nextWeekday(today_, day->word.value);
    const auto on = [&](int behind, QDate date, bool isPast = false) {
        result.push_back({.end = behind, .meaning = {.date = date, .isPast = isPast}});
    };
    if (const Found* found = senses_.find(end, Sense::next))
        on(found->end, next);
    if (const Found* found = senses_.find(end, Sense::coming))
        on(found->end, next);
    if (const Found* found = senses_.find(end, Sense::afterNext);
        found && found->word.language == Language::english)
        on(found->end, next.addDays(7));
    if (const Found* found = senses_.find(end, Sense::former))
        on(found->end, today_.addDays(-1), true);
    if (const Found* found = senses_.find(end, Sense::weekOut); found && found->word.value > 1)
        on(found->end, next.addDays(found->word.value));
    // "friday week"
    if (const int days = daysOfUnit(end); days != 0)
        on(senses_.past(end, Sense::unit), next.addDays(days));
    // "vendredi dans deux semaines", "friday in two weeks": that day of the week.
    if (const Found* in = senses_.find(end, Sense::in)) {
        const auto spoken = length(in->end);
        // Of 8 and 15 days the first and the last one are the same weekday.
        const int days = spoken ? spoken->length.days - spoken->length.days % 7 : 0;
        const bool isCounted = spoken && (spoken->length.days == 8 || spoken->length.days == 15);
        if (spoken && (spoken->isWeeks || isCounted) && spoken->length.minutes == 0)
            on(spoken->end, today_.addDays(day->word.value - today_.dayOfWeek() + days));
    }
}

/// "week" or "fortnight" behind an English day; 0 without.
int Grammar::daysOfUnit(int i) const {
    const Found* unit = senses_.find(i, Sense::unit);
    if (!unit || unit->word.language != Language::english || unit->word.isShort ||
        tokens_[i].text.endsWith(u's'))
        return 0;
    const auto kind = static_cast<Unit>(unit->word.value);
    return kind == Unit::week ? 7 : kind == Unit::fortnight ? 14 : 0;
}

void Grammar::addFeasts(int i, Atoms& result) const {
    const Found* found = senses_.find(i, Sense::feast);
    if (!found)
        return;
    Atom atom{
        .end = found->end, .need = found->word.isShort ? Need::help : Need::room, .helpedBy = leadsToDay};
    const auto inYear = year(found->end);
    if (inYear)
        atom.end = inYear->end;
    QDate day = feast(found->word.value, inYear ? inYear->value : today_.year());
    if (!inYear && day < today_)
        day = feast(found->word.value, today_.year() + 1);
    atom.meaning.date = day;
    result.push_back(atom);
}

}  // namespace kestrant::speech
