#include "foundation/Instant.h"

#include <QDate>

#include <cmath>
#include <limits>

namespace kestrant {

namespace {

constexpr double microsecondsPerSecond = 1'000'000.0;
constexpr qint64 referenceOffsetMicroseconds = static_cast<qint64>(referenceDateOffset) * 1'000'000;
constexpr qint64 unixEpochJulianDay = 2440588;

/// Rounds to whole microseconds; what no Instant can hold becomes the nearest one that can, and not-a-number
/// 0.
qint64 toMicroseconds(double seconds) {
    const double microseconds = std::round(seconds * microsecondsPerSecond);
    // Headroom for sums with offsets and delays.
    constexpr qint64 limit = std::numeric_limits<qint64>::max() / 4;
    if (std::isnan(microseconds))
        return 0;
    if (microseconds >= static_cast<double>(limit))
        return limit;
    if (microseconds <= -static_cast<double>(limit))
        return -limit;
    return static_cast<qint64>(microseconds);
}

/// Consumes a date-time from its left end, as far as it is well formed.
class Iso8601Reader {
  public:
    explicit Iso8601Reader(QStringView text) : text_(text) {}

    bool accept(char character) {
        if (position_ >= text_.size() || text_[position_] != QLatin1Char(character))
            return false;
        ++position_;
        return true;
    }

    [[nodiscard]] bool nextIsDigit() const {
        return position_ < text_.size() && text_[position_] >= u'0' && text_[position_] <= u'9';
    }

    /// The value of exactly `count` digits, or -1.
    int digits(int count) {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            if (!nextIsDigit())
                return -1;
            value = value * 10 + (text_[position_++].unicode() - u'0');
        }
        return value;
    }

    /// Any number of digits behind a decimal point, as microseconds; -1 when there is none.
    int fraction() {
        if (!nextIsDigit())
            return -1;
        int value = 0;
        int scale = 1'000'000;
        for (; nextIsDigit(); ++position_) {
            scale /= 10;
            value += scale * (text_[position_].unicode() - u'0');
        }
        return value;
    }

    [[nodiscard]] bool isAtEnd() const { return position_ == text_.size(); }

  private:
    QStringView text_;
    qsizetype position_ = 0;
};

/// Seconds east of UTC: "Z", "+01:00", "+0100" or "+01".
std::optional<int> readOffset(Iso8601Reader& reader) {
    if (reader.accept('Z') || reader.accept('z'))
        return 0;
    int sign = 1;
    if (reader.accept('-'))
        sign = -1;
    else if (!reader.accept('+'))
        return std::nullopt;
    const int hours = reader.digits(2);
    int minutes = 0;
    if (reader.accept(':') || reader.nextIsDigit())
        minutes = reader.digits(2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59)
        return std::nullopt;
    return sign * (hours * 3600 + minutes * 60);
}

}  // namespace

double secondsSince1970(Instant instant) {
    return static_cast<double>(instant.time_since_epoch().count()) / microsecondsPerSecond;
}

Instant instantFromSecondsSince1970(double seconds) {
    return Instant(Duration(toMicroseconds(seconds)));
}

double secondsSinceReferenceDate(Instant instant) {
    return static_cast<double>(instant.time_since_epoch().count() - referenceOffsetMicroseconds) /
           microsecondsPerSecond;
}

Instant instantFromSecondsSinceReferenceDate(double seconds) {
    return Instant(Duration(toMicroseconds(seconds) + referenceOffsetMicroseconds));
}

Duration seconds(double value) {
    return Duration(toMicroseconds(value));
}

QString toIso8601(Instant instant) {
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const QDate date = QDate::fromJulianDay(unixEpochJulianDay + day.time_since_epoch().count());
    const auto second = std::chrono::floor<std::chrono::seconds>(instant - day).count();

    // QDate counts no year 0: the year before 1 is -1 there and 0000 in ISO 8601.
    const int year = date.year() < 0 ? date.year() + 1 : date.year();
    QString yearText = QString::number(std::abs(year)).rightJustified(4, u'0');
    if (year < 0)
        yearText.prepend(u'-');
    else if (year > 9999)
        yearText.prepend(u'+');
    return yearText + QString::asprintf("-%02d-%02dT%02d:%02d:%02dZ", date.month(), date.day(),
                                        static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60),
                                        static_cast<int>(second % 60));
}

std::optional<Instant> parseIso8601(QStringView text) {
    Iso8601Reader reader(text);
    const int year = reader.digits(4);
    if (year < 0 || !reader.accept('-'))
        return std::nullopt;
    const int month = reader.digits(2);
    if (!reader.accept('-'))
        return std::nullopt;
    const int day = reader.digits(2);
    if (!reader.accept('T') && !reader.accept('t'))
        return std::nullopt;
    const int hour = reader.digits(2);
    if (!reader.accept(':'))
        return std::nullopt;
    const int minute = reader.digits(2);
    int second = 0;
    int microseconds = 0;
    if (reader.accept(':')) {
        second = reader.digits(2);
        if (reader.accept('.') || reader.accept(','))
            microseconds = reader.fraction();
    }
    const std::optional<int> offset = readOffset(reader);
    const QDate date(year, month, day);
    // A leap second is the next second.
    const bool isTime = hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 60;
    if (!offset || !reader.isAtEnd() || !date.isValid() || !isTime || microseconds < 0)
        return std::nullopt;

    const qint64 days = date.toJulianDay() - unixEpochJulianDay;
    const qint64 wholeSeconds = days * 86'400 + hour * 3600 + minute * 60 + second - *offset;
    return Instant(Duration(wholeSeconds * 1'000'000 + microseconds));
}

}  // namespace kestrant
