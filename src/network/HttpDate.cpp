#include "network/HttpDate.h"

#include <QRegularExpression>
#include <QString>

#include <algorithm>
#include <array>
#include <chrono>

namespace kestrant {

namespace {

constexpr std::array months{"jan", "feb", "mar", "apr", "may", "jun",
                            "jul", "aug", "sep", "oct", "nov", "dec"};

const std::array<QRegularExpression, 3>& forms() {
    const auto form = [](const char* pattern) {
        return QRegularExpression(
            QString::fromLatin1(pattern).replace(
                QLatin1String("TIME"), QLatin1String("(?<hour>\\d\\d):(?<minute>\\d\\d):(?<second>\\d\\d)")),
            QRegularExpression::CaseInsensitiveOption);
    };
    static const std::array forms{
        form(R"(^[a-z]{3}, (?<day>\d{1,2}) (?<month>[a-z]{3}) (?<year>\d{4}) TIME (?:GMT|UTC)$)"),
        form(R"(^[a-z]{6,9}, (?<day>\d{1,2})-(?<month>[a-z]{3})-(?<year>\d\d) TIME (?:GMT|UTC)$)"),
        form(R"(^[a-z]{3} (?<month>[a-z]{3}) (?<day> \d|\d{1,2}) TIME (?<year>\d{4})$)"),
    };
    return forms;
}

std::optional<Instant> momentOf(const QRegularExpressionMatch& match, Instant now) {
    const auto number = [&match](const char* name) {
        return match.captured(QLatin1String(name)).trimmed().toInt();
    };
    const auto* month =
        std::find(months.begin(), months.end(), match.captured(QStringLiteral("month")).toLower());
    if (month == months.end() || number("hour") > 23 || number("minute") > 59 || number("second") > 60)
        return std::nullopt;
    const auto thisYear = int(std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(now)).year());
    int year = number("year");
    if (match.capturedLength(QStringLiteral("year")) == 2) {
        const int latest = thisYear + 50;
        year = latest - (latest - year) % 100;
    }
    const auto monthNumber = static_cast<unsigned>(month - months.begin() + 1);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(monthNumber),
                                           std::chrono::day(static_cast<unsigned>(number("day")))};
    if (!date.ok())
        return std::nullopt;
    return Instant(std::chrono::sys_days(date)) + std::chrono::hours(number("hour")) +
           std::chrono::minutes(number("minute")) + std::chrono::seconds(number("second"));
}

}  // namespace

std::optional<Instant> httpDate(const QByteArray& text, Instant now) {
    for (const QRegularExpression& form : forms()) {
        if (const auto match = form.match(QString::fromLatin1(text)); match.hasMatch())
            return momentOf(match, now);
    }
    return std::nullopt;
}

}  // namespace kestrant
