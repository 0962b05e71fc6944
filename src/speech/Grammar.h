#pragma once

#include "speech/Meaning.h"
#include "speech/Tokens.h"
#include "speech/Vocabulary.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kestrant::speech {

/// For the fields of a meaning, which are bytes.
template <typename Number>
std::uint8_t small(Number value) {
    return static_cast<std::uint8_t>(value);
}

/// Days of the week as bits from Monday on.
inline constexpr std::uint8_t workingDays = 0b0011111;
inline constexpr std::uint8_t weekend = 0b1100000;

/// Words that belong together and say one thing about a moment.
struct Atom {
    /// What makes of the words more than a part of the title.
    enum class Need : std::uint8_t {
        nothing,
        /// Room around them: an end of the line, punctuation, a small word behind them or a lead.
        room,
        /// The beginning of the line or a lead.
        opening,
        /// Clearer words beside them: they have other meanings, too.
        help,
    };

    int end = 0;
    Meaning meaning;
    /// The end of a span.
    std::optional<Meaning> until;
    Need need = Need::nothing;
    /// The leads (see Lead) that may stand before it, and those that give it room where it needs help.
    int leads = leadsToDay;
    int helpedBy = 0;
    /// Only beside a repetition, or only directly behind a time.
    bool isOfRule = false;
    bool isOfTime = false;
    /// Within a phrase only behind a lead.
    bool isOfLead = false;
    /// A number alone; a span that begins with one.
    bool isBare = false;
    bool beginsBare = false;
    /// Months of this name are other words as well.
    bool isAmbiguous = false;
};

/// An amount of time in words.
struct SpokenLength {
    int end = 0;
    Length length;
    bool isWorkdays = false;
    /// In whole weeks.
    bool isWeeks = false;
};

/// Reads the words of one line, at any place of it, each in a bounded number of steps.
class Grammar {
  public:
    Grammar(const Tokens& tokens, const Senses& senses, const Present& present);

    /// Everything that begins with the i-th token.
    [[nodiscard]] std::vector<Atom> atoms(int i) const;
    [[nodiscard]] std::optional<SpokenLength> length(int i) const;
    /// A time of day, at the i-th token; also a bare hour.
    [[nodiscard]] std::optional<Atom> clock(int i) const;

    [[nodiscard]] const Tokens& tokens() const { return tokens_; }
    [[nodiscard]] const Senses& senses() const { return senses_; }
    [[nodiscard]] const Present& present() const { return present_; }

    /// A number in digits or words, below 10,000.
    struct Number {
        int value = 0;
        int end = 0;
        int digits = 0;
    };
    [[nodiscard]] std::optional<Number> number(int i) const;

  private:
    struct Span {
        QDate first;
        QDate last;
        int end = 0;
        Unit unit = Unit::month;
        bool isCurrent = false;
    };
    /// "first and third Monday", "last working day", "15th".
    struct NthDays {
        /// Bits from the first on; bit 0 is the last one.
        std::uint32_t nths = 0;
        /// Of which days of the week; of all days where there are none.
        std::uint8_t weekdays = 0;
        /// Of weeks, weekends or fortnights instead.
        std::optional<Unit> span;
        /// A day is named, not only a number.
        bool isNamed = false;
        int end = 0;

        [[nodiscard]] Rule rule() const;
    };
    using Atoms = std::vector<Atom>;

    void addDays(int i, Atoms& result) const;
    void addNamedDays(int i, Atoms& result) const;
    void addWeekdays(int i, Atoms& result) const;
    void addSpans(int i, Atoms& result) const;
    void addPlacesInSpans(int i, Atoms& result) const;
    void addDates(int i, Atoms& result) const;
    void addNumericDates(int i, Atoms& result) const;
    void addMonths(int i, Atoms& result) const;
    void addDayRanges(int i, Atoms& result) const;
    void addLengths(int i, Atoms& result) const;
    void addAroundDays(int i, Atoms& result) const;
    void addFeasts(int i, Atoms& result) const;
    void addTimes(int i, Atoms& result) const;
    void addTimeRanges(int i, Atoms& result) const;
    void addPartEdges(int i, Atoms& result) const;
    void addZone(int i, Atoms& result) const;
    void addRules(int i, Atoms& result) const;
    void addAdverbs(int i, Atoms& result) const;
    void addEvery(int i, Atoms& result) const;
    void addNthOfEvery(int i, Atoms& result) const;
    void addListedDays(int i, Atoms& result) const;
    void addRuleTails(int i, Atoms& result) const;

    [[nodiscard]] std::optional<SpokenLength> lengthInDigits(int i) const;
    [[nodiscard]] std::optional<Number> amountInQuarters(int i) const;
    [[nodiscard]] std::optional<Number> dayOfMonth(int i) const;
    [[nodiscard]] std::optional<Number> ordinal(int i) const;
    [[nodiscard]] std::optional<Number> year(int i) const;
    [[nodiscard]] std::optional<Atom> clockInDigits(int i) const;
    [[nodiscard]] std::optional<Atom> clockInWords(int i) const;
    [[nodiscard]] std::optional<Atom> withSpokenMinutes(const Number& hour) const;
    [[nodiscard]] const Found* hourAt(int i) const;
    [[nodiscard]] int endOfHours(int i) const;
    [[nodiscard]] Atom hourAlone(int end, const Number& hour) const;
    [[nodiscard]] Atom withMinutes(Atom atom, int hourEnd) const;
    [[nodiscard]] const Found* unitAt(int i) const;
    [[nodiscard]] int daysOfUnit(int i) const;
    [[nodiscard]] std::optional<Span> span(int i) const;
    [[nodiscard]] Span spanOf(Unit unit, int ahead, int end) const;
    [[nodiscard]] std::optional<NthDays> nthDays(int i) const;
    [[nodiscard]] Meaning placeIn(const Span& span, const NthDays& nth) const;
    [[nodiscard]] std::optional<Atom> dayAt(int i) const;
    [[nodiscard]] Meaning after(const SpokenLength& length, QDate day, int sign = 1) const;
    [[nodiscard]] Meaning fromNow(const SpokenLength& length) const;
    [[nodiscard]] int joint(int i, bool isBetween) const;
    [[nodiscard]] std::uint8_t weekdayList(int i, int& end, Sense sense) const;

    const Tokens& tokens_;
    const Senses& senses_;
    const Present& present_;
    QDate today_;
};

}  // namespace kestrant::speech
