#include "eventkit/icalendar/TimeZoneText.h"

#include <QDateTime>
#include <QTimeZone>

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

Component observance(bool daylight, const QDateTime& onset, int offsetFrom, int offsetTo, const QString& name,
                     const QByteArray& rule, QByteArrayView lineEnd) {
    Component component(daylight ? "DAYLIGHT" : "STANDARD", lineEnd.toByteArray());
    component.append(Property{"DTSTART", {}, onset.toString(QStringLiteral("yyyyMMdd'T'HHmmss")).toLatin1()},
                     lineEnd);
    component.append(Property{"TZOFFSETFROM", {}, offsetText(offsetFrom)}, lineEnd);
    component.append(Property{"TZOFFSETTO", {}, offsetText(offsetTo)}, lineEnd);
    if (!name.isEmpty())
        component.append(Property{"TZNAME", {}, name.toUtf8()}, lineEnd);
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

std::optional<Component> timeZoneDefinition(const QByteArray& zone, int year, QByteArrayView lineEnd) {
    const QTimeZone timeZone(zone);
    if (!timeZone.isValid())
        return std::nullopt;
    Component result("VTIMEZONE", lineEnd.toByteArray());
    result.append(Property{"TZID", {}, zone}, lineEnd);
    const QDateTime start(QDate(year, 1, 1), QTime(0, 0), Qt::UTC);
    const auto changes = timeZone.transitions(start, start.addYears(1));
    int offset = timeZone.offsetFromUtc(start);
    for (const QTimeZone::OffsetData& change : changes) {
        // An onset is given in the local time that was in use before it.
        const QDateTime onset = change.atUtc.addSecs(offset);
        const QByteArray rule = changes.size() == 2 ? yearlyRule(onset.date()) : QByteArray();
        result.append(observance(change.daylightTimeOffset != 0, onset, offset, change.offsetFromUtc,
                                 change.abbreviation, rule, lineEnd));
        offset = change.offsetFromUtc;
    }
    if (changes.isEmpty()) {
        const QDateTime epoch(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC);
        result.append(observance(false, epoch, offset, offset, timeZone.abbreviation(start), {}, lineEnd));
    }
    return result;
}

void addMissingTimeZones(Document& document, const Document& before, int year) {
    std::set<QByteArray> known = zonesUsedIn(before);
    for (const ComponentView& definition : document.components("VTIMEZONE")) {
        if (const auto identifier = definition.property("TZID"))
            known.insert(identifier->value);
    }
    for (const QByteArray& zone : zonesUsedIn(document)) {
        if (known.contains(zone))
            continue;
        if (const auto definition = timeZoneDefinition(zone, year, document.lineEnd()))
            document.add(*definition, Document::Place::first);
    }
}

}  // namespace kestrant::icalendar
