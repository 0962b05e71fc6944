#pragma once

#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/quickadd/QuickAddTokens.h"

#include <QDate>
#include <QTime>

#include <cstddef>
#include <optional>
#include <vector>

namespace kestrant::quickadd {

/// A part of the day, as "tonight" or "lundi matin" name it.
enum class DayPart { morning, afternoon, evening, night };
[[nodiscard]] QTime usualTime(DayPart part);

/// Words that say when, from one token up to before another.
struct Phrase {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::optional<QDate> day;
    std::optional<QTime> time;
    /// The hour is one of twelve, as far as the words tell.
    bool isOfTwelve = false;
    /// And where nothing else tells, it is that of the day.
    bool isVagueHour = false;
    std::optional<DayPart> part;
};

struct Present {
    Instant now;
    TimeZone zone;
    Language language = Language::english;

    [[nodiscard]] QDate today() const { return zone.dayOf(now); }
};

class Reading;

/// The longest phrase beginning with the i-th token that names a day. `followsPhrase` tells that another
/// phrase ends there, which makes more of a weekday than its name alone.
[[nodiscard]] std::optional<Phrase> findDay(const Reading& reading, std::size_t i, bool followsPhrase,
                                            const Present& present);
/// The longest that tells a time of day, or a length of time from now. `followsDay` helps words that would be
/// too little by themselves ("morning").
[[nodiscard]] std::optional<Phrase> findTime(const Reading& reading, std::size_t i, bool followsDay,
                                             const Present& present);

/// Every phrase of a line that says when, in order, none touching another. A phrase without a day tells a
/// time alone.
[[nodiscard]] std::vector<Phrase> findPhrases(const std::vector<Token>& tokens, const Present& present);

}  // namespace kestrant::quickadd
