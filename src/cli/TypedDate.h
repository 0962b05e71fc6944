#pragma once

#include "foundation/Instant.h"
#include "foundation/TimeZone.h"
#include "reminders/quickadd/QuickAddParser.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <optional>
#include <utility>

namespace kestrant {

/// A date as it was typed.
struct TypedDate {
    /// For a date alone, the start of its day.
    Instant instant;
    bool includesTime = false;
    /// The local time as typed; the clock may skip it.
    std::optional<std::pair<QDate, QTime>> local;

    /// Whether it is later, be it only by what was typed, where the clock skips one of the two.
    [[nodiscard]] bool isAfter(const TypedDate& other) const {
        return instant > other.instant || (local && other.local && *local > *other.local);
    }
};

/// Reads "2026-03-27", with "T14:30", " 14:30" or seconds behind it for a local time of `zone`, or a
/// date-time with "Z" or an offset. Absent for anything else.
[[nodiscard]] std::optional<TypedDate> readTypedDate(const QString& typed, const TimeZone& zone);

/// Reads the same, or a date in words: "tomorrow 9am", "vendredi prochain". Absent when there is more in the
/// text than that.
[[nodiscard]] std::optional<TypedDate> readDateInWords(const QString& typed, const QuickAddContext& context);

/// The date in a line that was read; absent when there is none.
[[nodiscard]] std::optional<TypedDate> dateOf(const QuickAddLine& line, const TimeZone& zone);

}  // namespace kestrant
