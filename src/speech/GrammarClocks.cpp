#include "speech/Grammar.h"

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;
using Need = Atom::Need;

constexpr int noon = 720;

/// Whether the person may mean twelve hours later, since people are awake then.
bool isOfAfternoon(int hour) {
    return hour >= 1 && hour <= 7;
}

bool isHour(int value) {
    return value >= 0 && value <= 24;
}

}  // namespace

Atom Grammar::hourAlone(int end, const Number& hour) const {
    Atom atom{.end = end, .need = Need::help, .leads = leadsToTime, .helpedBy = isClear, .isBare = true};
    atom.meaning.minute = hour.value * 60;
    atom.meaning.isOfTwelve = hour.value >= 1 && hour.value <= 12;
    atom.meaning.isVague = isOfAfternoon(hour.value);
    return atom;
}

/// Takes what may follow an hour: am and pm, "o'clock", "-ish".
Atom Grammar::withMinutes(Atom atom, int hourEnd) const {
    atom.end = hourEnd;
    if (const Found* half = senses_.find(hourEnd, Sense::meridiem);
        half && (!half->word.isShort || tokens_.isGlued(hourEnd)) && atom.meaning.minute < 13 * 60 &&
        (atom.meaning.minute >= 60 || present_.hasTwelveHours || atom.meaning.isOfTwelve) &&
        (tokens_.ends(half->end) || tokens_.isKind(half->end, Kind::sign) ||
         tokens_[half->end].gap == Gap::hyphen)) {
        atom.meaning.minute = atom.meaning.minute % noon + (half->word.value == 1 ? noon : 0);
        atom.meaning.isOfTwelve = atom.meaning.isVague = false;
        atom.need = Need::nothing;
        atom.isBare = false;
        atom.end = half->end;
        return atom;
    }
    if (const Found* clock = senses_.find(hourEnd, Sense::oclock)) {
        atom.need = Need::nothing;
        atom.isBare = false;
        atom.end = clock->end;
    }
    const int at = tokens_.isSign(atom.end, u'-') && tokens_.isGlued(atom.end) ? atom.end + 1 : atom.end;
    if (const Found* about = senses_.find(at, Sense::ish); about && tokens_.isGlued(at)) {
        atom.need = Need::nothing;
        atom.isBare = false;
        atom.end = about->end;
    }
    return atom;
}

