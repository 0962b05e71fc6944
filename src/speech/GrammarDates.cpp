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
    // "mar 22" is a Tuesday where a Tuesday soon is the 22nd.
    const auto isWeekdaySoon = [&](int day) {
        const Found* weekday = senses_.find(i, Sense::weekday);
        const QDate found = weekday ? nextDate(today_, 0, day, weekday->word.value) : QDate();
        return found.isValid() && found <= today_.addDays(31);
    };
    if (const Found* month = senses_.find(i, Sense::month)) {
        int at = month->end;
        if ((tokens_.isSign(at, u'.') && tokens_.isGlued(at)) ||
            (tokens_.isSign(at, u'-') && tokens_.isGlued(at) && tokens_.isGlued(at + 1)))
            ++at;
        at = senses_.past(at, Sense::the);
        if (const auto day = dayOfMonth(at);
            day && (tokens_.isKind(at, Kind::number) || day->digits == 0) && !isWeekdaySoon(day->value))
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
    // "10/3-10/5"
    const bool isSpan = separator == u'/' && tokens_.isSign(at, u'-') && tokens_.isKind(at + 1, Kind::number);
    if (isCut || !(tokens_.ends(at) || isSpan || (at < tokens_.size() && tokens_.isSign(at, u'T')) ||
                   (tokens_.isKind(at, Kind::word) && tokens_[at].text == u"t")))
        return;
    Atom atom{.end = at, .need = Need::nothing, .helpedBy = leadsToDay};
    if (tokens_.isKind(at, Kind::word) && tokens_[at].text == u"t" && tokens_.isGlued(at)) {
        const auto time = clockInDigits(at + 1);
        if (!time || time->meaning.minute >= 1440)
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
    // "3/4 of the bill" is a share.
    if (const Found* of = senses_.find(at, Sense::genitive);
        isFraction && of && !tokens_.isKind(of->end, Kind::number))
        return;
    if (isFraction && i == 0)
        atom.need = Need::help;
    if (a == 9 && b == 11 && present_.order == DateOrder::monthFirst)
        atom.helpedBy = 0;
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
    for (const Sense lead : {Sense::thisOne, Sense::coming}) {
        const Found* found = senses_.find(i, lead);
        const Found* named = found ? senses_.find(found->end, Sense::month) : nullptr;
        if (named && named->word.value != today_.month())
            result.push_back({.end = named->end,
                              .meaning = {.month = small(named->word.value)},
                              .need = named->word.isShort ? Need::room : Need::nothing,
                              .leads = leadsToSpan});
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

}  // namespace kestrant::speech
