#include "speech/Grammar.h"

#include <algorithm>

namespace kestrant::speech {

using Gap = Token::Gap;
using Kind = Token::Kind;

Grammar::Grammar(const Tokens& tokens, const Senses& senses, const Present& present)
    : tokens_(tokens)
    , senses_(senses)
    , present_(present)
    , today_(present.today()) {}

std::vector<Atom> Grammar::atoms(int i) const {
    Atoms result;
    if (i >= tokens_.size() || (senses_.begin(i) == senses_.end(i) && !tokens_.isKind(i, Kind::number) &&
                                !tokens_.isKind(i, Kind::sign) && !tokens_[i].isAllCapitals))
        return result;
    addZone(i, result);
    if (tokens_.isGlued(i) && tokens_.isKind(i - 1, Kind::number))
        return result;
    addDays(i, result);
    addLengths(i, result);
    addTimes(i, result);
    addTimeRanges(i, result);
    addRules(i, result);
    addRuleTails(i, result);
    // Most of the line first.
    std::stable_sort(result.begin(), result.end(),
                     [](const Atom& a, const Atom& b) { return a.end > b.end; });
    return result;
}

std::optional<Grammar::Number> Grammar::number(int i) const {
    if (tokens_.isKind(i, Kind::number)) {
        const Token& token = tokens_[i];
        if (token.digits > 4 || token.number < 0)
            return std::nullopt;
        return Number{token.number, i + 1, token.digits};
    }
    const Found* found = senses_.find(i, Sense::number);
    if (!found)
        return std::nullopt;
    Number result{found->word.value, found->end, 0};
    if (result.value < 20 || result.value > 90 || result.value % 10 != 0)
        return result;
    const int rest = senses_.past(result.end, Sense::and_);
    const Found* ones = senses_.find(rest, Sense::number);
    const int most = result.value == 60 || result.value == 80 ? 19 : 9;
    // "and" belongs to the number only in front of a one: "vingt et un".
    if (ones && ones->word.value >= 1 && ones->word.value <= most &&
        ones->word.language == found->word.language && (rest == result.end || ones->word.value % 10 == 1)) {
        result.value += ones->word.value;
        result.end = ones->end;
    }
    return result;
}

std::optional<Grammar::Number> Grammar::amountInQuarters(int i) const {
    if (const Found* part = senses_.find(i, Sense::fraction)) {
        int end = part->end;
        end = senses_.past(end, Sense::of);
        end = senses_.past(end, Sense::article);
        return Number{part->word.value, end, 0};
    }
    std::optional<Number> result = number(i);
    // "3/4 d'heure"
    if (result && result->digits == 1 && tokens_.isSign(i + 1, u'/') && tokens_.isGlued(i + 1) &&
        tokens_.isGlued(i + 2) && tokens_.isKind(i + 2, Kind::number) &&
        (tokens_[i + 2].number == 2 || tokens_[i + 2].number == 4) && result->value < tokens_[i + 2].number) {
        const int end = senses_.past(senses_.past(i + 3, Sense::of), Sense::article);
        return Number{result->value * 4 / tokens_[i + 2].number, end, 1};
    }
    if (!result) {
        const Found* article = senses_.find(i, Sense::article);
        if (!article)
            return std::nullopt;
        if (const Found* part = senses_.find(article->end, Sense::fraction))
            return Number{part->word.value, senses_.past(part->end, Sense::of), 0};
        return Number{4, article->end, 0};
    }
    result->value *= 4;
    if (result->value == 4 && senses_.has(result->end, Sense::fraction))
        return Number{senses_.find(result->end, Sense::fraction)->word.value,
                      senses_.past(senses_.past(result->end, Sense::fraction), Sense::of), 0};
    const int sign = result->end;
    if (result->digits > 0 && (tokens_.isSign(sign, u'.') || tokens_.isSign(sign, u',')) &&
        tokens_.isGlued(sign) && tokens_.isGlued(sign + 1) && tokens_.isKind(sign + 1, Kind::number) &&
        tokens_[sign + 1].digits <= 2) {
        const Token& decimals = tokens_[sign + 1];
        result->value += (decimals.number * (decimals.digits == 1 ? 10 : 1) * 4 + 50) / 100;
        result->end = sign + 2;
    } else if (const Found* mark = senses_.find(result->end, Sense::fractionMark);
               mark && unitAt(mark->end)) {
        result->value += mark->word.value;
        result->end = mark->end;
    }
    return result;
}

const Found* Grammar::unitAt(int i) const {
    const Found* unit = senses_.find(i, Sense::unit);
    if (!unit)
        return nullptr;
    // Letters are units only in one piece with their number.
    const bool isInOnePiece = tokens_.isGlued(i) && tokens_.isKind(i - 1, Kind::number);
    if (tokens_[i].gap == Gap::none && !isInOnePiece)
        return nullptr;
    return unit->word.isShort && !isInOnePiece ? nullptr : unit;
}

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
            // "1 h 30"
            const auto minutes = number(end);
            if (minutes && minutes->digits > 0 && minutes->value < 60 && !unitAt(minutes->end) &&
                (tokens_.isGlued(end) || tokens_.ends(minutes->end))) {
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
            const auto spoken = length(lead->end);
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
            relative(behind != end ? behind : spoken->end, whole);
        }
    }
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

std::optional<Atom> Grammar::dayAt(int i) const {
    Atoms found;
    addDays(i, found);
    const Atom* best = nullptr;
    for (const Atom& each : found) {
        if (each.meaning.hasDay() && !each.isBare && !each.meaning.isPast && !each.until &&
            (!best || each.end > best->end))
            best = &each;
    }
    return best ? std::optional(*best) : std::nullopt;
}

int Grammar::joint(int i, bool isBetween) const {
    if (tokens_.isSign(i, u'-') || tokens_.isSign(i, u'–') || tokens_.isSign(i, u'—'))
        return i + 1;
    if (isBetween && senses_.has(i, Sense::and_))
        return senses_.past(i, Sense::and_);
    if (const Found* found = senses_.find(i, Sense::range))
        return found->end;
    return i;
}

}  // namespace kestrant::speech
