#include "metrics/ReportSchedule.h"

#include "network/HttpDate.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

namespace kestrant::metrics {

namespace {

constexpr double longestRetryAfter = 86400;
constexpr double longestDelay = 86400;

std::optional<double> parseNumber(const QByteArray& text) {
    double number = 0;
    const char* end = text.constData() + text.size();
    const auto [last, error] = std::from_chars(text.constData(), end, number);
    if (error != std::errc() || last != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

}  // namespace

DayStamp dayStamp(Instant now) {
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    return {
        QString::asprintf("%04d-%02u-%02u", int(date.year()), unsigned(date.month()), unsigned(date.day())),
        secondsSince1970(day)};
}

double expiryCutoff(Instant now) {
    return dayStamp(now).startOfDay - retentionDays * 86400.0;
}

double nextReportTime(Instant now, double random) {
    return secondsSince1970(now) + minimumReportInterval + random * minimumReportInterval;
}

bool isTooFarAhead(double time, Instant now) {
    static_assert(2 * minimumReportInterval <= longestDelay && longestRetryAfter <= longestDelay);
    constexpr double rounding = 1;
    return time > secondsSince1970(now) + longestDelay + rounding;
}

Backoff backoff(qint64 attempts, Instant now, double random, std::optional<double> retryAfter) {
    const qint64 failures = std::clamp<qint64>(attempts, 0, 30) + 1;
    double delay = std::min(600 * std::exp2(std::min<qint64>(failures, 8) - 1), minimumReportInterval);
    delay *= 0.8 + 0.4 * random;
    delay = std::max(delay, retryAfter.value_or(0));
    return {static_cast<int>(std::min<qint64>(failures, 30)), secondsSince1970(now) + delay};
}

std::optional<double> retryAfterSeconds(const QByteArray& header, Instant now) {
    const QByteArray text = header.trimmed();
    std::optional<double> seconds = parseNumber(text);
    if (seconds && *seconds < 0)
        return std::nullopt;
    if (!seconds) {
        if (const auto date = httpDate(text, now))
            seconds = std::max(secondsSince1970(*date) - secondsSince1970(now), 0.0);
    }
    if (!seconds)
        return std::nullopt;
    return std::min(*seconds, longestRetryAfter);
}

Instant storageRetryTime(Instant now, double random) {
    return now + seconds(300 + 60 * random);
}

}  // namespace kestrant::metrics
