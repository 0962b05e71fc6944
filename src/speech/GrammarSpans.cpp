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

Grammar::Span Grammar::spanOf(Unit unit, int ahead, int end) const {
    Span result{.end = end, .unit = unit, .isCurrent = ahead == 0};
    switch (unit) {
    case Unit::week:
        result.first = today_.addDays(1 - today_.dayOfWeek() + 7 * ahead);
        result.last = result.first.addDays(6);
        break;
    case Unit::weekend:
        result.first = today_.addDays(6 - today_.dayOfWeek() + 7 * ahead);
        result.last = result.first.addDays(1);
        if (ahead == 0)
            result.first = std::max(result.first, today_);
        break;
    case Unit::month:
        result.first = QDate(today_.year(), today_.month(), 1).addMonths(ahead);
        result.last = result.first.addMonths(1).addDays(-1);
        break;
    case Unit::quarterYear:
        result.first = QDate(today_.year(), (today_.month() - 1) / 3 * 3 + 1, 1).addMonths(3 * ahead);
        result.last = result.first.addMonths(3).addDays(-1);
        break;
    case Unit::year:
        result.first = QDate(today_.year() + ahead, 1, 1);
        result.last = QDate(today_.year() + ahead, 12, 31);
        break;
    default:
        break;
    }
    return result;
}

/// "next week", "le mois prochain", "this month", "april 2027", "the week after next".
std::optional<Grammar::Span> Grammar::span(int i) const {
    const auto isSpan = [](const Found* unit) {
        if (!unit || unit->word.isShort)
            return false;
        const auto value = static_cast<Unit>(unit->word.value);
        return value == Unit::week || value == Unit::month || value == Unit::year || value == Unit::weekend ||
               value == Unit::quarterYear;
    };
    int at = senses_.past(i, Sense::the);
    for (const auto& [sense, ahead] :
         {std::pair(Sense::next, 1), std::pair(Sense::coming, 1), std::pair(Sense::thisOne, 0)}) {
        const Found* lead = senses_.find(at, sense);
        if (!lead)
            continue;
        if (const Found* unit = senses_.find(lead->end, Sense::unit); isSpan(unit)) {
            const int behind = senses_.past(unit->end, Sense::coming);
            return spanOf(static_cast<Unit>(unit->word.value), behind != unit->end ? 1 : ahead, behind);
        }
    }
    if (const Found* unit = senses_.find(at, Sense::unit); isSpan(unit)) {
        const auto kind = static_cast<Unit>(unit->word.value);
        if (const Found* found = senses_.find(unit->end, Sense::next);
            found && found->word.language == Language::french)
            return spanOf(kind, 1, found->end);
        if (const Found* found = senses_.find(unit->end, Sense::coming))
            return spanOf(kind, 1, found->end);
        if (const Found* found = senses_.find(unit->end, Sense::afterNext))
            return spanOf(kind, 2, found->end);
        if (at != i || tokens_[i].gap == Gap::apostrophe || senses_.endsWith(i, Sense::the) ||
            senses_.endsWith(i, Sense::of))
            return spanOf(kind, 0, unit->end);
        return std::nullopt;
    }
    // "le mois d'avril"
    if (const Found* month = senses_.find(at, Sense::month)) {
        int end = month->end;
        int ofYear = 0;
        if (const auto found = year(end)) {
            ofYear = found->value;
            end = found->end;
        }
        const QDate thisMonth(today_.year(), today_.month(), 1);
        QDate first(ofYear != 0 ? ofYear : today_.year(), month->word.value, 1);
        if (ofYear == 0 && first < thisMonth)
            first = first.addYears(1);
        return Span{first, first.addMonths(1).addDays(-1), end, Unit::month, first == thisMonth};
    }
    return std::nullopt;
}

void Grammar::addSpans(int i, Atoms& result) const {
    if (!senses_.has(i, Sense::next) && !senses_.has(i, Sense::coming) && !senses_.has(i, Sense::thisOne) &&
        !senses_.has(i, Sense::unit) && !senses_.has(i, Sense::the))
        return;
    const auto found = span(i);
    if (!found)
        return;
    Atom atom{.end = found->end,
              .meaning = {.first = found->first, .last = found->last},
              .leads = leadsToDay | leadsToSpan};
    if (found->isCurrent) {
        // "this week" by itself is no day, but "this weekend" is one.
        const bool isWeekend = found->unit == Unit::weekend;
        const bool isSaid = senses_.has(senses_.past(i, Sense::the), Sense::thisOne);
        atom.need = isWeekend && isSaid ? Need::nothing : Need::help;
        atom.helpedBy = isWeekend ? leadsToSpan : 0;
    }
    result.push_back(atom);
}