std::optional<Atom> Grammar::clockInDigits(int i) const {
    if (!tokens_.isKind(i, Kind::number))
        return std::nullopt;
    const Token& token = tokens_[i];
    Atom atom{.end = i + 1, .need = Need::nothing, .leads = leadsToTime};
    Meaning& meaning = atom.meaning;
    const auto minuteAt = [&](int at) {
        return tokens_.isKind(at, Kind::number) && tokens_[at].digits == 2 && tokens_[at].number < 60
                   ? tokens_[at].number
                   : -1;
    };
    // "1430" and "930"
    if (token.digits == 3 || token.digits == 4) {
        const int hour = token.number / 100;
        const int minute = token.number % 100;
        if (token.number < 0 || hour > 23 || minute > 59)
            return std::nullopt;
        meaning.minute = hour * 60 + minute;
        meaning.isOfTwelve = hour >= 1 && hour <= 12 && token.digits == 3;
        meaning.isVague = meaning.isOfTwelve && isOfAfternoon(hour);
        atom.need = Need::help;
        atom.helpedBy = isClear;
        atom.isBare = true;
        // "1600 hours", "1145h"
        if (const int end = token.digits == 4 ? endOfHours(i + 1) : 0; end != 0) {
            atom.need = Need::nothing;
            atom.isBare = false;
            atom.end = end;
            return atom;
        }
        // "0640"
        if (token.digits == 4 && token.text.startsWith(u'0')) {
            atom.need = Need::room;
            atom.isBare = false;
        }
        return withMinutes(atom, i + 1);
    }
    if (token.digits > 2 || !isHour(token.number))
        return std::nullopt;
    const int hour = token.number;
    meaning.minute = hour * 60;
    meaning.isOfTwelve = hour >= 1 && hour <= 12 && !(token.digits == 2 && hour < 10);
    const bool isParted = tokens_.isGlued(i + 1) && tokens_.isGlued(i + 2);
    if (isParted && tokens_.isSign(i + 1, u':') && minuteAt(i + 2) >= 0 &&
        (hour < 24 || tokens_[i + 2].number == 0)) {
        meaning.minute += minuteAt(i + 2);
        meaning.isVague = isOfAfternoon(hour) && meaning.isOfTwelve && present_.hasTwelveHours;
        int end = i + 3;
        if (tokens_.isSign(end, u':') && tokens_.isGlued(end) && tokens_.isGlued(end + 1) &&
            minuteAt(end + 1) >= 0)
            end += 2;
        atom.need = Need::room;
        if (!meaning.isOfTwelve || hour == 0)
            atom.need = Need::nothing;
        if (const int hours = endOfHours(end); hours != 0) {
            atom.need = Need::nothing;
            end = hours;
        }
        return withMinutes(atom, end);
    }
    if (isParted && tokens_.isSign(i + 1, u'.') && minuteAt(i + 2) >= 0 && hour < 24) {
        meaning.minute += minuteAt(i + 2);
        meaning.isVague = isOfAfternoon(hour) && meaning.isOfTwelve && present_.hasTwelveHours;
        atom.need = Need::help;
        atom.helpedBy = isClear | leadsToTime;
        return withMinutes(atom, i + 3);
    }
    // "18h30", "18 h 30", "9 heures et demie", "9h moins le quart"
    if (const Found* unit = hourAt(i + 1)) {
        int end = unit->end;
        const bool isWord = tokens_[i + 1].text.size() > 1;
        if (minuteAt(end) >= 0 && hour < 24 && !senses_.has(end + 1, Sense::unit)) {
            meaning.minute += minuteAt(end);
            ++end;
        } else if (const Found* minuteUnit = senses_.find(end + 1, Sense::unit);
                   minuteUnit && minuteAt(end) >= 0 && hour < 24 &&
                   minuteUnit->word.value == static_cast<int>(Unit::minute)) {
            meaning.minute += minuteAt(end);
            end = minuteUnit->end;
        } else if (const Found* mark = senses_.find(end, Sense::fractionMark)) {
            meaning.minute += mark->word.value * 15;
            end = mark->end;
        } else if (const Found* minus = senses_.find(end, Sense::minus)) {
            const int at = senses_.past(minus->end, Sense::the);
            if (const Found* part = senses_.find(at, Sense::fraction)) {
                meaning.minute -= part->word.value * 15;
                end = part->end;
            } else if (const auto minutes = number(at); minutes && minutes->value < 60) {
                meaning.minute -= minutes->value;
                end = minutes->end;
            }
        } else if (const auto minutes = isWord ? number(end) : std::nullopt;
                   minutes && minutes->digits == 0 && minutes->value < 60 && minutes->value > 1 &&
                   tokens_[end].gap == Gap::space && !senses_.has(minutes->end, Sense::unit)) {
            meaning.minute += minutes->value;
            end = minutes->end;
        }
        // Without a lead a small one is a length: "cuire 1h30", "dormir 9 heures". A length has no "6h05",
        // and no "16 heures 30".
        const int rest = meaning.minute % 60;
        const bool isLength = (hour < 7 && (rest % 10 != 5 || rest == 15 || rest == 45)) ||
                              (isWord && (rest == 0 || hour < 7)) || hour == 24;
        atom.need = isLength ? Need::help : Need::room;
        atom.helpedBy = leadsToTime;
        if (hour == 24)
            meaning.minute = 1440;
        return withMinutes(atom, end);
    }
    if (hour == 0 || hour > 24)
        return std::nullopt;
    // "3 thirty", "12 noon"
    if (const Found* clock = senses_.find(i + 1, Sense::clock);
        clock && hour == 12 && clock->word.value % noon == 0) {
        meaning.minute = clock->word.value;
        meaning.isOfTwelve = false;
        atom.end = clock->end;
        return atom;
    }
    const Number alone{hour, i + 1, token.digits};
    if (auto spoken = withSpokenMinutes(alone))
        return spoken;
    return withMinutes(hourAlone(i + 1, alone), i + 1);
}

