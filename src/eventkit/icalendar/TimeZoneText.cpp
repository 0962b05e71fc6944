#include "eventkit/icalendar/TimeZoneText.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <set>

namespace kestrant::icalendar {
namespace {

QByteArray offsetText(int seconds) {
    const int magnitude = std::abs(seconds);
    QByteArray result =
        QString::asprintf("%c%02d%02d", seconds < 0 ? '-' : '+', magnitude / 3600, magnitude / 60 % 60)
            .toLatin1();
    if (magnitude % 60 != 0)
        result += QString::asprintf("%02d", magnitude % 60).toLatin1();
    return result;
}

/// "the last Sunday of March" or "the second Sunday of March" for a day that is one.
QByteArray yearlyRule(QDate day) {
    constexpr std::array names{"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    const bool isLast = day.day() + 7 > day.daysInMonth();
    const int position = isLast ? -1 : (day.day() - 1) / 7 + 1;
    return "FREQ=YEARLY;BYMONTH=" + QByteArray::number(day.month()) +
           ";BYDAY=" + QByteArray::number(position) + names[static_cast<std::size_t>(day.dayOfWeek() - 1)];
}

/// The clocks show `change` from a local time on that they showed before.
Component observance(const ZoneChange& change, const QDateTime& onset, int offsetFrom, const QByteArray& rule,
                     QByteArrayView lineEnd) {
    Component component(change.isDaylight ? "DAYLIGHT" : "STANDARD", lineEnd.toByteArray());
    component.append(Property{"DTSTART", {}, onset.toString(QStringLiteral("yyyyMMdd'T'HHmmss")).toLatin1()},
                     lineEnd);
    component.append(Property{"TZOFFSETFROM", {}, offsetText(offsetFrom)}, lineEnd);
    component.append(Property{"TZOFFSETTO", {}, offsetText(change.offset)}, lineEnd);
    if (!change.abbreviation.isEmpty())
        component.append(Property{"TZNAME", {}, change.abbreviation}, lineEnd);
    if (!rule.isEmpty())
        component.append(Property{"RRULE", {}, rule}, lineEnd);
    return component;
}

std::set<QByteArray> zonesUsedIn(const Document& document) {
    std::set<QByteArray> result;
    for (const char* kind : {"VTODO", "VEVENT"}) {
        for (const ComponentView& item : document.components(kind)) {
            for (const Line& line : item.lines()) {
                if (!line.content().contains("TZID="))
                    continue;
                if (const auto zone = Property::parse(line.content()).parameter("TZID"))
                    result.insert(*zone);
            }
        }
    }
    return result;
}

}  // namespace

Component timeZoneDefinition(const TimeZone& zone, int year, QByteArrayView lineEnd) {
    Component result("VTIMEZONE", lineEnd.toByteArray());
    result.append(Property{"TZID", {}, escapedText(QString::fromUtf8(zone.id()))}, lineEnd);
    const auto startOf = [](int each) {
        return Instant(std::chrono::sys_days(std::chrono::year(each) / std::chrono::January / 1));
    };
    const auto changes = zone.changesBetween(startOf(year), startOf(year + 1));
    ZoneChange present = zone.presentAt(startOf(year) - std::chrono::seconds(1));
    for (const ZoneChange& change : changes) {
        // An onset is given in the local time that was in use before it.
        const QDateTime onset = QDateTime::fromSecsSinceEpoch(change.at + present.offset, QTimeZone::utc());
        const QByteArray rule = changes.size() == 2 ? yearlyRule(onset.date()) : QByteArray();
        result.append(observance(change, onset, present.offset, rule, lineEnd));
        present = change;
    }
    if (changes.empty())
        result.append(observance(present, QDateTime(QDate(1970, 1, 1), QTime(0, 0), QTimeZone::utc()),
                                 present.offset, {}, lineEnd));
    return result;
}

QByteArray zoneIdentifierIn(const Property& identifier) {
    return unescapedText(identifier.value.trimmed()).toUtf8();
}

void addMissingTimeZones(Document& document, const Document& before, int year,
                         const std::vector<std::optional<TimeZone>>& known) {
    std::set<QByteArray> done = zonesUsedIn(before);
    for (const ComponentView& definition : document.components("VTIMEZONE")) {
        if (const auto identifier = definition.property("TZID"))
            done.insert(zoneIdentifierIn(*identifier));
    }
    for (const QByteArray& name : zonesUsedIn(document)) {
        if (done.contains(name))
            continue;
        const auto given = std::find_if(known.begin(), known.end(),
                                        [&](const auto& zone) { return zone && zone->id() == name; });
        if (const auto zone = given != known.end() ? *given : TimeZone::named(name))
            document.add(timeZoneDefinition(*zone, year, document.lineEnd()), Document::Position::first);
    }
}

}  // namespace kestrant::icalendar
