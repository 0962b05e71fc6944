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
    if (i >= tokens_.size() ||
        (senses_.begin(i) == senses_.end(i) && !tokens_.isKind(i, Kind::number) &&
         !tokens_.isKind(i, Kind::sign) && !tokens_[i].isCapital && !tokens_.isGlued(i)))
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