/// "end of next month", "mi-avril", "last friday of may", "the 1st of next month".
void Grammar::addPlacesInSpans(int i, Atoms& result) const {
    for (const Sense sense : {Sense::begin, Sense::middle, Sense::end}) {
        for (const Found* place = senses_.begin(i); place != senses_.end(i); ++place) {
            if (place->word.sense != sense)
                continue;
            auto found = span(place->end);
            if (!found) {
                // "fin de semaine", "fin d'année"
                const Found* unit = senses_.find(place->end, Sense::unit);
                const auto kind = unit ? static_cast<Unit>(unit->word.value) : Unit::day;
                if (unit && !unit->word.isShort && place->end > i + 1 &&
                    (kind == Unit::week || kind == Unit::month || kind == Unit::year ||
                     kind == Unit::quarterYear))
                    found = spanOf(kind, 0, unit->end);
            }
            if (!found || found->unit == Unit::weekend)
                continue;
            QDate day = found->first;
            const bool isWeek = found->unit == Unit::week;
            if (sense == Sense::middle)
                day = day.addDays(isWeek ? 2 : found->unit == Unit::year ? 181 : 14);
            else if (sense == Sense::end)
                day = isWeek ? day.addDays(4) : found->last;
            if (tokens_[i].text == u"late" && !isWeek)
                day = found->first.addDays(24);
            if (found->isCurrent && day < today_) {
                if (sense == Sense::end)
                    day = std::max(day, std::min(found->last, today_));
                else
                    continue;
            }
            result.push_back(
                {.end = found->end, .meaning = {.date = day}, .leads = leadsToDay | leadsToSpan});
        }
    }
    if (const Found* end = senses_.find(i, Sense::spanEnd)) {
        const auto unit = static_cast<Unit>(end->word.value);
        const Span found = spanOf(unit, 0, end->end);
        result.push_back({.end = end->end,
                          .meaning = {.date = unit == Unit::week ? std::max(today_, found.first.addDays(4))
                                                                 : found.last}});
    }
    int nth = 0;
    int at = i;
    if (const auto count = ordinal(i)) {
        nth = count->value;
        at = count->end;
    } else if (const Found* last = senses_.find(i, Sense::last)) {
        nth = -1;
        at = last->end;
    }
    if (nth == 0)
        return;
    const Found* weekday = senses_.find(at, Sense::weekday);
    const Found* unit = unitAt(at);
    const bool isDay = unit && static_cast<Unit>(unit->word.value) == Unit::day;
    int behind = weekday ? weekday->end : isDay ? unit->end : at;
    const Found* of = senses_.find(behind, Sense::of);
    if (!of)
        return;
    // "of the month" holds its article or leaves it to the span.
    for (const Found* each = senses_.begin(behind); each != senses_.end(behind); ++each) {
        if (each->word.sense != Sense::of)
            continue;
        const auto found = span(each->end);
        if (!found)
            continue;
        QDate day;
        if (weekday)
            day = nthWeekday(found->first, found->last, weekday->word.value, nth);
        else if (isDay)
            day = nth > 0 ? found->first.addDays(nth - 1) : found->last;
        else if (nth > 0 && !senses_.has(each->end, Sense::month))
            day = found->first.addDays(nth - 1);
        if (day.isValid() && day < today_ && found->isCurrent && found->unit == Unit::month) {
            const Span next = spanOf(Unit::month, senses_.has(each->end, Sense::month) ? 12 : 1, found->end);
            day = weekday   ? nthWeekday(next.first, next.last, weekday->word.value, nth)
                  : nth > 0 ? next.first.addDays(nth - 1)
                            : next.last;
        }
        if (day.isValid() && day <= found->last.addYears(1) && day >= today_)
            result.push_back(
                {.end = found->end, .meaning = {.date = day}, .leads = leadsToDay | leadsToSpan});
    }
}

}  // namespace kestrant::speech
