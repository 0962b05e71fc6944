#include "speech/Grammar.h"

#include <algorithm>
#include <array>

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;
using Need = Atom::Need;

template <typename Number>
std::uint8_t small(Number value) {
    return static_cast<std::uint8_t>(value);
}

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
        if (const Found* unit = senses_.find(end, Sense::unit);
            unit && tokens_[end].text == u"week" && day->word.value >= 0) {
            meaning.date = meaning.date.addDays(7);
            end = unit->end;
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
        const QStringView name = tokens_[i].text;
        const bool isLast = end >= tokens_.size() && i > 0 && tokens_[i].isCapital;
        const bool isName = name == u"sam" || name == u"mar" || name == u"jeu" || name == u"mon";
        const bool isWord =
            name == u"sat" || name == u"sun" || name == u"wed" || name == u"mer" || name == u"dim" || isName;
        if (isName && tokens_[i].isCapital && i > 0 && !hasStop && name == u"sam")
            return;
        atom.need = !isWord || (isLast && !isName && !senses_.endsWith(i, Sense::determiner)) ? Need::room
                                                                                              : Need::help;
    }
    result.push_back(atom);
    const QDate next = today_.addDays((day->word.value - today_.dayOfWeek() + 6) % 7 + 1);
    const auto on = [&](int behind, QDate date, bool isPast = false) {
        result.push_back({.end = behind, .meaning = {.date = date, .isPast = isPast}});
    };
    if (const Found* found = senses_.find(end, Sense::next))
        on(found->end, next);
    if (const Found* found = senses_.find(end, Sense::coming))
        on(found->end, next);
    if (const Found* found = senses_.find(end, Sense::former))
        on(found->end, today_.addDays(-1), true);
    if (const Found* found = senses_.find(end, Sense::weekOut); found && found->word.value > 1)
        on(found->end, next.addDays(found->word.value));
    // "jeudi en 8"
    if (tokens_.isKind(end, Kind::word) && tokens_[end].text == u"en" &&
        tokens_.isKind(end + 1, Kind::number) &&
        (tokens_[end + 1].number == 8 || tokens_[end + 1].number == 15))
        on(end + 2, next.addDays(tokens_[end + 1].number == 8 ? 7 : 14));
    // "friday week"
    if (const Found* unit = senses_.find(end, Sense::unit);
        unit && unit->word.language == Language::english &&
        (tokens_[end].text == u"week" || tokens_[end].text == u"fortnight"))
        on(unit->end, next.addDays(tokens_[end].text == u"week" ? 7 : 14));
    // "vendredi dans deux semaines", "friday in two weeks": that day of the week.
    if (const Found* in = senses_.find(end, Sense::in)) {
        if (const auto spoken = length(in->end); spoken && spoken->isWeeks && spoken->length.minutes == 0) {
            const QDate monday = today_.addDays(1 - today_.dayOfWeek() + spoken->length.days);
            on(spoken->end, monday.addDays(day->word.value - 1));
        }
    }
}

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

std::optional<Grammar::Number> Grammar::ordinal(int i) const {
    if (tokens_.isKind(i, Kind::number) && tokens_[i].digits <= 2) {
        if (tokens_.isGlued(i + 1) && senses_.has(i + 1, Sense::ordinalEnding) &&
            (!tokens_.isGlued(i + 2) || tokens_.isKind(i + 2, Kind::sign)))
            return Number{tokens_[i].number, i + 2, tokens_[i].digits};
        return std::nullopt;
    }
    if (const Found* found = senses_.find(i, Sense::ordinal))
        return Number{found->word.value, found->end, 0};
    return std::nullopt;
}

