#include "eventkit/recurrence/RecurrenceRule.h"

#include <QByteArray>
#include <QByteArrayList>

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant::icalendar {
namespace {

std::optional<int> wholeNumber(const QByteArray& text) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

enum class Sign { positive, either };

bool readNumbers(const QByteArray& text, int low, int high, Sign sign, std::vector<int>& numbers) {
    for (const QByteArray& part : text.split(',')) {
        const auto number = wholeNumber(part);
        if (!number || (*number < 0 && sign == Sign::positive))
            return false;
        const int magnitude = std::abs(*number);
        if (magnitude < low || magnitude > high)
            return false;
        numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return true;
}

std::optional<int> weekDayNumber(QByteArrayView name) {
    constexpr std::array names{"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (name == names[i])
            return static_cast<int>(i) + 1;
    }
    return std::nullopt;
}

bool readWeekDays(const QByteArray& text, std::vector<RecurrenceRule::WeekDay>& days) {
    for (const QByteArray& entry : text.split(',')) {
        const QByteArray part = entry.trimmed();
        const auto day = weekDayNumber(QByteArrayView(part).last(std::min<qsizetype>(2, part.size())));
        if (!day)
            return false;
        int ordinal = 0;
        if (part.size() > 2) {
            const auto number = wholeNumber(part.chopped(2));
            if (!number || *number == 0 || std::abs(*number) > 53)
                return false;
            ordinal = *number;
        }
        days.push_back({ordinal, *day});
    }
    return true;
}

std::optional<RecurrenceRule::Frequency> frequencyNamed(const QByteArray& name) {
    using Frequency = RecurrenceRule::Frequency;
    constexpr std::array<std::pair<const char*, Frequency>, 7> names{{{"SECONDLY", Frequency::secondly},
                                                                      {"MINUTELY", Frequency::minutely},
                                                                      {"HOURLY", Frequency::hourly},
                                                                      {"DAILY", Frequency::daily},
                                                                      {"WEEKLY", Frequency::weekly},
                                                                      {"MONTHLY", Frequency::monthly},
                                                                      {"YEARLY", Frequency::yearly}}};
    for (const auto& [text, frequency] : names) {
        if (name == text)
            return frequency;
    }
    return std::nullopt;
}

std::optional<RecurrenceRule::Until> readUntil(const QByteArray& text) {
    const bool utc = text.endsWith('Z');
    const bool timed = text.contains('T');
    const QByteArray digits = utc ? text.chopped(1) : text;
    if (digits.size() != (timed ? 15 : 8) || (utc && !timed))
        return std::nullopt;
    RecurrenceRule::Until until;
    until.time.day = QDate::fromString(QString::fromLatin1(digits.first(8)), QStringLiteral("yyyyMMdd"));
    if (timed)
        until.time.time = QTime::fromString(QString::fromLatin1(digits.last(6)), QStringLiteral("HHmmss"));
    if (!until.time.day.isValid() || !until.time.time.isValid())
        return std::nullopt;
    using Form = RecurrenceRule::UntilForm;
    until.form = utc ? Form::utc : timed ? Form::local : Form::date;
    return until;
}

bool readPart(const QByteArray& name, const QByteArray& value, RecurrenceRule& rule) {
    if (name == "INTERVAL" || name == "COUNT") {
        const auto number = wholeNumber(value);
        if (!number || *number < 1)
            return false;
        if (name == "COUNT")
            rule.count = *number;
        else
            rule.interval = *number;
        return true;
    }
    if (name == "UNTIL") {
        rule.until = readUntil(value);
        return rule.until.has_value();
    }
    if (name == "WKST") {
        const auto day = weekDayNumber(value);
        rule.weekStart = day.value_or(1);
        return day.has_value();
    }
    if (name == "BYDAY")
        return readWeekDays(value, rule.byDay);
    if (name == "BYSECOND")
        return readNumbers(value, 0, 60, Sign::positive, rule.bySecond);
    if (name == "BYMINUTE")
        return readNumbers(value, 0, 59, Sign::positive, rule.byMinute);
    if (name == "BYHOUR")
        return readNumbers(value, 0, 23, Sign::positive, rule.byHour);
    if (name == "BYMONTHDAY")
        return readNumbers(value, 1, 31, Sign::either, rule.byMonthDay);
    if (name == "BYYEARDAY")
        return readNumbers(value, 1, 366, Sign::either, rule.byYearDay);
    if (name == "BYWEEKNO")
        return readNumbers(value, 1, 53, Sign::either, rule.byWeekNumber);
    if (name == "BYMONTH")
        return readNumbers(value, 1, 12, Sign::positive, rule.byMonth);
    if (name == "BYSETPOS")
        return readNumbers(value, 1, 366, Sign::either, rule.bySetPosition);
    if (name == "SKIP") {
        using Skip = RecurrenceRule::Skip;
        rule.skip = value == "FORWARD" ? Skip::forward : value == "BACKWARD" ? Skip::backward : Skip::omit;
        return rule.skip != Skip::omit || value == "OMIT";
    }
    return name == "RSCALE" && value == "GREGORIAN";
}

}  // namespace

bool RecurrenceRule::hasByParts() const {
    return !bySecond.empty() || !byMinute.empty() || !byHour.empty() || !byDay.empty() ||
           !byMonthDay.empty() || !byYearDay.empty() || !byWeekNumber.empty() || !byMonth.empty() ||
           !bySetPosition.empty() || skip != Skip::omit;
}

std::optional<RecurrenceRule> RecurrenceRule::parse(QByteArrayView text) {
    RecurrenceRule rule;
    std::optional<Frequency> frequency;
    QByteArrayList seen;
    for (const QByteArray& part : text.toByteArray().trimmed().toUpper().split(';')) {
        if (part.isEmpty())
            continue;
        const qsizetype equals = part.indexOf('=');
        if (equals < 1)
            return std::nullopt;
        const QByteArray name = part.first(equals).trimmed();
        const QByteArray value = part.sliced(equals + 1).trimmed();
        if (name.startsWith("X-"))
            continue;
        if (seen.contains(name))
            return std::nullopt;
        seen.append(name);
        if (name == "FREQ") {
            frequency = frequencyNamed(value);
            if (!frequency)
                return std::nullopt;
        } else if (!readPart(name, value, rule)) {
            return std::nullopt;
        }
    }
    if (!frequency)
        return std::nullopt;
    rule.frequency = *frequency;
    return rule;
}

}  // namespace kestrant::icalendar
