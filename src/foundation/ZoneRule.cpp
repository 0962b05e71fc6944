#include "foundation/ZoneRule.h"

#include <QDate>

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant {
namespace {

constexpr qint64 unixEpochJulianDay = 2440588;
constexpr qint64 secondsPerDay = 86'400;
/// Clocks were not changed earlier.
constexpr int firstYear = 1900;
/// The changes of all years before it are written out.
constexpr int firstRepeatedYear = 2038;
/// After so many years the days of the week are the same again.
constexpr int cycle = 28;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Takes a character from the front.
bool accept(QByteArrayView& text, char c) {
    if (!text.startsWith(c))
        return false;
    text = text.sliced(1);
    return true;
}

/// Takes a number from the front; absent where there is none or it is larger than `most`.
std::optional<int> number(QByteArrayView& text, int most) {
    if (text.isEmpty() || !isDigit(text.front()))
        return std::nullopt;
    int value = 0;
    while (!text.isEmpty() && isDigit(text.front())) {
        value = std::min(value * 10 + (text.front() - '0'), 100'000);
        text = text.sliced(1);
    }
    return value <= most ? std::optional(value) : std::nullopt;
}

/// "CET" or "<+0530>".
std::optional<QByteArray> name(QByteArrayView& text) {
    const bool isQuoted = accept(text, '<');
    qsizetype size = 0;
    while (size < text.size() &&
           (isLetter(text[size]) ||
            (isQuoted && (isDigit(text[size]) || text[size] == '+' || text[size] == '-'))))
        ++size;
    const QByteArray result = text.first(size).toByteArray();
    text = text.sliced(size);
    if (size < 3 || (isQuoted && !accept(text, '>')))
        return std::nullopt;
    return result;
}

/// "3", "-03:30" or "+01:00:00" in seconds.
std::optional<int> time(QByteArrayView& text, int mostHours) {
    const bool isNegative = accept(text, '-');
    if (!isNegative)
        accept(text, '+');
    const auto hours = number(text, mostHours);
    if (!hours)
        return std::nullopt;
    int seconds = *hours * 3600;
    for (const int unit : {60, 1}) {
        QByteArrayView rest = text;
        const auto part = accept(rest, ':') ? number(rest, 59) : std::nullopt;
        if (!part)
            break;
        seconds += *part * unit;
        text = rest;
    }
    return isNegative ? -seconds : seconds;
}

}  // namespace

std::optional<ZoneRule::Date> ZoneRule::readDate(QByteArrayView& text) {
    accept(text, ',');
    Date date;
    if (accept(text, 'M')) {
        const int month = number(text, 12).value_or(0);
        const int week = accept(text, '.') ? number(text, 5).value_or(0) : 0;
        const int day = accept(text, '.') ? number(text, 6).value_or(-1) : -1;
        if (month < 1 || week < 1 || day < 0)
            return std::nullopt;
        date = {.month = month, .week = week, .day = day};
    } else {
        date.form = accept(text, 'J') ? Date::Form::dayWithoutLeapDay : Date::Form::day;
        const auto day = number(text, 365);
        if (!day || (date.form == Date::Form::dayWithoutLeapDay && *day < 1))
            return std::nullopt;
        date.day = *day;
    }
    if (accept(text, '/')) {
        const auto at = time(text, 167);
        if (!at)
            return std::nullopt;
        date.seconds = *at;
    }
    return text.isEmpty() || text.startsWith(',') ? std::optional(date) : std::nullopt;
}

qint64 ZoneRule::Date::in(int year) const {
    QDate date(year, 1, 1);
    if (form == Form::weekDay) {
        date = QDate(year, month, 1);
        date = date.addDays((day - date.dayOfWeek() % 7 + 7) % 7 + 7 * (week - 1));
        if (date.month() != month)
            date = date.addDays(-7);
    } else if (form == Form::day) {
        date = date.addDays(day);
    } else {
        date = date.addDays(day - 1 + (QDate::isLeapYear(year) && day >= 60 ? 1 : 0));
    }
    return (date.toJulianDay() - unixEpochJulianDay) * secondsPerDay + seconds;
}

std::optional<ZoneRule> ZoneRule::parse(QByteArrayView text) {
    ZoneRule rule;
    const auto standardName = name(text);
    const auto west = standardName ? time(text, 24) : std::nullopt;
    if (!west)
        return std::nullopt;
    rule.standard_ = {.offset = -*west, .abbreviation = *standardName};
    const auto daylightName = name(text);
    if (!daylightName)
        return rule;
    const auto daylightWest = time(text, 24);
    rule.daylight_ = {.offset = daylightWest ? -*daylightWest : rule.standard_.offset + 3600,
                      .isDaylight = true,
                      .abbreviation = *daylightName};
    if (text.isEmpty() || text == ",") {
        rule.begin_ = Date{.month = 3, .week = 2};
        rule.end_ = Date{.month = 11, .week = 1};
        return rule;
    }
    const auto begin = readDate(text);
    const auto end = begin ? readDate(text) : std::nullopt;
    if (end) {
        rule.begin_ = begin;
        rule.end_ = end;
    }
    return rule;
}

ZoneChanges ZoneRule::zone() const {
    ZoneChanges zone{.before = standard_};
    continueZone(zone);
    return zone;
}

void ZoneRule::continueZone(ZoneChanges& zone) const {
    if (!begin_)
        return;
    int year = firstYear;
    qint64 last = std::numeric_limits<qint64>::min();
    if (!zone.changes.empty()) {
        last = zone.changes.back().at;
        const qint64 days = last / secondsPerDay;
        year = std::max(year, QDate::fromJulianDay(unixEpochJulianDay + days).year());
    }
    zone.repeatsFrom = std::max(firstRepeatedYear, year + cycle + 1);
    const std::size_t known = zone.changes.size();
    for (; year <= *zone.repeatsFrom; ++year) {
        for (ZoneChange change : {standard_, daylight_}) {
            const bool begins = change.isDaylight;
            change.at = (begins ? *begin_ : *end_).in(year) - (begins ? standard_ : daylight_).offset;
            if (change.at > last)
                zone.changes.push_back(std::move(change));
        }
    }
    // Where daylight time never ends, its end is the moment at which it begins again.
    std::stable_sort(zone.changes.begin() + static_cast<std::ptrdiff_t>(known), zone.changes.end(),
                     [](const ZoneChange& a, const ZoneChange& b) { return a.at < b.at; });
}

}  // namespace kestrant
