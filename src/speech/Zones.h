#pragma once

#include "foundation/TimeZone.h"
#include "speech/Tokens.h"
#include "speech/Vocabulary.h"

#include <optional>

namespace kestrant::speech {

/// A time zone in words.
struct SpokenZone {
    TimeZone zone;
    /// Behind its last token.
    int end = 0;
};

/// The zone that is named at the i-th token: letters that stand for one distance from UTC ("JST", "UTC+2",
/// "Z"), a region ("Pacific time", "ET"), a city's time ("London time", "heure de Tokyo"). Letters with
/// several meanings ("CST", "IST") are none.
[[nodiscard]] std::optional<SpokenZone> zoneAt(const Tokens& tokens, const Senses& senses, int i);

}  // namespace kestrant::speech
