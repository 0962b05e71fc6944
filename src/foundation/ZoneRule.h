#pragma once

#include "foundation/TimeZone.h"

#include <QByteArrayView>

#include <optional>

namespace kestrant {

/// The clocks of a zone by a rule for every year, written as in TZ: "CET-1CEST,M3.5.0,M10.5.0/3" (POSIX, base
/// definitions 8.3; hours up to 167 as in RFC 8536, 3.3.1).
class ZoneRule {
  public:
    /// Absent for a text that does not begin with a name and a distance. What follows them and makes no sense
    /// is passed over; daylight time without dates is that of the United States.
    [[nodiscard]] static std::optional<ZoneRule> parse(QByteArrayView text);

    /// The zone whose clocks have always gone by the rule.
    [[nodiscard]] ZoneChanges zone() const;
    /// Adds the changes by the rule that come after those of `zone`.
    void continueZone(ZoneChanges& zone) const;

  private:
    /// A day of each year and the local time on it.
    struct Date {
        enum class Form { weekDay, dayWithoutLeapDay, day };
        Form form = Form::weekDay;
        int month = 1;
        /// Counted from 1; 5 is the last one.
        int week = 1;
        /// 0 is Sunday; otherwise the day of the year.
        int day = 0;
        int seconds = 7200;

        /// Seconds since 1970 by local time.
        [[nodiscard]] qint64 in(int year) const;
    };

    [[nodiscard]] static std::optional<Date> readDate(QByteArrayView& text);

    ZoneChange standard_;
    ZoneChange daylight_;
    /// Absent where the clocks are never changed.
    std::optional<Date> begin_;
    std::optional<Date> end_;
};

}  // namespace kestrant
