#pragma once

#include "foundation/Text.h"
#include "speech/Tokens.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrant::speech {

/// What a word can be. The names are those of the language files.
enum class Sense : std::uint8_t {
    number,
    article,
    ordinal,
    ordinalEnding,
    fraction,
    fractionMark,
    weekday,
    weekdays,
    month,
    unit,
    part,
    clock,
    dayEnd,
    meridiem,
    oclock,
    ish,
    past,
    to,
    minus,
    today,
    todayPart,
    thisOne,
    coming,
    next,
    afterNext,
    last,
    former,
    ago,
    begin,
    middle,
    end,
    in,
    fromNow,
    inTime,
    before,
    after,
    eve,
    morrow,
    at,
    lead,
    from,
    between,
    of,
    the,
    and_,
    or_,
    range,
    until,
    duration,
    hedge,
    every,
    other,
    outOf,
    frequency,
    workdays,
    times,
    once,
    except,
    starting,
    spanEnd,
    feast,
    weekOut,
    connector,
    forbidsDay,
    forbidsClock,
    determiner,
    name,
    priority,
    priorityWord,
    flag,
    alert,
    place,
    dayBefore,
    verse,
    genitive,
    author,
    otherWord,
    company,
    priorityName,
    negation,
    work,
    zeroMinute,
    allDay,
    per,
    on,
    region,
    zoneTime,
    timeOf,
    count
};

/// Properties of leads, as bits: what they lead to, and what they add.
enum Lead : int {
    leadsToDay = 1,
    leadsToTime = 2,
    leadsToSpan = 4,
    leadsToPart = 8,
    isDeadline = 16,
    /// Words that are only half a date become one behind it ("on sat").
    isClear = 32,
    /// Ends with an article, behind which a number is a day of the month.
    hasArticle = 64,
};

/// Units of time in the order of the language files.
enum class Unit : std::uint8_t {
    minute,
    hour,
    day,
    week,
    fortnight,
    month,
    year,
    weekend,
    quarterYear,
    workday
};

/// A word or several with a meaning.
struct Word {
    Sense sense{};
    int value = 0;
    Language language{};
    /// Only together with something clearer, or in one piece with a number: "sat", "mar", "3d".
    bool isShort = false;
};

/// Words as they stand in a line.
struct Found {
    Word word;
    /// Behind the last token.
    int end = 0;
};

/// Everything that the tokens of one line can mean by themselves, in all languages.
class Senses {
  public:
    /// `language` decides where an accent that is left out makes two words of different languages one.
    Senses(const Tokens& tokens, Language language);

    [[nodiscard]] bool has(int i, Sense sense) const {
        return i >= 0 && index(i) < size_ &&
               (mask_[index(i)][index(sense) / 64] >> (index(sense) % 64) & 1) != 0;
    }
    /// The longest words with this sense that begin with the i-th token.
    [[nodiscard]] const Found* find(int i, Sense sense) const;
    /// All of them, the longest first; none behind the line's end.
    [[nodiscard]] const Found* begin(int i) const {
        return found_.data() + first_[std::min(index(i), size_)];
    }
    [[nodiscard]] const Found* end(int i) const {
        return found_.data() + first_[std::min(index(i) + 1, size_)];
    }
    /// Behind the words with this sense; where they would begin when they are not there.
    [[nodiscard]] int past(int i, Sense sense) const {
        const Found* found = find(i, sense);
        return found ? found->end : i;
    }
    /// Whether words with this sense end before the i-th token.
    [[nodiscard]] bool endsWith(int i, Sense sense) const;

  private:
    template <typename Value>
    static std::size_t index(Value value) {
        return static_cast<std::size_t>(value);
    }

    std::size_t size_ = 0;
    std::vector<Found> found_;
    std::vector<std::uint32_t> first_;
    std::vector<std::array<std::uint64_t, 2>> mask_;
};

/// The words of a language: a line for each sense with a value and words,
///
///     weekday 1: monday, tuesday, ...
///
/// the value counts on with each comma; "|" is between words of the same value, "_" stands for none. A "~"
/// behind the sense is for words that are short. Words are written as folded() gives them, with a blank for
/// hyphens and apostrophes. Values of leads are letters: D day, T time, S span, P part of the day, B
/// deadline, C clear, A article.
extern const std::string_view englishWords;
extern const std::string_view frenchWords;

}  // namespace kestrant::speech