/// The French word for hours at the i-th token.
const Found* Grammar::hourAt(int i) const {
    for (const Found* found = senses_.begin(i); found != senses_.end(i); ++found) {
        if (found->word.sense == Sense::unit && found->word.value == static_cast<int>(Unit::hour) &&
            found->word.language == Language::french)
            return found;
    }
    return nullptr;
}

/// Behind "h", "hrs" or "hours", which may follow a whole time; 0 without.
int Grammar::endOfHours(int i) const {
    const Found* unit = senses_.find(i, Sense::unit);
    const bool isHours = unit && unit->word.value == static_cast<int>(Unit::hour) && tokens_.ends(unit->end);
    return isHours && (!unit->word.isShort || tokens_.isGlued(i)) ? unit->end : 0;
}

/// "five thirty", "nine oh five".
std::optional<Atom> Grammar::withSpokenMinutes(const Number& hour) const {
    if (hour.value < 1 || hour.value > 12)
        return std::nullopt;
    const int from = senses_.past(hour.end, Sense::zeroMinute);
    const auto minutes = number(from);
    const bool isSmall = from != hour.end;
    if (!minutes || minutes->digits != 0 || minutes->value >= (isSmall ? 10 : 60) ||
        minutes->value < (isSmall ? 1 : 10) || unitAt(minutes->end))
        return std::nullopt;
    Atom atom = hourAlone(minutes->end, hour);
    atom.meaning.minute += minutes->value;
    atom.isBare = false;
    atom.helpedBy = isClear | leadsToTime;
    return withMinutes(atom, minutes->end);
}