/// A day of the month as a number or an ordinal; `digits` is 0 for an ordinal.
std::optional<Grammar::Number> Grammar::dayOfMonth(int i) const {
    std::optional<Number> result = ordinal(i);
    if (result)
        result->digits = 0;
    else
        result = number(i);
    const bool isOne = result && result->digits == 0 && result->value == 1 && senses_.has(i, Sense::number);
    if (!result || isOne || result->value < 1 || result->value > 31 || result->digits > 2)
        return std::nullopt;
    return result;
}

std::optional<Grammar::Number> Grammar::year(int i) const {
    int at = tokens_.isSign(i, u',') ? i + 1 : i;
    if (tokens_.isKind(at, Kind::number) && tokens_[at].digits == 4 && tokens_[at].gap != Gap::none &&
        tokens_[at].number >= 2000 && tokens_[at].number <= 2199 && tokens_.ends(at + 1))
        return Number{tokens_[at].number, at + 1, 4};
    return std::nullopt;
}

/// "27 march", "27th of March 2027", "1er mai", "march 27", "May 5th, 2027".
void Grammar::addDates(int i, Atoms& result) const {
    const auto add = [&](const Found& month, int day, int end, bool isClearDay) {
        Atom atom{.end = end, .need = Need::room, .helpedBy = leadsToDay};
        atom.isAmbiguous = month.word.isShort && !isClearDay;
        if (tokens_.isSign(end, u'.') && tokens_[end - 1].kind == Kind::word && end + 1 < tokens_.size() &&
            tokens_[end + 1].gap == Gap::space && tokens_[end - 1].text.size() <= 4)
            atom.end = ++end;
        atom.meaning.month = small(month.word.value);
        atom.meaning.monthDay = small(day);
        if (const auto inYear = year(end)) {
            atom.meaning.year = inYear->value;
            atom.end = inYear->end;
            atom.need = Need::nothing;
        } else {
            // A year of the past makes a date of history: "8 mai 1945".
            const int at = tokens_.isSign(end, u',') ? end + 1 : end;
            if (tokens_.isKind(at, Kind::number) && tokens_[at].digits == 4 && tokens_[at].number >= 1000 &&
                tokens_[at].number < 2000) {
                atom.end = at + 1;
                atom.meaning.isPast = true;
            }
        }
        if (!QDate::isValid(atom.meaning.year != 0 ? atom.meaning.year : 2024, month.word.value, day))
            return;
        if (isClearDay && !month.word.isShort)
            atom.need = Need::nothing;
        result.push_back(atom);
    };
    if (const auto day = dayOfMonth(i)) {
        int at = day->end;
        for (const int from : {at, senses_.past(at, Sense::of)}) {
            if (const Found* month = senses_.find(from, Sense::month)) {
                add(*month, day->value, month->end, day->digits == 0);
                break;
            }
        }
        const bool isWord = tokens_.isKind(i, Kind::word);
        if (!isWord || senses_.has(i, Sense::ordinal)) {
            Atom alone{.end = day->end,
                       .meaning = {.monthDay = small(day->value)},
                       .need = Need::help,
                       .helpedBy = hasArticle,
                       .isBare = true};
            // "pay 15th"
            if (day->digits == 0 && !isWord && day->value > 3 && tokens_.isStop(day->end) && i > 0)
                alone.need = Need::room;
            if (!isWord || day->value <= 31)
                result.push_back(alone);
        }
    }
    if (const Found* month = senses_.find(i, Sense::month)) {
        int at = month->end;
        if (tokens_.isSign(at, u'.') && tokens_.isGlued(at))
            ++at;
        at = senses_.past(at, Sense::the);
        if (const auto day = dayOfMonth(at); day && (tokens_.isKind(at, Kind::number) || day->digits == 0))
            add(*month, day->value, day->end, day->digits == 0);
    }
}

