#include "speech/Phrases.h"

#include "speech/Chains.h"
#include "speech/PhraseJudge.h"

#include <algorithm>

namespace kestrant::speech {
namespace {

class PhraseFinder {
  public:
    PhraseFinder(const Grammar& grammar, const std::vector<bool>& refused, const std::vector<bool>& accepted)
        : tokens_(grammar.tokens())
        , senses_(grammar.senses())
        , accepted_(accepted)
        , chains_(grammar, refused)
        , judge_(tokens_, senses_, refused) {}

    std::vector<Phrase> find() {
        std::vector<Phrase> result;
        int lastEnd = 0;
        // Where a phrase ends of which words stay unread; what follows it is no surer.
        int unsureEnd = 0;
        for (int i = 0; i < tokens_.size();) {
            std::optional<Chain> found;
            if (tokens_.begins(i) && chains_.mayBegin(i))
                found = chains_.longest(i);
            if (!found) {
                ++i;
                continue;
            }
            const Chain& chain = *found;
            if (const int joined = chains_.endOfAlternatives(chain); joined != 0) {
                result.push_back({.begin = chain.begin, .end = joined, .meaning = chain.meaning});
                i = lastEnd = unsureEnd = joined;
                continue;
            }
            Phrase phrase{.begin = chain.begin,
                          .end = chain.end,
                          .meaning = chain.meaning,
                          .until = chain.until,
                          .parts = chain.parts};
            const bool isAccepted = isMarked(accepted_, chain.begin, chain.end);
            const bool isPossible =
                !chain.meaning.isPast && (chain.isClear || chain.hasRoomWord || chain.hasOpening);
            const bool follows =
                chain.begin > 0 && lastEnd == chain.begin && !result.empty() && result.back().isTaken;
            if (isPossible) {
                const bool isRest = chain.begin > 0 && unsureEnd == chain.begin;
                const bool isUnsure = judge_.leavesTimeWords(chain);
                phrase.isTaken = isAccepted || (judge_.isReal(chain, follows) && !judge_.isForbidden(chain) &&
                                                !isUnsure && !isRest);
                if (!phrase.isTaken && (isUnsure || isRest))
                    unsureEnd = chain.end;
                phrase.isOffered = !phrase.isTaken && !chain.isBareDay && !chain.isBareTime;
            }
            if (!isPossible && !chain.meaning.isPast) {
                // Nothing but latent words: what follows may be more.
                ++i;
                continue;
            }
            result.push_back(phrase);
            i = lastEnd = chain.end;
        }
        return result;
    }

  private:
    [[nodiscard]] static bool isMarked(const std::vector<bool>& marks, int begin, int end) {
        return std::any_of(marks.begin() + begin, marks.begin() + end, [](bool mark) { return mark; });
    }

    const Tokens& tokens_;
    const Senses& senses_;
    const std::vector<bool>& accepted_;
    ChainReader chains_;
    PhraseJudge judge_;
};

}  // namespace

std::vector<Phrase> findPhrases(const Grammar& grammar, const std::vector<bool>& refused,
                                const std::vector<bool>& accepted) {
    return PhraseFinder(grammar, refused, accepted).find();
}

}  // namespace kestrant::speech
