#include "speech/PhraseJudge.h"

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
    const bool hasEnd = tokens_.isStop(chain.end) || isRefused(chain.end);
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
        if ((chain.meaning.monthDay != 0 && chain.meaning.month == 0))
            return hasRoomBehind;
        if (chain.meaning.minute >= 0 && !chain.meaning.hasDay())
            return hasRoomBehind || chain.isLed || (isAtBeginning && chain.meaning.minute >= 0);
        return isAtBeginning || hasRoomBehind || chain.isLed;
    }
    return isAtBeginning || chain.isLed || (chain.atoms > 1);
}

/// "Today by ..." is a title.
bool PhraseJudge::isBlockedBy(const Chain& chain) const {
    const int next = chain.end;
    return tokens_.isKind(next, Kind::word) && tokens_[next].text == u"by";
}

bool PhraseJudge::isForbidden(const Chain& chain) const {
    const int i = chain.begin;
    if (i == 0 || !tokens_.isKind(i - 1, Kind::word) || tokens_[i].gap == Gap::none)
        return isBehindOther(chain);
    const bool isTime = !chain.meaning.hasDay() && !chain.meaning.rule;
    if (isTime)
        return !chain.hasLead && (senses_.endsWith(i, Sense::forbidsClock) || isVerse(chain));
    if (chain.meaning.rule)
        return false;
    if (senses_.endsWith(i, Sense::ordinalEnding))
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

bool PhraseJudge::leavesTimeWords(const Chain& chain) const {
    const int next = chain.end;
    if (next < tokens_.size() && tokens_.isKind(next, Kind::word) && !isRefused(next)) {
        for (const Found* found = senses_.begin(next); found != senses_.end(next); ++found) {
            switch (found->word.sense) {
            case Sense::weekday:
            case Sense::month:
                if (!found->word.isShort ||
                    (found->word.sense == Sense::weekday && chain.meaning.weekday != 0))
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
                return true;
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
    }
    const int before = chain.begin - 1;
    if (before >= 0 && tokens_.isKind(before, Kind::word) && !isRefused(before)) {
        for (const Found* found = senses_.begin(before); found != senses_.end(before); ++found) {
            const Sense sense = found->word.sense;
            if (found->end == chain.begin &&
                ((sense == Sense::weekday && !found->word.isShort) ||
                 (sense == Sense::month && !found->word.isShort) || sense == Sense::today ||
                 (sense == Sense::next && !chain.hasLead)))
                return !isAtBegin(before, false) || sense != Sense::next;
        }
    }
    return false;
}

}  // namespace kestrant::speech
