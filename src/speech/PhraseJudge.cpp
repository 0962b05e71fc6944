#include "speech/PhraseJudge.h"

#include <algorithm>

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;

}  // namespace

bool PhraseJudge::isAtBegin(int i, bool follows) const {
    for (int k = i - 1; k >= 0; --k) {
        if (isRefused(k))
            continue;
        if (!tokens_.isKind(k, Kind::sign) || tokens_.isSign(k, u'#') || tokens_.isSign(k, u'\'') ||
            tokens_.isSign(k, u'’'))
            return follows;
    }
    return true;
}

bool PhraseJudge::isReal(const Chain& chain, bool follows) const {
    const bool isAtBeginning = isAtBegin(chain.begin, follows);
    const bool hasEnd =
        tokens_.isStop(chain.end) || isRefused(chain.end) || senses_.has(chain.end, Sense::allDay);
    const bool hasRoomBehind = hasEnd || (senses_.has(chain.end, Sense::connector) && !isBlockedBy(chain));
    if (isBlockedBy(chain) && chain.atoms == 1 && !chain.hasLead && chain.begin > 0)
        return false;
    if (chain.isClear) {
        const bool isWeakDay = chain.isAmbiguous && !hasRoomBehind;
        return !isWeakDay;
    }
    if (chain.hasRoomWord) {
        if (chain.isAmbiguous)
            return hasRoomBehind;
        if (chain.isBareTime && chain.atoms == 1)
            return hasRoomBehind || isAtBeginning;
        // "le 22 laver les rideaux", but not "the 9 to 5 grind"
        const Found* lead = senses_.find(chain.begin, Sense::lead);
        const bool isFrenchLead = lead && lead->word.language == Language::french;
        if (chain.meaning.monthDay != 0 && chain.meaning.month == 0 && chain.meaning.weekday == 0)
            return hasRoomBehind ||
                   (isAtBeginning && isFrenchLead && tokens_.isKind(chain.end - 1, Kind::number));
        if (chain.meaning.minute >= 0 && !chain.meaning.hasDay())
            return hasRoomBehind || chain.isLed || (isAtBeginning && chain.meaning.minute >= 0);
        return isAtBeginning || hasRoomBehind || chain.isLed;
    }
    return isAtBeginning || chain.isLed || (chain.atoms > 1);
}

/// "Today by ..." is a title.
bool PhraseJudge::isBlockedBy(const Chain& chain) const {
    return senses_.has(chain.end, Sense::author);
}

bool PhraseJudge::isForbidden(const Chain& chain) const {
    const int i = chain.begin;
    if (i == 0 || !tokens_.isKind(i - 1, Kind::word) || tokens_[i].gap == Gap::none)
        return isBehindOther(chain);
    const bool isTime = !chain.meaning.hasDay() && !chain.meaning.rule;
    if (isPartOfWork(chain))
        return true;
    if (isTime) {
        // "the 5am club"
        const bool isName = senses_.endsWith(i, Sense::determiner) && tokens_.isKind(chain.end, Kind::word) &&
                            senses_.begin(chain.end) == senses_.end(chain.end);
        return !chain.hasLead && (senses_.endsWith(i, Sense::forbidsClock) || isName || isVerse(chain));
    }
    if (senses_.endsWith(i, Sense::negation) || senses_.endsWith(i, Sense::except))
        return true;
    if (chain.meaning.rule && !chain.meaning.rule->isList)
        return false;
    if (!chain.hasLead && senses_.endsWith(i, Sense::ordinalEnding))
        return true;
    if (chain.hasLead)
        return senses_.endsWith(i, Sense::after) || senses_.endsWith(i, Sense::until);
    if (senses_.endsWith(i, Sense::forbidsDay))
        return true;
    if (tokens_.isKind(i, Kind::number) && chain.atoms == 1 && senses_.endsWith(i, Sense::forbidsClock))
        return true;
    return senses_.endsWith(i, Sense::determiner) && !chain.meaning.moment;
}

/// "John 3:16"
bool PhraseJudge::isVerse(const Chain& chain) const {
    return senses_.endsWith(chain.begin, Sense::verse) && tokens_.isSign(chain.begin + 1, u':') &&
           chain.end == chain.begin + 3;
}

bool PhraseJudge::isBehindOther(const Chain& chain) const {
    return chain.begin > 0 && tokens_.isSign(chain.begin - 1, u'#') && tokens_.isGlued(chain.begin);
}

