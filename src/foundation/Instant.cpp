#include "foundation/Instant.h"

#include <QDate>
#include <QTime>

#include <algorithm>
#include <cmath>

namespace kestrant {

double secondsSince1970(Instant instant) {
    return static_cast<double>(instant.time_since_epoch().count()) / 1e6;
}

Instant instantFromSecondsSince1970(double value) {
    return Instant(seconds(value));
}

double secondsSinceReferenceDate(Instant instant) {
    return secondsSince1970(instant) - referenceDateOffset;
}

Instant instantFromSecondsSinceReferenceDate(double value) {
    return instantFromSecondsSince1970(value + referenceDateOffset);
}

Duration seconds(double value) {
    constexpr double limit = 9.2e12;  // microseconds must fit a signed 64-bit number
    if (std::isnan(value))
        return Duration::zero();
    return Duration(std::llround(std::clamp(value, -limit, limit) * 1e6));
}

QString toIso8601(Instant instant) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(instant);
    const auto days = std::chrono::floor<std::chrono::days>(whole);
    const QDate date = QDate(1970, 1, 1).addDays(days.time_since_epoch().count());
    const auto second = static_cast<int>((whole - days).count());
    const int year = date.year() > 0 ? date.year() : date.year() + 1;  // QDate has no year zero, ISO 8601 has
    QString yearText = QString::number(std::abs(year)).rightJustified(4, QLatin1Char('0'));
    if (year < 0)
        yearText.prepend(QLatin1Char('-'));
    else if (year > 9999)
        yearText.prepend(QLatin1Char('+'));
    const auto two = [](int value) { return QString::number(value).rightJustified(2, QLatin1Char('0')); };
    return yearText + QLatin1Char('-') + two(date.month()) + QLatin1Char('-') + two(date.day()) +
           QLatin1Char('T') + two(second / 3600) + QLatin1Char(':') + two(second / 60 % 60) +
           QLatin1Char(':') + two(second % 60) + QLatin1Char('Z');
}

namespace {

/// Reads digits and separators from the left of a text.
class Reader {
  public:
    explicit Reader(QStringView text) : text_(text) {}

    [[nodiscard]] bool take(char16_t character) {
        if (text_.isEmpty() || text_.front() != QChar(character))
            return false;
        text_ = text_.sliced(1);
        return true;
    }
    [[nodiscard]] std::optional<int> digits(qsizetype count) {
        if (text_.size() < count)
            return {};
        int value = 0;
        for (const QChar character : text_.first(count)) {
            if (character < u'0' || character > u'9')
                return {};
            value = value * 10 + (character.unicode() - u'0');
        }
        text_ = text_.sliced(count);
        return value;
    }
    [[nodiscard]] bool isAtEnd() const { return text_.isEmpty(); }

  private:
    QStringView text_;
};

}  // namespace

std::optional<Instant> parseIso8601(QStringView text) {
    Reader reader(text);
    const auto year = reader.digits(4);
    if (!year || !reader.take(u'-'))
        return {};
    const auto month = reader.digits(2);
    if (!month || !reader.take(u'-'))
        return {};
    const auto day = reader.digits(2);
    if (!day || !reader.take(u'T'))
        return {};
    const auto hour = reader.digits(2);
    if (!hour || !reader.take(u':'))
        return {};
    const auto minute = reader.digits(2);
    if (!minute)
        return {};
    int second = 0;
    qint64 microseconds = 0;
    if (reader.take(u':')) {
        const auto value = reader.digits(2);
        if (!value)
            return {};
        second = *value;
        if (reader.take(u'.') || reader.take(u',')) {
            qint64 unit = 100000;
            bool any = false;
            while (const auto digit = reader.digits(1)) {
                microseconds += *digit * unit;
                unit /= 10;
                any = true;
            }
            if (!any)
                return {};
        }
    }
    int offsetMinutes = 0;
    if (!reader.take(u'Z')) {
        const bool ahead = reader.take(u'+');
        if (!ahead && !reader.take(u'-'))
            return {};
        const auto offsetHour = reader.digits(2);
        if (!offsetHour)
            return {};
        const bool hasColon = reader.take(u':');
        const auto offsetMinute = reader.digits(2);
        if ((hasColon && !offsetMinute) || *offsetHour > 23 || offsetMinute.value_or(0) > 59)
            return {};
        offsetMinutes = (*offsetHour * 60 + offsetMinute.value_or(0)) * (ahead ? 1 : -1);
    }
    const QDate date(*year == 0 ? -1 : *year, *month, *day);
    if (!reader.isAtEnd() || !date.isValid() || !QTime::isValid(*hour, *minute, second))
        return {};
    const auto days = std::chrono::days(QDate(1970, 1, 1).daysTo(date));
    return Instant(days + std::chrono::hours(*hour) + std::chrono::minutes(*minute - offsetMinutes) +
                   std::chrono::seconds(second) + Duration(microseconds));
}

}  // namespace kestrant
