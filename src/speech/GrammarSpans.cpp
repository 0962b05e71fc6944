#include "speech/Dates.h"
#include "speech/Grammar.h"

#include <algorithm>
#include <array>
#include <bit>

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
    if (const Found* unit = senses_.find(at, Sense::unit);
        unit && unit->word.value == static_cast<int>(Unit::month) && senses_.has(unit->end, Sense::of) &&
        senses_.has(senses_.past(unit->end, Sense::of), Sense::month))
        at = senses_.past(unit->end, Sense::of);
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
    // "april 2027", "mois d'avril"
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
    // "by 2028"
    if (const auto inYear = year(i); inYear && tokens_.isKind(i, Kind::number) && inYear->value <= 2099) {
        const QDate first(inYear->value, 1, 1);
        if (first > today_)
            result.push_back({.end = inYear->end,
                              .meaning = {.first = first, .last = first.addYears(1).addDays(-1)},
                              .need = Need::help,
                              .leads = leadsToSpan,
                              .helpedBy = leadsToSpan});
    }
    if (!senses_.has(i, Sense::next) && !senses_.has(i, Sense::coming) && !senses_.has(i, Sense::thisOne) &&
        !senses_.has(i, Sense::unit) && !senses_.has(i, Sense::the))
        return;
    // A month by its name is read with its days.
    const auto found = senses_.has(senses_.past(i, Sense::the), Sense::month) ? std::nullopt : span(i);
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
            if (place->word.value == 1 && sense == Sense::end && found->unit == Unit::month)
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
    const auto nth = nthDays(i);
    if (!nth || (nth->nths & (nth->nths - 1)) != 0)
        return;
    const auto add = [&](const Span& found, bool isOfYear) {
        Meaning meaning = placeIn(found, *nth);
        const QDate day = meaning.date.isValid() ? meaning.date : meaning.last;
        // "on the 5th of the month" may be one of the next month.
        if (day.isValid() && day < today_ && found.isCurrent && found.unit == Unit::month)
            meaning = placeIn(spanOf(Unit::month, isOfYear ? 12 : 1, found.end), *nth);
        const QDate place = meaning.date.isValid() ? meaning.date : meaning.last;
        if (place.isValid() && place >= today_)
            result.push_back({.end = found.end, .meaning = meaning, .leads = leadsToDay | leadsToSpan});
    };
    // "last working day" is one of this month.
    const bool isOfWork = (nth->weekdays & (nth->weekdays - 1)) != 0;
    if (isOfWork)
        add(spanOf(Unit::month, 0, nth->end), false);
    // "of the month" holds its article or leaves it to the span.
    for (const Found* of = senses_.begin(nth->end); of != senses_.end(nth->end); ++of) {
        const bool isMonth = of->word.sense == Sense::month && nth->isNamed && !of->word.isShort;
        if (of->word.sense != Sense::of && !isMonth)
            continue;
        const int at = isMonth ? nth->end : of->end;
        const bool isNamedMonth = senses_.has(at, Sense::month);
        // "the 5th of May" is a date.
        if (const auto found = span(at); found && (nth->isNamed || !isNamedMonth))
            add(*found, isNamedMonth);
    }
}

std::optional<Grammar::NthDays> Grammar::nthDays(int i) const {
    NthDays result;
    for (int at = i, count = 0; count < 6; ++count) {
        const Found* last = senses_.find(at, Sense::last);
        auto nth = ordinal(at);
        if (!nth && !last && count > 0)
            nth = dayOfMonth(at);
        if ((!nth && !last) || (nth && nth->value > 31))
            break;
        result.nths |= std::uint32_t{1} << (nth ? nth->value : 0);
        result.end = nth ? nth->end : last->end;
        at = senses_.past(tokens_.isSign(result.end, u',') ? result.end + 1 : result.end, Sense::and_);
        if (at == result.end)
            break;
        at = senses_.past(at, Sense::the);
    }
    if (result.nths == 0)
        return std::nullopt;
    const int at = result.end;
    const Found* unit = unitAt(at);
    const Found* workdays = senses_.find(at, Sense::workdays);
    const auto kind = unit ? static_cast<Unit>(unit->word.value) : Unit::minute;
    result.isNamed = true;
    if (senses_.has(at, Sense::weekday) || senses_.has(at, Sense::weekdays)) {
        result.weekdays = weekdayList(at, result.end, Sense::weekday);
    } else if (kind == Unit::workday || (workdays && workdays->word.value == 0)) {
        result.weekdays = workingDays;
        result.end = std::max(unit && kind == Unit::workday ? unit->end : 0, workdays ? workdays->end : 0);
    } else if (kind == Unit::day) {
        result.end = unit->end;
    } else if (kind == Unit::week || kind == Unit::weekend || kind == Unit::fortnight) {
        result.span = kind;
        result.end = unit->end;
    } else {
        result.isNamed = false;
        if ((result.nths & 1) != 0)
            return std::nullopt;
    }
    constexpr std::uint32_t upToFifth = 0b111111;
    if ((result.weekdays != 0 || result.span) && (result.nths & ~upToFifth) != 0)
        return std::nullopt;
    return result;
}

Rule Grammar::NthDays::rule() const {
    Rule rule{.frequency = Rule::Frequency::monthly, .weekdays = weekdays};
    if (weekdays != 0)
        rule.nths = small(nths);
    else
        rule.monthDays = nths;
    return rule;
}

/// Its day, or its days, in a month, week, quarter or year. Nothing where it has none.
Meaning Grammar::placeIn(const Span& span, const NthDays& nth) const {
    const int place = static_cast<int>(std::countr_zero(nth.nths));
    Meaning result;
    const auto within = [&](QDate day) { return day >= span.first && day <= span.last ? day : QDate(); };
    if (nth.span == Unit::weekend) {
        result.first = nthWeekday(span.first, span.last, Qt::Saturday, place == 0 ? -1 : place);
        result.last = result.first.addDays(1);
    } else if (nth.span) {
        const bool isWeek = *nth.span == Unit::week;
        const QDate fifteenth = span.first.addDays(place == 1 ? 0 : 15);
        // Weeks begin on Monday, the first one with the month.
        const QDate monday = place == 0   ? span.last.addDays(1 - span.last.dayOfWeek())
                             : place == 1 ? span.first
                                          : span.first.addDays(1 - span.first.dayOfWeek() + 7 * (place - 1));
        result.first = within(isWeek ? monday : fifteenth);
        result.last = std::min(
            isWeek ? result.first.addDays(7 - result.first.dayOfWeek()) : fifteenth.addDays(14), span.last);
    } else if ((nth.weekdays & (nth.weekdays - 1)) != 0) {
        const int step = place == 0 ? -1 : 1;
        QDate day = place == 0 ? span.last : span.first;
        for (int left = std::max(place, 1); day.isValid(); day = within(day.addDays(step))) {
            if ((nth.weekdays >> (day.dayOfWeek() - 1) & 1) != 0 && --left == 0)
                break;
        }
        result.date = day;
    } else if (nth.weekdays != 0) {
        result.date =
            nthWeekday(span.first, span.last, std::countr_zero(nth.weekdays) + 1, place == 0 ? -1 : place);
    } else {
        result.date = place == 0 ? span.last : within(span.first.addDays(place - 1));
    }
    return result;
}

}  // namespace kestrant::speech
