#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/ClockText.h"
#include "foundation/Text.h"
#include "foundation/TimeZone.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <optional>
#include <vector>

namespace kestrant {

/// Present, language and formats of what is printed.
struct OutputContext {
    Instant now;
    TimeZone zone;
    Language language = Language::english;
    /// Names days and months.
    QLocale dates;
    ClockHours hours = ClockHours::twentyFour;
    /// Columns of the terminal that is written to; absent when it is none.
    std::optional<int> lineWidth;
};

/// The cells of a table, row by row.
using TextRows = std::vector<QStringList>;

/// A line for each row, without its end, the cells in columns as wide as a terminal needs; columns without
/// any text are left out. `longColumns` may hold texts of any length: where the lines would be wider than the
/// terminal they are cut, and where they are not read at a terminal a very long text does not make the
/// column wider, but moves what follows it in its own line.
[[nodiscard]] QStringList alignedLines(const TextRows& rows, const std::vector<std::size_t>& longColumns = {},
                                       std::optional<int> lineWidth = {});
/// The same as one text.
[[nodiscard]] QString alignedText(const TextRows& rows, const std::vector<std::size_t>& longColumns = {},
                                  std::optional<int> lineWidth = {});

/// Null where there is none.
[[nodiscard]] QJsonValue instantAsJson(const std::optional<Instant>& instant);
[[nodiscard]] QJsonValue textAsJson(const std::optional<QString>& value);

/// Lists of reminders or calendars of events.
[[nodiscard]] QJsonArray calendarsAsJson(const std::vector<EKCalendar>& calendars);
/// One line for each: title, identifier, whether it is read-only. `type` decides what it says without any.
[[nodiscard]] QString calendarsAsTable(const std::vector<EKCalendar>& calendars, EKEntityType type,
                                       const OutputContext& context);

}  // namespace kestrant
