#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Instant.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"
#include "reminders/model/ReminderAlertSchedule.h"
#include "reminders/model/ReminderTask.h"
#include "speech/Line.h"

#include <QDate>
#include <QLocale>
#include <QString>
#include <QTime>

#include <optional>
#include <vector>

namespace kestrant {

using TextRange = speech::TextRange;
using QuickAddPiece = speech::Piece;

/// The meaning of a quick-add line for a reminder.
struct QuickAddLine {
    /// The line without what was understood.
    QString title;
    std::optional<QDate> day;
    /// Only with a day.
    std::optional<QTime> time;
    /// The time as it is typed, where a zone is named beside it.
    std::optional<QTime> timeInZone;
    QString zone;
    /// The line has an end as well, and so may be meant as an event.
    bool hasEnd = false;
    /// The day is its first date.
    std::optional<EKRecurrenceRule> rule;
    std::optional<NewReminderPriority> priority;
    /// The identifier of the list.
    std::optional<QString> listID;
    /// A list that is named and does not exist.
    QString newListTitle;
    bool isFlagged = false;
    QString url;
    QString notes;
    /// Only with a day.
    std::optional<ReminderAlertSchedule> alert;
    /// The pieces that were understood, in the order of the line.
    std::vector<QuickAddPiece> pieces;
    /// Words that may say when, left in the title until they are accepted; weekdays that may be meant
    /// every week.
    std::vector<speech::Line::Offer> offers;
};

/// The present, zone, customs and lists against which a line is read.
struct QuickAddContext {
    Instant now;
    TimeZone zone;
    /// Both languages are understood; this one decides where they differ, for instance whether a lone
    /// exclamation mark is one.
    Language language = Language::english;
    /// The lists that can be named.
    std::vector<ReminderList> lists;
    /// Decides whether 3/4 is in March or in April, and whether 5:30 may be in the afternoon; absent leaves
    /// that to the language.
    std::optional<QLocale> locale = {};
};

/// The customs of a place as a line is read by them.
[[nodiscard]] speech::Present presentFor(const QuickAddContext& context);

/// Reads a line as people type it; see speech::readLine().
[[nodiscard]] QuickAddLine parseQuickAdd(const QString& line, const QuickAddContext& context,
                                         const std::vector<TextRange>& refused = {},
                                         const std::vector<TextRange>& accepted = {});

}  // namespace kestrant