/// "2026-03-27", "27/03", "3/27/2026", "27.03.2026", "2026/8/10", "15-SEP-26".
void Grammar::addNumericDates(int i, Atoms& result) const {
    if (!tokens_.isKind(i, Kind::number) || i + 2 >= tokens_.size())
        return;
    struct Part {
        int value = 0;
        int digits = 0;
    };
    std::array<Part, 3> parts;
    std::size_t count = 0;
    int at = i;
    char16_t separator = 0;
    int month = 0;
    while (count < 3) {
        const bool isNumber = tokens_.isKind(at, Kind::number) && tokens_[at].digits <= 4;
        const Found* named =
            count == 1 && tokens_.isKind(at, Kind::word) ? senses_.find(at, Sense::month) : nullptr;
        if (!isNumber && !named)
            break;
        if (named)
            month = named->word.value;
        parts.at(count++) = {named ? named->word.value : tokens_[at].number, named ? 0 : tokens_[at].digits};
        ++at;
        const bool goesOn = tokens_.isKind(at, Kind::sign) && tokens_.isGlued(at) &&
                            tokens_.isGlued(at + 1) && (separator == 0 || tokens_[at].sign == separator);
        if (!goesOn || count == 3)
            break;
        separator = tokens_[at].sign;
        ++at;
    }
    if (count < 2 || (separator != u'/' && separator != u'-' && separator != u'.'))
        return;
    const bool isCut = tokens_.isKind(at - 1, Kind::sign);
    if (isCut || !(tokens_.ends(at) || (at < tokens_.size() && tokens_.isSign(at, u'T')) ||
                   (tokens_.isKind(at, Kind::word) && tokens_[at].text == u"t")))
        return;
    Atom atom{.end = at, .need = Need::nothing, .helpedBy = leadsToDay};
    if (tokens_.isKind(at, Kind::word) && tokens_[at].text == u"t" && tokens_.isGlued(at)) {
        const auto time = clockInDigits(at + 1);
        if (!time)
            return;
        atom.end = time->end;
        atom.meaning.minute = time->meaning.minute;
    }
    const auto full = [](int number) { return number < 100 ? 2000 + number : number; };
    if (count == 3) {
        if (parts[0].digits == 4) {
            atom.meaning.date = QDate(parts[0].value, parts[1].value, parts[2].value);
        } else if (parts[2].digits == 2 || parts[2].digits == 4) {
            const int inYear = full(parts[2].value);
            const bool monthFirst =
                month == 0 && separator != u'.' && present_.order == DateOrder::monthFirst;
            for (const bool swapped : {false, true}) {
                if (atom.meaning.date.isValid() || (swapped && month != 0))
                    break;
                atom.meaning.date = monthFirst != swapped ? QDate(inYear, parts[0].value, parts[1].value)
                                                          : QDate(inYear, parts[1].value, parts[0].value);
            }
        }
        if (atom.meaning.date.isValid() && parts[0].digits + parts[2].digits >= 3) {
            atom.meaning.isPast = atom.meaning.date < today_.addYears(-20);
            result.push_back(atom);
        }
        return;
    }
    if (month != 0) {
        atom.meaning.month = small(month);
        atom.meaning.monthDay = small(std::clamp(parts[0].value, 0, 31));
        if (QDate::isValid(2024, month, parts[0].value))
            result.push_back(atom);
        return;
    }
    if (separator == u'-' || parts[0].digits > 2 || parts[1].digits > 2 || parts[0].digits == 0 ||
        parts[1].digits == 0)
        return;
    // "24/7", "1/2" and the like.
    const int a = parts[0].value;
    const int b = parts[1].value;
    const bool isFraction = a < b && b <= 4 && parts[0].digits == 1 && parts[1].digits == 1;
    const bool isSaying = (b == 7 && (a == 24 || a == 7)) || (a == 9 && b == 11) || (a == 24 && b == 24) ||
                          (a == b && a > 12) || (a == 5 && b == 7);
    atom.need = isSaying || separator == u'.' ? Need::help : isFraction ? Need::opening : Need::room;
    if (isFraction && i == 0)
        atom.need = Need::help;
    if (separator == u'.' && (parts[1].digits != 2))
        return;
    const bool monthFirst = separator == u'/' && present_.order == DateOrder::monthFirst;
    for (const bool swapped : {false, true}) {
        const int m = monthFirst != swapped ? a : b;
        const int d = monthFirst != swapped ? b : a;
        if (m >= 1 && m <= 12 && QDate::isValid(2024, m, d)) {
            atom.meaning.month = small(m);
            atom.meaning.monthDay = small(d);
            result.push_back(atom);
            return;
        }
    }
}

