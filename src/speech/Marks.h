#pragma once

#include "speech/Grammar.h"
#include "speech/Line.h"

#include <QStringList>

#include <vector>

namespace kestrant::speech {

/// Finds what is marked by signs, whatever it says about time: lists, priorities, the flag, a link, a note.
/// Puts it into `result`, and its tokens into `taken`. Tokens that are taken already are passed over.
void readMarks(const QString& line, const Tokens& tokens, const Senses& senses, const Context& context,
               std::vector<bool>& taken, Line& result);

/// An alert in words. Absent when there is none.
struct SpokenAlert {
    Alert alert;
    int begin = 0;
    int end = 0;
    /// It says that it is one: "remind me".
    bool isNamed = false;
};
[[nodiscard]] std::optional<SpokenAlert> findAlert(const Grammar& grammar, const std::vector<bool>& taken);

/// The place of an event as a range of tokens: with its lead from `begin`, its own words from `name`.
struct SpokenPlace {
    int begin = 0;
    int name = 0;
    int end = 0;
};
/// Looks in what is not taken. `phraseEnd` is behind the last words that say when; 0 without.
[[nodiscard]] std::optional<SpokenPlace> findPlace(const Tokens& tokens, const Senses& senses,
                                                   const std::vector<bool>& taken, int phraseEnd);

/// The text of a line without these ranges, which are in order, and without the punctuation that hung on
/// them. Empty when nothing but punctuation is left.
[[nodiscard]] QString withoutRanges(const QString& line, const std::vector<TextRange>& ranges);

}  // namespace kestrant::speech
