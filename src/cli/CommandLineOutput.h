#pragma once

#include "eventkit/EKTypes.h"
#include "foundation/Text.h"
#include "foundation/ZoneCalendar.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kestrant {

/// What printed dates and words depend on.
struct OutputContext {
    Instant now;
    ZoneCalendar calendar;
    Language language = Language::english;
    /// Names days and months.
    QLocale dates;
};

/// The cells of a table, row by row.
using TextRows = std::vector<QStringList>;

/// A text from a file, unable to move the cursor or to break a line.
[[nodiscard]] QString printable(QString text);
/// A line for each row, without its end, the cells in columns as wide as a terminal needs; columns without
/// any text are left out.
[[nodiscard]] QStringList alignedLines(const TextRows& rows);
/// The same as one text.
[[nodiscard]] QString alignedText(const TextRows& rows);

/// Null where there is none.
[[nodiscard]] QJsonValue instantAsJson(const std::optional<Instant>& instant);
[[nodiscard]] QJsonValue textAsJson(const std::optional<QString>& value);

/// Lists of reminders or calendars of events.
[[nodiscard]] QJsonArray calendarsAsJson(const std::vector<EKCalendar>& calendars);
/// One line for each: title, identifier, whether it is read-only. `type` decides what it says without any.
[[nodiscard]] QString calendarsAsTable(const std::vector<EKCalendar>& calendars, EKEntityType type,
                                       Language language);

}  // namespace kestrant
