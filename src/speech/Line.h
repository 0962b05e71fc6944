#pragma once

#include "speech/Meaning.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>

#include <cstdint>
#include <optional>
#include <vector>

namespace kestrant::speech {

/// A part of a text, counted in UTF-16 units.
struct TextRange {
    qsizetype start = 0;
    qsizetype length = 0;

    [[nodiscard]] qsizetype end() const { return start + length; }
    [[nodiscard]] bool overlaps(const TextRange& other) const {
        return start < other.end() && other.start < end();
    }
    bool operator==(const TextRange&) const = default;
};

/// Words of a line that mean something.
struct Piece {
    enum class Kind : std::uint8_t {
        /// A day, or a day and a time ("tomorrow", "tonight", "in 2 hours"), or a span of days.
        day,
        /// A time of day, or a span of them.
        time,
        /// "every monday", "until June".
        repeat,
        /// "JST", "London time".
        zone,
        priority,
        /// "#Groceries".
        list,
        flag,
        /// An address of the web.
        link,
        /// " // " and all that follows.
        note,
        /// Only of events: "at Cafe Luz".
        place,
        /// "30 min before".
        alert,
    };

    Kind kind = Kind::day;
    /// With the words that lead to it: "by friday".
    TextRange range;

    bool operator==(const Piece&) const = default;
};

/// When to be reminded.
struct Alert {
    /// Before the time.
    int minutesBefore = 0;
    /// Instead: this time on the day so many days before.
    std::optional<QTime> time;
    int daysBefore = 0;

    bool operator==(const Alert&) const = default;
};

/// What a line says.
struct Line {
    /// The line without what was understood.
    QString title;
    std::optional<QDate> day;
    /// Only with a day.
    std::optional<QTime> time;
    /// The last day, included, of a span; the same day for times on one day.
    std::optional<QDate> endDay;
    /// Only with a time.
    std::optional<QTime> endTime;
    /// The time as it is typed, in the zone that is named beside it; `time` is the person's own.
    std::optional<QTime> timeInZone;
    /// The words for that zone: "JST".
    QString zone;
    /// The value of an RRULE; empty for none. The day is its first date.
    QString rule;
    /// 1 high, 5 normal, 9 low.
    std::optional<int> priority;
    /// The place of the named list among the known ones.
    std::optional<std::size_t> list;
    /// A list that is named and not known.
    QString newList;
    bool isFlagged = false;
    QString link;
    QString note;
    QString place;
    std::optional<Alert> alert;
    /// What was understood, in the order of the line.
    std::vector<Piece> pieces;
    /// What may be meant: to be read with these words accepted. They were left in the title; with a rule
    /// they were understood as dates that do not go on.
    struct Offer {
        TextRange range;
        QDate day;
        std::optional<QTime> time;
        QString rule;
    };
    std::vector<Offer> offers;
};

enum class Purpose : std::uint8_t {
    /// Due at the start of a span, or at its end behind "by".
    reminder,
    /// Has a place and a length ("for 2 hours").
    event,
};

struct Context {
    Present present;
    Purpose purpose = Purpose::reminder;
    /// The titles of the lists that can be named.
    QStringList lists;
};

/// Reads a line as people type it: a title with a day, a time, a repetition and more in it. Words that could
/// as well belong to the title are left there: "may", "read 1984", "Sunday’s paper", anything in quotation
/// marks. Of several days the one of which most is said counts, else the last.
///
/// A day without a year is the next one, today included; a weekday by its name alone is never today; a time
/// without a day is the next one. Weeks begin on Monday; "next week" and "next month" mean their first day.
/// Several weekdays without a word for repetition are the next one of each, and going on is offered.
/// A bare hour is that of the day (1 to 7 are in the afternoon), unless words like "morning" say otherwise.
///
/// Words in the ranges that the person has `refused` stay in the title; those of an offer that are `accepted`
/// are understood. Linear in the length of the line. Thread: any.
[[nodiscard]] Line readLine(const QString& line, const Context& context,
                            const std::vector<TextRange>& refused = {},
                            const std::vector<TextRange>& accepted = {});

}  // namespace kestrant::speech
