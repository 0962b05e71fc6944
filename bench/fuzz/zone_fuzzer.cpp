// Time zones: zone data, rules as in TZ and definitions in calendars. Whatever they say, every moment has a
// local time, the way back leads to it or to an earlier one that the clocks show alike, and a definition that
// is written from a zone reads as the same zone.

#include "eventkit/icalendar/TimeZoneText.h"
#include "foundation/ZoneFile.h"
#include "foundation/ZoneRule.h"
#include "fuzzing.h"

#include <QByteArray>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

using namespace kestrant;

namespace {

/// More definitions than these tell nothing new.
constexpr std::size_t mostZones = 3;
constexpr qint64 secondsPerYear = 31'556'952;

Duration localTime(const TimeZone& zone, Instant instant) {
    return instant.time_since_epoch() + zone.offsetAt(instant);
}

/// Years that are not written out are taken from others that have the same days; what their neighbours do to
/// the hours about New Year is not.
bool isAboutNewYear(Instant instant) {
    const std::chrono::year_month_day before(std::chrono::floor<std::chrono::days>(instant) -
                                             std::chrono::days(3));
    const std::chrono::year_month_day after(std::chrono::floor<std::chrono::days>(instant) +
                                            std::chrono::days(3));
    return before.year() != after.year();
}

void checkMoment(const TimeZone& zone, Instant instant) {
    if (isAboutNewYear(instant))
        return;
    const Duration local = localTime(zone, instant);
    for (const GapPolicy policy : {GapPolicy::keepOffset, GapPolicy::nextExisting}) {
        const Instant back = zone.instantAt(local, policy);
        KESTRANT_REQUIRE(back <= instant);
        KESTRANT_REQUIRE(localTime(zone, back) == local);
    }
}

void checkWritten(const TimeZone& zone, int year) {
    const auto startOf = [](int each) {
        return Instant(std::chrono::sys_days(std::chrono::year(each) / std::chrono::January / 1));
    };
    const auto changes = zone.changesBetween(startOf(year), startOf(year + 1));
    // iCalendar knows distances of less than a day.
    const auto canBeSaid = [](const ZoneChange& change) { return std::abs(change.offset) < 86'400; };
    const ZoneChange before = zone.presentAt(startOf(year) - std::chrono::seconds(1));
    if (changes.size() > 20 || !canBeSaid(before) || !std::all_of(changes.begin(), changes.end(), canBeSaid))
        return;
    const auto read = icalendar::zoneDefinedBy(icalendar::timeZoneDefinition(zone, year, "\r\n").view());
    KESTRANT_REQUIRE(read.has_value());
    for (const ZoneChange& change : changes) {
        const Instant at{std::chrono::seconds(change.at)};
        KESTRANT_REQUIRE(read->offsetAt(at) == zone.offsetAt(at));
    }
}

void check(const TimeZone& zone) {
    for (int year = 1850; year < 2500; year += 13) {
        const qint64 begin = (year - 1970) * secondsPerYear;
        checkMoment(zone, Instant(std::chrono::seconds(begin + year % 7 * 4'000'000)));
        const auto changes = zone.changesBetween(Instant(std::chrono::seconds(begin)),
                                                 Instant(std::chrono::seconds(begin + secondsPerYear)));
        for (std::size_t i = 0; i < std::min<std::size_t>(changes.size(), 4); ++i) {
            for (const qint64 beside : {-5000, -1, 0, 1, 5000})
                checkMoment(zone, Instant(std::chrono::seconds(changes[i].at + beside)));
        }
    }
    for (const int year : {1975, 2026, 2090})
        checkWritten(zone, year);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const QByteArray content(reinterpret_cast<const char*>(bytes), qsizetype(size));
    if (const auto zone = parseZoneFile(content))
        check(TimeZone::defined("file", *zone));
    if (const auto rule = ZoneRule::parse(content))
        check(TimeZone::defined("rule", rule->zone()));
    if (const auto document = icalendar::Document::parse(content)) {
        const auto definitions = document->components("VTIMEZONE");
        for (std::size_t i = 0; i < std::min(definitions.size(), mostZones); ++i) {
            if (const auto zone = icalendar::zoneDefinedBy(definitions[i]))
                check(*zone);
        }
    }
    return 0;
}
