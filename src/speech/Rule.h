#pragma once

#include <QDate>
#include <QString>

#include <cstdint>

namespace kestrant::speech {

/// A length of time. Months and days are those of the calendar.
struct Length {
    int months = 0;
    int days = 0;
    qint64 minutes = 0;

    [[nodiscard]] bool isNothing() const { return months == 0 && days == 0 && minutes == 0; }
    Length& operator+=(const Length& other);
    [[nodiscard]] QDate addedTo(QDate day, int sign = 1) const {
        return day.addMonths(sign * months).addDays(sign * days);
    }
};

/// A repetition, as far as a line can say it (RFC 5545, 3.3.10).
struct Rule {
    enum class Frequency : std::uint8_t { none, hourly, daily, weekly, monthly, yearly };
    Frequency frequency = Frequency::none;
    int interval = 1;
    int count = 0;
    /// Bits from Monday on.
    std::uint8_t weekdays = 0;
    /// Which of these weekdays in the month, as bits 1 to 5; bit 0 is the last one. None for all.
    std::uint8_t nths = 0;
    /// Bits 1 to 31; bit 0 is the last day.
    std::uint32_t monthDays = 0;
    int month = 0;
    QDate until;
    /// The hours of the day, as bits, where there are several.
    std::uint32_t hours = 0;
    /// Days that are named once each, without a word for repetition: "mon and thu".
    bool isList = false;
    /// How long it goes on from its first date: "for 3 weeks".
    Length lasts;

    /// Takes over what is said behind it: an end, days, days that are left out. False where it does not fit.
    [[nodiscard]] bool extendWith(const Rule& tail);
    /// The value of an RRULE.
    [[nodiscard]] QString text() const;
};

}  // namespace kestrant::speech
