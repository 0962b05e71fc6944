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
    /// A repetition with its end, its days or its times behind it.
    bool hasRulePart = false;
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

/// Joins neighbouring atoms of a line to chains. Everything must outlive it.
class ChainReader {
  public:
    /// `refused` tells for each token whether the person has said that it is part of no phrase.
    ChainReader(const Grammar& grammar, const std::vector<bool>& refused);

    /// Whether the i-th token can be the first one of a chain.
    [[nodiscard]] bool mayBegin(int i) const;
    /// The chain that begins with the i-th token and says most.
    [[nodiscard]] std::optional<Chain> longest(int i);
    /// The end of "monday and tuesday", "8h ou 9h": where there are two, neither is meant. 0 where there is
    /// one.
    [[nodiscard]] int endOfAlternatives(const Chain& chain);

  private:
    /// A way from the end of one atom to the next.
    struct Passage {
        int at = 0;
        int leads = 0;
        bool isLead = false;
        /// A span must follow.
        bool isFrom = false;
    };

    /// Combinations are limited at each place, so that a line is read in linear time.
    [[nodiscard]] bool mayTry() { return ++tries_ <= 160; }
    const std::vector<Atom>& atomsAt(int i);
    void consider(const Chain& chain);
    [[nodiscard]] bool isGenitive(int i, int end) const;
    [[nodiscard]] std::vector<Passage> passages(int at, bool isFirst) const;
    void grow(const Chain& chain, int at, bool isFirst);
    void advance(const Chain& chain);
    [[nodiscard]] std::optional<Chain> joined(const Chain& chain, const Atom& atom,
                                              const Passage& passage) const;
    [[nodiscard]] bool isEnglish(int i, Sense sense) const;
    [[nodiscard]] bool mayTakeNumber(const Chain& chain, const Atom& atom) const;
    [[nodiscard]] bool hasMatchSoon(int weekday, int monthDay) const;
    void tryUntil(const Chain& chain);

    const Grammar& grammar_;
    const Tokens& tokens_;
    const Senses& senses_;
    const std::vector<bool>& refused_;
    std::vector<std::optional<std::vector<Atom>>> atoms_;
    /// Parts of names in which words about time say nothing.
    std::vector<bool> isName_;
    std::optional<Chain> best_;
    int tries_ = 0;
};

}  // namespace kestrant::speech
