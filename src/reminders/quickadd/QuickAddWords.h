#pragma once

#include "reminders/quickadd/QuickAddDates.h"

#include <QString>

#include <optional>

namespace kestrant::quickadd {

// The vocabulary: English and French side by side, as normalized() gives words.

/// How much a word has to be helped by its neighbours to be what it looks like.
enum class Clarity {
    /// "friday", "avril".
    clear,
    /// A word of its own as well: "march", "fri", "sept". Needs the end of what it belongs to behind it.
    ambiguous,
    /// "sun", "mar", "sam": only beside a date or a time.
    unclear,
};

struct Named {
    /// Weekdays from Monday, months from January, both from 1.
    int number = 0;
    Clarity clarity = Clarity::clear;
};

[[nodiscard]] std::optional<Named> weekdayNamed(const QString& word);
[[nodiscard]] std::optional<Named> monthNamed(const QString& word);
[[nodiscard]] std::optional<DayPart> dayPartNamed(const QString& word);
/// "two", "quinze"; also "a" and "une".
[[nodiscard]] std::optional<int> numberNamed(const QString& word);

enum class Unit { minutes, hours, days, weeks, fortnights, months, years };
[[nodiscard]] std::optional<Unit> unitNamed(const QString& word);

/// Words that may follow a day without making it part of a name: "with", "chez".
[[nodiscard]] bool isConnector(const QString& word);
/// After these a day is none to do something on: "every monday", "depuis lundi", "black friday".
[[nodiscard]] bool forbidsDay(const QString& word);
/// After these "2h" is a length: "pendant 2h".
[[nodiscard]] bool forbidsHours(const QString& word);
/// After these "3:16" is a verse: "John 3:16".
[[nodiscard]] bool forbidsClock(const QString& word);

}  // namespace kestrant::quickadd