/// "april", "mars 2027": its first day.
void Grammar::addMonths(int i, Atoms& result) const {
    if (const Found* next = senses_.find(i, Sense::next)) {
        if (const Found* named = senses_.find(next->end, Sense::month);
            named && next->word.language == Language::english) {
            const int ahead = named->word.value > today_.month() ? 0 : 1;
            result.push_back({.end = named->end,
                              .meaning = {.month = small(named->word.value), .year = today_.year() + ahead},
                              .need = named->word.isShort ? Need::room : Need::nothing});
        }
    }
    const Found* month = senses_.find(i, Sense::month);
    if (!month)
        return;
    Atom atom{.end = month->end,
              .meaning = {.month = small(month->word.value)},
              .need = Need::help,
              .leads = leadsToSpan,
              .helpedBy = leadsToSpan,
              .isAmbiguous = month->word.isShort};
    if (tokens_[i].text.size() < 3)
        return;
    if (const auto inYear = year(atom.end)) {
        atom.meaning.year = inYear->value;
        atom.end = inYear->end;
        atom.need = Need::room;
        result.push_back(atom);
        return;
    }
    if (const Found* next = senses_.find(atom.end, Sense::next)) {
        atom.end = next->end;
        atom.need = Need::nothing;
        const int ahead = month->word.value > today_.month() ? 0 : 1;
        atom.meaning.year = today_.year() + ahead;
    } else if (month->word.value == today_.month()) {
        // "in march" in March is no day.
        atom.helpedBy = 0;
    }
    result.push_back(atom);
}

/// "12 to 16 september", "du 12 au 15 juin", "June 12-15".
void Grammar::addDayRanges(int i, Atoms& result) const {
    const auto add = [&](const Found& month, int from, int to, int end) {
        if (from >= to || !QDate::isValid(2024, month.word.value, to))
            return;
        Meaning start{.month = small(month.word.value), .monthDay = small(from)};
        Meaning until{.month = small(month.word.value), .monthDay = small(to)};
        Atom atom{.end = end, .need = Need::nothing};
        if (const auto inYear = year(end)) {
            start.year = until.year = inYear->value;
            atom.end = inYear->end;
        }
        atom.meaning = start;
        atom.until = until;
        atom.isAmbiguous = month.word.isShort;
        result.push_back(atom);
    };
    const bool isBetween = senses_.endsWith(i, Sense::from);
    if (const auto from = dayOfMonth(i)) {
        const int at = joint(from->end, isBetween);
        if (at == from->end)
            return;
        const auto to = dayOfMonth(senses_.past(at, Sense::the));
        if (!to)
            return;
        if (const Found* month = senses_.find(senses_.past(to->end, Sense::of), Sense::month))
            add(*month, from->value, to->value, month->end);
        else if (const Found* plain = senses_.find(to->end, Sense::month))
            add(*plain, from->value, to->value, plain->end);
        return;
    }
    const Found* month = senses_.find(i, Sense::month);
    const auto from = month ? dayOfMonth(month->end) : std::nullopt;
    const int at = from ? joint(from->end, isBetween) : 0;
    if (from && at != from->end) {
        if (const auto to = dayOfMonth(at); to && !senses_.has(to->end, Sense::month) &&
                                            tokens_.ends(to->end) && !senses_.has(to->end, Sense::meridiem))
            add(*month, from->value, to->value, to->end);
    }
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
