#pragma once

#include <QString>
#include <QTime>

#include <vector>

namespace kestrant::quickadd {

/// A word, number or sign of a line.
struct Token {
    enum class Kind {
        /// Letters, with hyphens, apostrophes and full stops between them ("après-midi", "l’an", "a.m").
        word,
        /// "12".
        number,
        /// "3rd", "1er".
        ordinal,
        /// "17:30", "5:30pm", "9am": a time that says how it is meant; "2-4pm" is the first of the two.
        clock,
        /// "18h", "18h30", "14h-16h".
        clockOfHours,
        /// "10min", "3d": a number with its unit.
        quantity,
        /// "27/03", "3/27/2026", "2026-03-27", "27.03.2026".
        date,
        punctuation,
        /// Anything else, and everything in quotation marks and addresses.
        opaque,
    };

    Kind kind = Kind::opaque;
    qsizetype start = 0;
    qsizetype end = 0;
    /// A word in small letters without accents and with straight apostrophes; the unit of a quantity; "a" or
    /// "p" of a time that says so; a sign; the text of anything opaque as it stands.
    QString text;
    /// Of a number, an ordinal or a quantity; the hour of a time.
    int number = 0;
    int minute = 0;
    /// A time that says am, pm, or more than 12.
    bool isWholeDayClock = false;
    /// The parts of a date in their order; the year is 0 where there is none.
    int first = 0;
    int second = 0;
    int year = 0;
    /// "2026-03-27": year, month, day, whatever the language.
    bool isIsoDate = false;
};

/// In small letters, without accents, with straight apostrophes.
[[nodiscard]] QString normalized(const QString& text);

[[nodiscard]] std::vector<Token> tokenize(const QString& line);

}  // namespace kestrant::quickadd
