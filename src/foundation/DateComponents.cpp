#include "foundation/DateComponents.h"

#include <utility>

namespace kestrant {

QDate DateComponents::date() const {
    if (!year || !month || !day || *year < 1 || *year > 9999)
        return {};
    return {*year, *month, *day};
}

QTime DateComponents::time() const {
    if (!hour)
        return {};
    const int wholeSecond = second.value_or(0);
    // Clocks that do not count leap seconds read the 60th as the 59th (RFC 5545, 3.3.12).
    return {*hour, minute.value_or(0), wholeSecond == 60 ? 59 : wholeSecond};
}

DateComponents DateComponents::fromDate(QDate date) {
    return {.year = date.year(), .month = date.month(), .day = date.day()};
}

DateComponents DateComponents::fromDateTime(QDate date, QTime time, std::optional<TimeZone> zone) {
    return {.year = date.year(),
            .month = date.month(),
            .day = date.day(),
            .hour = time.hour(),
            .minute = time.minute(),
            .second = time.second(),
            .timeZone = std::move(zone)};
}

}  // namespace kestrant
