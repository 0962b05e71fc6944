#include "speech/Chains.h"

#include <cstddef>
#include <vector>

namespace kestrant::speech {

using Gap = Token::Gap;
using Need = Atom::Need;

/// "monday to wednesday", "du vendredi 18h au dimanche 12h".
void ChainReader::tryUntil(const Chain& chain) {
    if (chain.until || chain.meaning.rule || chain.meaning.moment || chain.meaning.isPast ||
        (chain.isBareTime && !chain.hasFrom))
        return;
    int at = chain.end;
    bool isSign = false;
    if (tokens_.isSign(at, u'-') || tokens_.isSign(at, u'–') || tokens_.isSign(at, u'—')) {
        ++at;
        isSign = true;
    } else if (at < tokens_.size() && tokens_[at].gap == Gap::hyphen) {
        isSign = true;
    } else if (chain.hasFrom && senses_.has(at, Sense::and_)) {
        at = senses_.past(at, Sense::and_);
    } else if (const Found* range = senses_.find(at, Sense::range)) {
        at = range->end;
    } else {
        return;
    }
    at = senses_.past(at, Sense::the);
    struct End {
        Meaning meaning;
        int end;
        bool isClear;
        bool isBare;
    };
    std::vector<End> ends;
    const auto addEnd = [&](const Meaning& meaning, const Atom& atom) {
        const bool isClear =
            atom.need == Need::nothing || atom.need == Need::room || atom.need == Need::opening;
        if (!meaning.isPast && !meaning.rule && !meaning.moment && !atom.until && !atom.isOfRule &&
            !atom.isOfTime)
            ends.push_back({meaning, atom.end, isClear && !atom.isBare, atom.isBare});
    };
    if (at >= tokens_.size() || refused_[static_cast<std::size_t>(at)])
        return;
    for (const Atom& atom : atomsAt(at))
        addEnd(atom.meaning, atom);
    for (std::size_t k = 0, count = ends.size(); k < count; ++k) {
        for (const Passage& passage : passages(ends[k].end, false)) {
            if (passage.at >= tokens_.size())
                continue;
            for (const Atom& atom : atomsAt(passage.at)) {
                // "samedi 19"
                const bool isDay = atom.meaning.monthDay != 0 && ends[k].meaning.weekday != 0;
                if (!mayTry() || (passage.isLead && (atom.leads & passage.leads) == 0) ||
                    (atom.isBare && !isDay))
                    continue;
                if (const auto both = Meaning::joined(ends[k].meaning, atom.meaning, grammar_.present()))
                    addEnd(*both, atom);
            }
        }
    }
    for (const End& end : ends) {
        const bool areWeekdays = isSign && chain.meaning.weekday != 0 && end.meaning.weekday != 0;
        const bool areDays =
            chain.meaning.hasDay() && end.meaning.hasDay() && (end.isClear || chain.hasFrom || areWeekdays);
        const bool areTimes = chain.meaning.minute >= 0 && end.meaning.minute >= 0 && !end.meaning.hasDay() &&
                              (!isSign || end.isClear);
        const bool isDayTime =
            areDays && chain.meaning.hasTime() != end.meaning.hasTime() && end.meaning.minute < 0;
        // "9h au 14 rue Haute"
        const bool hasRoom = tokens_.isStop(end.end) || senses_.begin(end.end) != senses_.end(end.end);
        if ((!areDays && !areTimes) || isDayTime || !tokens_.ends(end.end) || (end.isBare && !hasRoom))
            continue;
        if (areDays && isSign && !tokens_.isGlued(chain.end) && chain.meaning.weekday == 0 &&
            chain.meaning.month == 0)
            continue;
        Chain next = chain;
        next.until = end.meaning;
        next.end = end.end;
        next.parts.push_back({next.parts.back().kind, end.end});
        ++next.atoms;
        next.isClear = next.isClear || chain.hasRoomWord || chain.hasFrom || end.isClear;
        consider(next);
        grow(next, next.end, false);
    }
}

/// "monday and tuesday", "8h ou 9h": where there are two, neither is meant.
int ChainReader::endOfAlternatives(const Chain& chain) {
    if (chain.until || chain.meaning.rule)
        return 0;
    const bool isJoined = senses_.has(chain.end, Sense::and_) || senses_.has(chain.end, Sense::or_) ||
                          tokens_.isSign(chain.end, u'&') ||
                          (tokens_.isSign(chain.end, u'/') && tokens_.isGlued(chain.end));
    if (!isJoined || senses_.past(chain.end + 1, Sense::the) >= tokens_.size())
        return 0;
    for (const Atom& atom : atomsAt(senses_.past(chain.end + 1, Sense::the))) {
        const bool isSameKind =
            (chain.meaning.hasDay() && atom.meaning.hasDay() &&
             (!atom.isBare || (atom.meaning.monthDay != 0 && chain.isBareDay)) && !chain.meaning.hasTime()) ||
            (chain.meaning.minute >= 0 && atom.meaning.minute >= 0 && !chain.meaning.hasDay());
        if (isSameKind && !atom.isOfRule && tokens_.ends(atom.end))
            return atom.end;
    }
    return 0;
}

}  // namespace kestrant::speech
