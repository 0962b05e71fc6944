#include "eventkit/icalendar/DateValue.h"

#include "eventkit/icalendar/TimeZoneText.h"

#include <QHash>
#include <QTimeZone>

#include <algorithm>
#include <chrono>

namespace kestrant::icalendar {
namespace {

/// An IANA name at the end of a text such as "/vendor.example/20260101/Europe/Paris".
std::optional<QByteArray> ianaNameIn(const QByteArray& text) {
    if (text == "UTC" || text == "Z")
        return "UTC";
    qsizetype start = 0;
    while (start >= 0 && start < text.size()) {
        const QByteArray candidate = text.sliced(start);
        if (QTimeZone::isTimeZoneIdAvailable(candidate))
            return candidate;
        const qsizetype slash = text.indexOf('/', start);
        start = slash < 0 ? -1 : slash + 1;
    }
    return std::nullopt;
}

std::optional<QByteArray> standardZoneNamed(const QByteArray& identifier) {
    static thread_local QHash<QByteArray, QByteArray> known;  // empty: none
    const auto found = known.constFind(identifier);
    if (found != known.cend())
        return found->isEmpty() ? std::nullopt : std::optional(*found);
    auto zone = ianaNameIn(identifier);
    if (!zone) {
        const QByteArray windows = QTimeZone::windowsIdToDefaultIanaId(identifier);
        if (!windows.isEmpty())
            zone = windows;
    }
    known.insert(identifier, zone.value_or(QByteArray()));
    return zone;
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

std::optional<QByteArray> zoneNamed(const QByteArray& zoneIdentifier, const Document& document, QDate day) {
    if (auto zone = standardZoneNamed(zoneIdentifier))
        return zone;
    for (const ComponentView& definition : document.components("VTIMEZONE")) {
        const auto identifier = definition.property("TZID");
        if (!identifier || identifier->value != zoneIdentifier)
            continue;
        const auto location = definition.property("X-LIC-LOCATION");
        const auto zone = location ? standardZoneNamed(location->value) : std::nullopt;
        return zone ? zone : zoneDescribedBy(definition, day);
    }
    return std::nullopt;
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
        result.timeZone = "UTC";
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
            date->timeZone = zoneNamed(*identifier, document, date->date());
    }
    return date;
}

std::optional<Instant> readInstant(const std::optional<Property>& property, const Document& document,
                                   const ZoneCalendar& local) {
    const auto date = property ? readDate(*property, document) : std::nullopt;
    return date ? calendarOf(*date, local).instantFrom(*date) : std::nullopt;
}

ZoneCalendar calendarOf(const DateComponents& date, const ZoneCalendar& local) {
    if (!date.timeZone)
        return local;
    static thread_local QHash<QByteArray, ZoneCalendar> known;
    const auto found = known.constFind(*date.timeZone);
    if (found != known.cend())
        return *found;
    const auto zone = timeZoneFromIdentifier(*date.timeZone);
    return zone ? *known.insert(*date.timeZone, ZoneCalendar(*zone)) : local;
}

LocalTime localTimeOf(const DateComponents& date) {
    return {date.date(), date.includesTime() ? date.time() : QTime(0, 0)};
}

LocalTime localTimeIn(const DateComponents& anchor, const DateComponents& date, const ZoneCalendar& local) {
    if (!date.includesTime() || !anchor.includesTime())
        return {date.date(), anchor.includesTime() ? anchor.time() : QTime(0, 0)};
    if (date.timeZone == anchor.timeZone)
        return localTimeOf(date);
    const ZoneCalendar zone = calendarOf(anchor, local);
    const Instant instant = calendarOf(date, local).instantAt(date.date(), date.time());
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
    if (date.timeZone == QByteArray("UTC")) {
        property.value += 'Z';
    } else if (oldZone && zoneNamed(*oldZone, document, date.date()) == date.timeZone) {
        property.parameters.push_back({"TZID", *oldZone});
    } else if (date.timeZone) {
        property.parameters.push_back({"TZID", *date.timeZone});
    }
}

QByteArray utcText(Instant instant) {
    const auto second = std::chrono::floor<std::chrono::seconds>(instant);
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const QDate date = QDate(1970, 1, 1).addDays(day.time_since_epoch().count());
    const QTime time = QTime(0, 0).addSecs(static_cast<int>((second - day).count()));
    return dayText(date) + time.toString(QStringLiteral("'T'HHmmss'Z'")).toLatin1();
}

std::optional<DurationValue> readDuration(QByteArrayView text) {
    text = text.trimmed();
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