/// "Watch The Day After Tomorrow": in the title of a film, a book or a song each word has a capital.
bool PhraseJudge::isPartOfWork(const Chain& chain) const {
    const Found* verb = senses_.find(0, Sense::work);
    const bool hasNumber = std::any_of(&tokens_[chain.begin], &tokens_[chain.end - 1] + 1,
                                       [](const Token& token) { return token.kind == Kind::number; });
    if (!verb || verb->end > chain.begin || (chain.meaning.minute >= 0 && hasNumber))
        return false;
    if (verb->end == chain.begin) {
        if (verb->word.language == Language::french && tokens_[chain.begin].isCapital)
            return true;
        const bool areCapitals =
            std::all_of(&tokens_[chain.begin], &tokens_[chain.end - 1] + 1,
                        [](const Token& token) { return token.isCapital || token.kind != Kind::word; });
        return areCapitals && chain.end > chain.begin + 1;
    }
    if (!tokens_[chain.begin].isCapital)
        return false;
    int capitals = 0;
    for (int k = verb->end; k < chain.begin; ++k) {
        if (!tokens_.isKind(k, Kind::word))
            return false;
        capitals += tokens_[k].isCapital ? 1 : 0;
    }
    return tokens_[chain.begin - 1].isCapital && (capitals > 1 || senses_.has(verb->end, Sense::determiner));
}

bool PhraseJudge::leavesTimeWords(const Chain& chain) const {
    return leavesBehind(chain) || leavesBefore(chain);
}

bool PhraseJudge::leavesBehind(const Chain& chain) const {
    int next = chain.end;
    // "8am and 8pm", "an hour or two"
    const bool isJoined = senses_.has(next, Sense::and_) || senses_.has(next, Sense::or_);
    if (isJoined)
        next =
            senses_.has(next, Sense::and_) ? senses_.past(next, Sense::and_) : senses_.past(next, Sense::or_);
    if (next >= tokens_.size() || isRefused(next))
        return false;
    if (isJoined && (senses_.has(next, Sense::number) ||
                     (tokens_.isKind(next, Kind::number) && tokens_.isStop(next + 1))))
        return true;
    if (!tokens_.isKind(next, Kind::word))
        return false;
    for (const Found* found = senses_.begin(next); found != senses_.end(next); ++found) {
        switch (found->word.sense) {
        case Sense::weekday:
        case Sense::month:
            if (!found->word.isShort || (found->word.sense == Sense::weekday && chain.meaning.weekday != 0 &&
                                         !senses_.has(next, Sense::otherWord)))
                return true;
            break;
        case Sense::unit:
            if (chain.endsWithNumber)
                return true;
            break;
        case Sense::meridiem:
        case Sense::afterNext:
            if (!found->word.isShort)
                return true;
            break;
        case Sense::ago:
        case Sense::former:
        case Sense::outOf:
        case Sense::except:
        case Sense::zoneTime:
        case Sense::timeOf:
            return true;
        case Sense::region:
            if (chain.endsWithTime)
                return true;
            break;
        case Sense::range:
            // "the 9 to 5 grind"
            if (chain.endsWithNumber && tokens_.isKind(found->end, Kind::number))
                return true;
            break;
        case Sense::to:
        case Sense::past:
            // "at five to"
            if (chain.endsWithTime && tokens_.isStop(found->end))
                return true;
            break;
        case Sense::part:
        case Sense::today:
        case Sense::todayPart:
            if (chain.meaning.part != DayPart::none || chain.meaning.hasDay())
                return true;
            break;
        default:
            break;
        }
    }
    return false;
}

bool PhraseJudge::leavesBefore(const Chain& chain) const {
    const int before = chain.begin - 1;
    if (before < 0 || !tokens_.isKind(before, Kind::word) || isRefused(before))
        return false;
    // "until 5pm", "deux lundis"
    if (senses_.endsWith(chain.begin, Sense::until))
        return true;
    for (const Sense edge : {Sense::begin, Sense::middle, Sense::end}) {
        const bool isShort = senses_.has(before, edge) && senses_.find(before, edge)->word.value == 0;
        if (senses_.endsWith(chain.begin, edge) && !isShort)
            return true;
    }
    if (chain.meaning.rule && (senses_.has(before, Sense::number) || senses_.has(before, Sense::ordinal)))
        return true;
    for (const Found* found = senses_.begin(before); found != senses_.end(before); ++found) {
        if (found->end != chain.begin)
            continue;
        switch (found->word.sense) {
        case Sense::weekday:
        case Sense::month:
            // In French a capital makes a name of it.
            if (before > 0 && tokens_[before].isCapital && found->word.language == Language::french)
                break;
            if (!found->word.isShort ||
                (found->word.sense == Sense::weekday && !senses_.has(before, Sense::otherWord)))
                return true;
            break;
        case Sense::today:
            return true;
        case Sense::ordinal:
        case Sense::last:
            // "the first Monday after Easter"
            if (chain.meaning.weekday != 0)
                return true;
            break;
        case Sense::of:
            // "the morning of the 3rd"
            if (before > 0 && senses_.has(before - 1, Sense::part))
                return true;
            break;
        case Sense::unit:
            // "the week before Christmas"
            if (!found->word.isShort && chain.hasLead && senses_.has(chain.begin, Sense::before))
                return true;
            break;
        case Sense::next:
            if (!chain.hasLead && !isAtBegin(before, false))
                return true;
            break;
        default:
            break;
        }
    }
    return false;
}

}  // namespace kestrant::speech
