// Series of events with hostile rules and zones: the cost is bounded, no occurrence comes twice, and a
// narrower question has the same answer as a wider one within its span.

#include "eventkit/icalendar/Document.h"
#include "eventkit/icalendar/Event.h"
#include "eventkit/icalendar/EventSeries.h"
#include "eventkit/icalendar/Todo.h"
#include "foundation/TimeZone.h"
#include "fuzzing.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

using namespace kestrant;

namespace {

/// More items than these tell nothing new.
constexpr std::size_t mostItems = 3;
/// One question spends no more than its steps and what it began with them.
constexpr qint64 mostSteps = 4 * EventSeries::mostSteps;

std::vector<Instant> startsWithin(const EventSeries& series, Instant from, Instant to, Instant now) {
    std::vector<Instant> starts;
    std::set<icalendar::LocalTime> times;
    const auto cost = series.forEachRecurring({from, to, now}, [&](const EventSeries::Date& date) {
        KESTRANT_REQUIRE(date.interval.start <= date.interval.end);
        KESTRANT_REQUIRE(date.interval.start <= to && date.interval.end >= from);
        KESTRANT_REQUIRE(times.insert(date.time).second);
        starts.push_back(date.interval.start);
        return true;
    });
    KESTRANT_REQUIRE(cost.steps <= mostSteps);
    KESTRANT_REQUIRE(starts.size() <= 2 * series.mostOccurrences());
    return starts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto document = icalendar::Document::parse(QByteArrayView(bytes, qsizetype(size)));
    if (!document)
        return 0;
    static const TimeZone local(TimeZone::named("Europe/Paris").value());
    (void)icalendar::readTodos(*document, local);
    const Instant now{std::chrono::seconds(1'780'000'000)};
    const auto year = std::chrono::hours(24 * 365);
    std::vector<icalendar::EventItem> items = icalendar::readEvents(*document, local);
    items.resize(std::min(items.size(), mostItems));
    for (icalendar::EventItem& item : items) {
        const EventSeries series(std::move(item), QStringLiteral("id"), QStringLiteral("calendar"), local);
        (void)series.first();
        const std::vector<Instant> wide = startsWithin(series, now - 2 * year, now + 2 * year, now);
        const std::vector<Instant> narrow = startsWithin(series, now, now + year, now);
        const std::multiset<Instant> known(wide.begin(), wide.end());
        for (const Instant start : narrow)
            KESTRANT_REQUIRE(known.count(start) > 0);
    }
    return 0;
}
