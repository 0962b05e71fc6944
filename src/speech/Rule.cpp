#include "speech/Rule.h"

#include <QStringList>

#include <array>

namespace kestrant::speech {

Length& Length::operator+=(const Length& other) {
    months += other.months;
    days += other.days;
    minutes += other.minutes;
    return *this;
}

bool Rule::extendWith(const Rule& tail) {
    constexpr std::uint8_t everyDay = 0b1111111;
    if (tail.count > 0 || tail.until.isValid() || !tail.lasts.isNothing()) {
        if (count > 0 || until.isValid() || !lasts.isNothing())
            return false;
        count = tail.count;
        until = tail.until;
        lasts = tail.lasts;
        return true;
    }
    if (tail.hours != 0) {
        const bool isOfDays = frequency != Frequency::none && frequency != Frequency::hourly;
        if (isOfDays)
            hours |= tail.hours;
        return isOfDays;
    }
    if (tail.frequency == Frequency::none && tail.weekdays != 0) {
        const bool isDaily =
            (frequency == Frequency::daily && interval == 1) || frequency == Frequency::weekly;
        const auto left = static_cast<std::uint8_t>((weekdays != 0 ? weekdays : everyDay) & ~tail.weekdays);
        if (!isDaily || left == 0)
            return false;
        frequency = Frequency::weekly;
        weekdays = left;
        return true;
    }
    if (tail.frequency == Frequency::none)
        return true;
    if (weekdays != 0 || monthDays != 0)
        return false;
    if (tail.frequency == Frequency::weekly &&
        (frequency == Frequency::weekly || frequency == Frequency::daily))
        frequency = Frequency::weekly;
    else if (tail.frequency != Frequency::monthly || frequency != Frequency::monthly)
        return false;
    weekdays = tail.weekdays;
    nths = tail.nths;
    monthDays = tail.monthDays;
    return true;
}

QString Rule::text() const {
    constexpr std::array names{"", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY"};
    constexpr std::array days{"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    QString result = QStringLiteral("FREQ=") + QLatin1String(names.at(static_cast<std::size_t>(frequency)));
    if (interval > 1)
        result += QStringLiteral(";INTERVAL=%1").arg(interval);
    if (month != 0)
        result += QStringLiteral(";BYMONTH=%1").arg(month);
    if (monthDays != 0) {
        QStringList numbers;
        for (int day = 1; day <= 31; ++day) {
            if ((monthDays >> day & 1) != 0)
                numbers.append(QString::number(day));
        }
        if ((monthDays & 1) != 0)
            numbers.append(QStringLiteral("-1"));
        result += QStringLiteral(";BYMONTHDAY=") + numbers.join(u',');
    }
    if (weekdays != 0) {
        // Of Monday to Friday one day is counted, of one weekday that weekday.
        const bool isOfAll = (weekdays & (weekdays - 1)) != 0;
        QStringList places;
        for (int nth = 1; nth <= 6; ++nth) {
            if ((nths >> nth % 6 & 1) != 0)
                places.append(QString::number(nth < 6 ? nth : -1));
        }
        QStringList list;
        for (std::size_t day = 0; day < days.size(); ++day) {
            if ((weekdays >> day & 1) == 0)
                continue;
            if (places.isEmpty() || isOfAll)
                list.append(QLatin1String(days.at(day)));
            else
                for (const QString& place : places)
                    list.append(place + QLatin1String(days.at(day)));
        }
        result += QStringLiteral(";BYDAY=") + list.join(u',');
        if (isOfAll && !places.isEmpty())
            result += QStringLiteral(";BYSETPOS=") + places.join(u',');
    }
    if (hours != 0) {
        QStringList list;
        for (int hour = 0; hour < 24; ++hour) {
            if ((hours >> hour & 1) != 0)
                list.append(QString::number(hour));
        }
        result += QStringLiteral(";BYHOUR=") + list.join(u',');
    }
    if (count > 0)
        result += QStringLiteral(";COUNT=%1").arg(count);
    else if (until.isValid())
        result += QStringLiteral(";UNTIL=") + until.toString(QStringLiteral("yyyyMMdd"));
    return result;
}

}  // namespace kestrant::speech
