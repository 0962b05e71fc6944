#pragma once

#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderTask.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <optional>
#include <vector>

namespace kestrant {

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

/// Words of a quick-add line that mean something.
struct QuickAddPiece {
    enum class Kind {
        /// A day, or a day and a time ("tomorrow", "tonight", "in 2 hours").
        day,
        /// A time of day ("9am", "noon", "morning").
        time,
        /// "!", "!!", "!!!", "!high".
        priority,
        /// "#Groceries".
        list,
    };

    Kind kind = Kind::day;
    /// With the words that lead to it: "by friday".
    TextRange range;

    bool operator==(const QuickAddPiece&) const = default;
};

/// The meaning of a quick-add line.
struct QuickAddLine {
    /// The line without what was understood.
    QString title;
    std::optional<QDate> day;
    /// Only with a day.
    std::optional<QTime> time;
    std::optional<NewReminderPriority> priority;
    /// The identifier of the list.
    std::optional<QString> listID;
    /// The pieces that were understood, in the order of the line.
    std::vector<QuickAddPiece> pieces;
};

/// The present, zone, language and lists against which a line is read.
struct QuickAddContext {
    Instant now;
    TimeZone zone;
    /// Both languages are understood; this one decides where they differ: whether 3/4 is in March or in
    /// April, and whether a lone exclamation mark is one.
    Language language = Language::english;
    /// The lists that can be named.
    std::vector<ReminderList> lists;
};

/// Reads a line as people type it: a title with a day, a time, a priority and a list in it. Words that could
/// as well belong to the title are left there: "may", "mars", "read 1984", "Sunday’s paper", anything in
/// quotation marks, anything that repeats ("every monday"). Of several days (or times) the last one counts.
///
/// A day without a year is the next one, today included; a weekday by its name alone is never today; a time
/// without a day is the next one. Weeks begin on Monday; "next week" and "next month" mean their first day.
/// An hour of a twelve-hour clock without am and pm is that of the day (1 to 7 are in the afternoon), unless
/// words like "morning" say otherwise.
///
/// Text in the ranges that the person has `refused` stays in the title.
[[nodiscard]] QuickAddLine parseQuickAdd(const QString& line, const QuickAddContext& context,
                                         const std::vector<TextRange>& refused = {});

}  // namespace kestrant
