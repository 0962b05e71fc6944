#pragma once

#include "speech/Chains.h"

#include <vector>

namespace kestrant::speech {

/// Decides whether a chain of words that could say when does so where it stands in its line. Everything must
/// outlive it.
class PhraseJudge {
  public:
    /// `refused` tells for each token whether the person has said that it is part of no phrase.
    PhraseJudge(const Tokens& tokens, const Senses& senses, const std::vector<bool>& refused)
        : tokens_(tokens)
        , senses_(senses)
        , refused_(refused) {}

    /// Whether it is meant as a day or a time. `follows`: it stands right behind another phrase.
    [[nodiscard]] bool isReal(const Chain& chain, bool follows) const;
    /// Whether the word before makes the phrase a part of the title.
    [[nodiscard]] bool isForbidden(const Chain& chain) const;
    /// Whether a word about time that touches the phrase stays unread: then it may be read wrongly.
    [[nodiscard]] bool leavesTimeWords(const Chain& chain) const;

  private:
    [[nodiscard]] bool isAtBegin(int i, bool follows) const;
    [[nodiscard]] bool isBlockedBy(const Chain& chain) const;
    [[nodiscard]] bool isVerse(const Chain& chain) const;
    [[nodiscard]] bool isPartOfWork(const Chain& chain) const;
    [[nodiscard]] bool leavesBehind(const Chain& chain) const;
    [[nodiscard]] bool leavesBefore(const Chain& chain) const;
    [[nodiscard]] bool isBehindOther(const Chain& chain) const;
    [[nodiscard]] bool isRefused(int i) const { return refused_[static_cast<std::size_t>(i)]; }

    const Tokens& tokens_;
    const Senses& senses_;
    const std::vector<bool>& refused_;
};

}  // namespace kestrant::speech