std::optional<Atom> Grammar::clockInWords(int i) const {
    // `hour` is the one that is named; 0 for one that is not of twelve.
    const auto spoken = [&](int end, int minute, int hour, Need need) {
        Atom atom{.end = end, .need = need, .leads = leadsToTime, .helpedBy = isClear | leadsToTime};
        atom.meaning.minute = (minute + 1440) % 1440;
        atom.meaning.isOfTwelve = hour >= 1 && hour <= 12;
        atom.meaning.isVague = isOfAfternoon(hour);
        return atom;
    };
    // "half past five", "ten to five", "20 past 4pm"
    int minutes = -1;
    int at = i;
    if (const Found* part = senses_.find(i, Sense::fraction); part && part->word.value <= 2) {
        minutes = part->word.value * 15;
        at = part->end;
    } else if (const auto count = number(i); count && count->value < 60 && count->value > 0) {
        minutes = count->value;
        at = count->end;
        const Found* unit = senses_.find(at, Sense::unit);
        if (unit && unit->word.value == static_cast<int>(Unit::minute))
            at = unit->end;
    }
    if (minutes > 0) {
        const bool isPast = senses_.has(at, Sense::past);
        const bool isTo = senses_.has(at, Sense::to);
        if (isPast || isTo) {
            const int from = senses_.past(at, isPast ? Sense::past : Sense::to);
            if (const Found* clock = senses_.find(from, Sense::clock))
                return spoken(clock->end, clock->word.value + (isPast ? minutes : -minutes), 0,
                              Need::nothing);
            const auto hour = number(from);
            const bool isFraction = senses_.has(i, Sense::fraction);
            if (hour && hour->value >= 1 && hour->value <= 12 && (isFraction || minutes % 5 == 0) &&
                (hour->digits <= 2) && tokens_.ends(hour->end) | senses_.has(hour->end, Sense::meridiem)) {
                auto atom =
                    withMinutes(spoken(hour->end, hour->value * 60 + (isPast ? minutes : -minutes),
                                       hour->value, isFraction || isPast ? Need::nothing : Need::room),
                                hour->end);
                // "thursday 10 to 12" is a span.
                atom.isOfLead = isTo && tokens_.isKind(i, Kind::number) && tokens_.isKind(from, Kind::number);
                return atom;
            }
        }
        // "half five" is half past five
        const Found* half = senses_.find(i, Sense::fraction);
        const auto hour = half && half->word.value == 2 && half->word.language == Language::english
                              ? number(half->end)
                              : std::nullopt;
        if (hour && hour->value >= 1 && hour->value <= 12 && tokens_.ends(hour->end))
            return spoken(hour->end, hour->value * 60 + 30, hour->value, Need::help);
    }
    // "moins le quart", "moins dix"
    const auto subtract = [this](int& minute, int& end) {
        const Found* minus = senses_.find(end, Sense::minus);
        if (!minus)
            return false;
        const int from = senses_.past(minus->end, Sense::the);
        if (const Found* part = senses_.find(from, Sense::fraction)) {
            minute -= part->word.value * 15;
            end = part->end;
        } else if (const auto count = number(from)) {
            minute -= count->value;
            end = count->end;
        }
        return true;
    };
    if (const Found* clock = senses_.find(i, Sense::clock)) {
        int minute = clock->word.value;
        int end = clock->end;
        if (const Found* mark = senses_.find(end, Sense::fractionMark);
            mark && mark->word.language == clock->word.language) {
            minute += mark->word.value * 15;
            end = mark->end;
        } else if (!subtract(minute, end) && clock->word.language == Language::french) {
            // "midi dix"
            const auto rest = number(end);
            if (rest && rest->digits == 0 && rest->value < 60 && rest->value % 5 == 0) {
                minute += rest->value;
                end = rest->end;
            }
        }
        const Need need = end != clock->end ? Need::room : Need::opening;
        Atom atom{.end = end, .need = need, .leads = leadsToTime, .helpedBy = leadsToTime};
        atom.meaning.minute = minute == 1440 ? minute : minute % 1440;
        return atom;
    }
    const auto hour = tokens_.isKind(i, Kind::word) ? number(i) : std::nullopt;
    if (!hour || hour->value > 23)
        return std::nullopt;
    // "huit heures du soir", "dix-huit heures trente"
    const Found* unit = senses_.find(hour->end, Sense::unit);
    if (unit && unit->word.value == static_cast<int>(Unit::hour) && unit->word.language == Language::french) {
        int end = unit->end;
        int minute = hour->value * 60;
        if (const Found* mark = senses_.find(end, Sense::fractionMark)) {
            minute += mark->word.value * 15;
            end = mark->end;
        } else if (const auto count = subtract(minute, end) ? std::nullopt : number(end);
                   count && count->value < 60 && !senses_.has(count->end, Sense::unit)) {
            minute += count->value;
            end = count->end;
        }
        // Without a lead a small one is a length.
        const Need need = hour->value >= 7 && minute % 60 != 0 ? Need::room : Need::help;
        Atom atom = withMinutes(spoken(end, minute, hour->value, need), end);
        atom.helpedBy = leadsToTime;
        return atom;
    }
    if (hour->value < 1 || hour->value > 12)
        return std::nullopt;
    if (const Found* clock = senses_.find(hour->end, Sense::clock);
        clock && hour->value == 12 && clock->word.value % noon == 0)
        return spoken(clock->end, clock->word.value, 0, Need::room);
    if (auto atom = withSpokenMinutes(*hour))
        return atom;
    return withMinutes(hourAlone(hour->end, *hour), hour->end);
}

std::optional<Atom> Grammar::clock(int i) const {
    const auto digits = clockInDigits(i);
    auto words = clockInWords(i);
    return words && (!digits || words->end > digits->end) ? words : digits;
}

}  // namespace kestrant::speech
