#pragma once

#include "speech/Grammar.h"
#include "speech/Phrases.h"

#include <QVarLengthArray>

#include <optional>
#include <vector>

namespace kestrant::speech {

/// Neighbouring atoms that agree, and what is known of how sure they are.
struct Chain {
    int begin = 0;
    int end = 0;
    Meaning meaning;
    std::optional<Meaning> until;
    QVarLengthArray<PhrasePart, 8> parts;
    int atoms = 0;
    bool isClear = false;
    bool hasRoomWord = false;
    bool hasOpening = false;
    bool hasLead = false;
    bool isLed = false;
    bool hasFrom = false;
    /// Begins with "de", which makes a time a part of the title unless it is a span.
    bool isGenitive = false;
    bool isAmbiguous = false;
    /// The last words are a time, behind which a zone may stand.
    bool endsWithTime = false;
    bool endsWithNumber = false;
    bool isBareTime = false;
    bool isBareDay = false;
    /// Begins with a number that is nothing by itself.
    bool isLoose = false;
};

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
    [[nodiscard]] bool isBehindOther(const Chain& chain) const;
    [[nodiscard]] bool isRefused(int i) const { return refused_[static_cast<std::size_t>(i)]; }

    const Tokens& tokens_;
    const Senses& senses_;
    const std::vector<bool>& refused_;
};

}  // namespace kestrant::speech
