#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/Occurrences.h"
#include "eventkit/icalendar/TimeZoneText.h"

#include <QDateTime>
#include <QHash>
#include <QTimeZone>

#include <algorithm>
#include <utility>
#include <vector>

namespace kestrant::icalendar {
namespace {

/// The clocks are set to another distance from UTC.
struct Change {
    QDateTime at;
    int before = 0;
    int after = 0;
};

/// "+0130" or "-053015".
std::optional<int> readOffset(ComponentView observance, QByteArrayView name) {
    const auto property = observance.property(name);
    const QByteArray text = property ? property->value.trimmed() : QByteArray();
    bool ok = false;
    const int number = text.sliced(text.isEmpty() ? 0 : 1).leftJustified(6, '0').toInt(&ok);
    if (!ok || (text.size() != 5 && text.size() != 7) || (text[0] != '+' && text[0] != '-'))
        return std::nullopt;
    const int seconds = number / 10'000 * 3600 + number / 100 % 100 * 60 + number % 100;
    return seconds < 86'400 ? std::optional(text[0] == '-' ? -seconds : seconds) : std::nullopt;
}

/// The last time before the year that the clocks are set so, and all times in it.
void addChanges(ComponentView observance, int year, std::vector<Change>& changes) {
    const auto before = readOffset(observance, "TZOFFSETFROM");
    const auto after = readOffset(observance, "TZOFFSETTO");
    const auto begin = observance.property("DTSTART");
    const auto start = begin ? readLocalDate(begin->value) : std::nullopt;
    if (!before || !after || !start)
        return;
    const auto add = [&](const LocalTime& time) {
        changes.push_back({QDateTime(time.day, time.time, Qt::UTC).addSecs(-*before), *before, *after});
    };
    for (const Property& property : observance.properties("RDATE")) {
        for (const QByteArray& value : property.value.split(',')) {
            if (const auto date = readLocalDate(value))
                add(localTimeOf(*date));
        }
    }
    const auto rule = observance.property("RRULE");
    const auto parsed = rule ? RecurrenceRule::parse(rule->value) : std::nullopt;
    if (!parsed) {
        add(localTimeOf(*start));
        return;
    }
    // Many definitions begin centuries ago; what came before the last year matters only where the rule ended.
    for (const int from : {year - 1, start->date().year()}) {
        Occurrences dates(*parsed, localTimeOf(*start), DateKind::time, ZoneCalendar(QTimeZone(*before)));
        dates.skipTo({QDate(from, 1, 1), QTime(0, 0)});
        const std::size_t known = changes.size();
        for (auto date = dates.next(); date && date->day.year() <= year; date = dates.next())
            add(*date);
        if (changes.size() > known)
            break;
    }
}

bool doesTheSame(const QTimeZone& zone, const QDateTime& begin, int offset,
                 const std::vector<Change>& changes) {
    if (zone.offsetFromUtc(begin) != offset)
        return false;
    std::size_t same = 0;
    for (const QTimeZone::OffsetData& transition : zone.transitions(begin, begin.addYears(1).addSecs(-1))) {
        if (transition.offsetFromUtc == offset)
            continue;
        offset = transition.offsetFromUtc;
        if (same == changes.size() || changes[same].at != transition.atUtc || changes[same].after != offset)
            return false;
        ++same;
    }
    return same == changes.size();
}

QByteArray distanceName(int seconds) {
    if (seconds == 0)
        return "UTC";
    const int minutes = std::abs(seconds) / 60;
    return QString::asprintf("UTC%c%02d:%02d", seconds < 0 ? '-' : '+', minutes / 60, minutes % 60)
        .toLatin1();
}

/// What a definition says about one year.
struct Description {
    /// In order; the first are from before the year.
    std::vector<Change> changes;
    /// Only where the clocks are changed in that year.
    std::optional<QByteArray> zone;

    [[nodiscard]] int offsetAt(const QDateTime& time) const {
        int result = changes.front().before;
        for (const Change& change : changes) {
            if (change.at <= time)
                result = change.after;
        }
        return result;
    }
};

std::optional<QByteArray> zoneLike(const Description& description, const QDateTime& begin,
                                   const QByteArray& name) {
    std::vector<Change> changes = description.changes;
    std::erase_if(changes, [&](const Change& change) {
        return change.at <= begin || change.at >= begin.addYears(1) || change.after == change.before;
    });
    if (changes.empty())
        return std::nullopt;
    const int offset = description.offsetAt(begin);
    std::optional<QByteArray> result;
    for (const QByteArray& zone : QTimeZone::availableTimeZoneIds()) {
        const bool isMentioned = name.contains(zone.sliced(zone.lastIndexOf('/') + 1));
        if ((result && !isMentioned) || !doesTheSame(QTimeZone(zone), begin, offset, changes))
            continue;
        result = zone;
        if (isMentioned)
            break;
    }
    return result;
}

Description describe(ComponentView definition, int year) {
    Description result;
    for (const char* kind : {"STANDARD", "DAYLIGHT"}) {
        for (const ComponentView& observance : definition.components(kind))
            addChanges(observance, year, result.changes);
    }
    if (result.changes.empty())
        return result;
    std::stable_sort(result.changes.begin(), result.changes.end(),
                     [](const Change& a, const Change& b) { return a.at < b.at; });
    const auto name = definition.property("TZID");
    result.zone = zoneLike(result, QDateTime(QDate(year, 1, 1), QTime(0, 0), Qt::UTC),
                           name ? name->value : QByteArray());
    return result;
}

}  // namespace

std::optional<QByteArray> zoneDescribedBy(ComponentView definition, QDate day) {
    static thread_local QHash<std::pair<QByteArray, int>, Description> known;
    const std::pair key(definition.text(), day.year());
    auto found = known.constFind(key);
    if (found == known.cend())
        found = known.insert(key, describe(definition, day.year()));
    if (found->zone || found->changes.empty())
        return found->zone;
    return distanceName(found->offsetAt(QDateTime(day, QTime(12, 0), Qt::UTC)));
}

}  // namespace kestrant::icalendar
