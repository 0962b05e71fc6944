#pragma once

#include "speech/Grammar.h"

#include <QVarLengthArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace kestrant::speech {

/// Words within a phrase that say one kind of thing.
struct PhrasePart {
    enum class Kind : std::uint8_t { day, time, repeat, zone };
    Kind kind = Kind::day;
    /// Behind its last token.
    int end = 0;
};

/// Neighbouring words of a line that together say when.
struct Phrase {
    /// Tokens, the last one excluded.
    int begin = 0;
    int end = 0;
    Meaning meaning;
    std::optional<Meaning> until;
    QVarLengthArray<PhrasePart, 8> parts;
    /// What is said is clear, or is clear where it stands.
    bool isTaken = false;
    /// Possible, and to be offered where it is not taken.
    bool isOffered = false;
};

/// Every phrase of the line in order, none overlapping another. `refused` and `accepted` tell for each token
/// whether the person has said that it is part of none, or part of one.
[[nodiscard]] std::vector<Phrase> findPhrases(const Grammar& grammar, const std::vector<bool>& refused,
                                              const std::vector<bool>& accepted);

}  // namespace kestrant::speech
