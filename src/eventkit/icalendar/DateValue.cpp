#include "eventkit/icalendar/DateValue.h"

#include "eventkit/icalendar/TimeZoneText.h"

#include <algorithm>
#include <chrono>

namespace kestrant::icalendar {
namespace {

/// A longer name is none.
constexpr qsizetype longestName = 255;

/// The zone whose name a vendor has put a prefix before: "/vendor.example/20260101/Europe/Paris".
std::optional<TimeZone> zoneAfterPrefix(const QByteArray& identifier) {
    for (qsizetype slash = identifier.indexOf('/'); slash >= 0; slash = identifier.indexOf('/', slash + 1)) {
        if (auto zone = TimeZone::named(identifier.sliced(slash + 1)))
            return zone;
    }
    return std::nullopt;
}

std::optional<int> digits(QByteArrayView text, qsizetype from, qsizetype length) {
    int value = 0;
    for (const char c : text.sliced(from, length)) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

/// No duration is longer than all years of the calendar.
constexpr qint64 longestDays = 3'652'059;

QByteArray dayText(QDate day) {
    return day.toString(QStringLiteral("yyyyMMdd")).toLatin1();
}

}  // namespace

std::optional<TimeZone> zoneNamed(const QByteArray& zoneIdentifier, const Document& document) {
    const QByteArray name = zoneIdentifier.trimmed();
    if (name.size() > longestName)
        return document.definedZone(name);
    auto known = TimeZone::named(name);
    if (!known && name.startsWith('/'))
        known = zoneAfterPrefix(name);
    // "UTC+01:00" says less than a definition.
    const bool isDistance = name.startsWith("UTC+") || name.startsWith("UTC-");
    if (known && !isDistance)
        return known;
    if (auto defined = document.definedZone(name))
        return defined;
    return known ? known : zoneAfterPrefix(name);
}

std::optional<DateComponents> readDate(const Property& property, const Document& document) {
    return readDate(property.value, property, document);
}

std::optional<DateComponents> readLocalDate(QByteArrayView value) {
    QByteArray text = value.trimmed().toByteArray().toUpper();
    text.replace("-", "").replace(":", "");
    const bool utc = text.endsWith('Z');
    if (utc)
        text.chop(1);
    const bool timed = text.size() == 15 && text[8] == 'T';
    if (text.size() != 8 && !timed)
        return std::nullopt;
    const auto year = digits(text, 0, 4);
    const auto month = digits(text, 4, 2);
    const auto day = digits(text, 6, 2);
    if (!year || !month || !day || !QDate::isValid(*year, *month, *day))
        return std::nullopt;
    DateComponents result{.year = year, .month = month, .day = day};
    if (!timed)
        return result;
    const auto hour = digits(text, 9, 2);
    const auto minute = digits(text, 11, 2);
    const auto second = digits(text, 13, 2);
    if (!hour || !minute || !second || !QTime::isValid(*hour, *minute, std::min(*second, 59)) || *second > 60)
        return std::nullopt;
    result.hour = hour;
    result.minute = minute;
    result.second = std::min(*second, 59);
    if (utc)
        result.timeZone = TimeZone();
    return result;
}

std::optional<DateComponents> readDate(QByteArrayView value, const Property& property,
                                       const Document& document) {
    auto date = readLocalDate(value);
    if (!date || !date->includesTime())
        return date;
    if (property.parameter("VALUE") == QByteArray("DATE"))
        return DateComponents::fromDate(date->date());
    if (!date->timeZone) {
        if (const auto identifier = property.parameter("TZID"))
            date->timeZone = zoneNamed(*identifier, document);
    }
    return date;
}

std::optional<Instant> readInstant(const std::optional<Property>& property, const Document& document,
                                   const TimeZone& local) {
    const auto date = property ? readDate(*property, document) : std::nullopt;
    return date ? date->timeZone.value_or(local).instantFrom(*date) : std::nullopt;
}

LocalTime localTimeOf(const DateComponents& date) {
    return {date.date(), date.includesTime() ? date.time() : QTime(0, 0)};
}

LocalTime localTimeIn(const DateComponents& anchor, const DateComponents& date, const TimeZone& local) {
    if (!date.includesTime() || !anchor.includesTime())
        return {date.date(), anchor.includesTime() ? anchor.time() : QTime(0, 0)};
    if (date.timeZone == anchor.timeZone)
        return localTimeOf(date);
    const TimeZone zone = anchor.timeZone.value_or(local);
    const Instant instant = date.timeZone.value_or(local).instantAt(date.date(), date.time());
    return {zone.dayOf(instant), zone.timeOf(instant)};
}

void writeDate(Property& property, const DateComponents& date, const Document& document) {
    const auto oldZone = property.parameter("TZID");
    property.removeParameter("VALUE");
    property.removeParameter("TZID");
    property.value = dayText(date.date());
    if (!date.includesTime()) {
        property.parameters.push_back({"VALUE", "DATE"});
        return;
    }
    property.value += date.time().toString(QStringLiteral("'T'HHmmss")).toLatin1();
    if (oldZone && zoneNamed(*oldZone, document) == date.timeZone)
        property.parameters.push_back({"TZID", *oldZone});
    else if (date.timeZone && date.timeZone->isUtc())
        property.value += 'Z';
    else if (date.timeZone)
        property.parameters.push_back({"TZID", date.timeZone->id()});
}

QByteArray utcText(Instant instant) {
    const auto second = std::chrono::floor<std::chrono::seconds>(instant);
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const QDate date = QDate(1970, 1, 1).addDays(day.time_since_epoch().count());
    const QTime time = QTime(0, 0).addSecs(static_cast<int>((second - day).count()));
    return dayText(date) + time.toString(QStringLiteral("'T'HHmmss'Z'")).toLatin1();
}

std::optional<DurationValue> readDuration(QByteArrayView value) {
    const QByteArray upper = value.trimmed().toByteArray().toUpper();
    QByteArrayView text = upper;
    int sign = 1;
    if (text.startsWith('-') || text.startsWith('+')) {
        sign = text.front() == '-' ? -1 : 1;
        text = text.sliced(1);
    }
    if (!text.startsWith('P') || text.size() < 3)
        return std::nullopt;
    DurationValue result;
    qint64 days = 0;
    bool inTime = false;
    qint64 number = -1;
    for (const char c : text.sliced(1)) {
        if (c >= '0' && c <= '9') {
            number = std::max<qint64>(number, 0) * 10 + (c - '0');
            if (number > 1'000'000'000)
                return std::nullopt;
        } else if (c == 'T' && !inTime && number < 0) {
            inTime = true;
        } else {
            if (number < 0)
                return std::nullopt;
            if (c == 'W' && !inTime)
                days += number * 7;
            else if (c == 'D' && !inTime)
                days += number;
            else if (c == 'H' && inTime)
                result.seconds += number * 3600;
            else if (c == 'M' && inTime)
                result.seconds += number * 60;
            else if (c == 'S' && inTime)
                result.seconds += number;
            else
                return std::nullopt;
            if (days > longestDays || result.seconds > longestDays * 86'400)
                return std::nullopt;
            number = -1;
        }
    }
    if (number >= 0)
        return std::nullopt;
    result.days = sign * static_cast<int>(days);
    result.seconds *= sign;
    return result;
}

QByteArray durationText(qint64 seconds) {
    QByteArray result = seconds < 0 ? "-P" : "P";
    seconds = std::abs(seconds);
    if (seconds != 0 && seconds % 86'400 == 0)
        return result + QByteArray::number(seconds / 86'400) + 'D';
    result += 'T';
    if (seconds != 0 && seconds % 3600 == 0)
        return result + QByteArray::number(seconds / 3600) + 'H';
    if (seconds != 0 && seconds % 60 == 0)
        return result + QByteArray::number(seconds / 60) + 'M';
    return result + QByteArray::number(seconds) + 'S';
}

}  // namespace kestrant::icalendar
