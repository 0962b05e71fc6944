#include "eventkit/icalendar/DateValue.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/recurrence/OccurrenceIterator.h"

#include <QHash>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrant::icalendar {
namespace {

/// Budget of a definition. Clocks change a few times a year at most.
constexpr std::size_t mostOnsets = 500;
constexpr int mostOnsetsAYear = 100;
constexpr qint64 mostSteps = 200'000;
constexpr qsizetype longestDefinition = 65'536;
constexpr qsizetype mostDefinitionsKept = 200;

/// The years of rules without an end are written out up to this one at least, and go on as the last 28 did.
constexpr int firstRepeatedYear = 2038;
constexpr int cycle = 28;
/// Dates that are given one by one are kept up to this year.
constexpr int lastYear = 2100;
constexpr qint64 unixEpochJulianDay = 2440588;

/// "+0130", "-053015" or "+01:30".
std::optional<int> readOffset(ComponentView observance, QByteArrayView name) {
    const auto property = observance.property(name);
    const QByteArray text = property ? property->value.trimmed().replace(":", "") : QByteArray();
    bool ok = false;
    const int number = text.sliced(text.isEmpty() ? 0 : 1).leftJustified(6, '0').toInt(&ok);
    if (!ok || (text.size() != 5 && text.size() != 7) || (text[0] != '+' && text[0] != '-'))
        return std::nullopt;
    const int seconds = number / 10'000 * 3600 + number / 100 % 100 * 60 + number % 100;
    return seconds < 86'400 ? std::optional(text[0] == '-' ? -seconds : seconds) : std::nullopt;
}

qint64 secondsOf(const LocalTime& time) {
    return (time.day.toJulianDay() - unixEpochJulianDay) * 86'400 + QTime(0, 0).secsTo(time.time);
}

/// One STANDARD or DAYLIGHT part.
struct Observance {
    ZoneChange change;
    /// The offset that its local times are in.
    int before = 0;
    LocalTime start;
    std::optional<RecurrenceRule> rule;
    std::vector<LocalTime> dates;

    [[nodiscard]] bool isEndless() const { return rule && !rule->count && !rule->until; }
};

/// Whether clocks are set by rules of this kind.
bool isSensible(const RecurrenceRule& rule) {
    using Frequency = RecurrenceRule::Frequency;
    return rule.frequency == Frequency::yearly || rule.frequency == Frequency::monthly;
}

std::optional<Observance> readObservance(ComponentView part) {
    const auto before = readOffset(part, "TZOFFSETFROM");
    const auto after = readOffset(part, "TZOFFSETTO");
    const auto begin = part.property("DTSTART");
    const auto start = begin ? readLocalDate(begin->value) : std::nullopt;
    if (!before || !after || !start)
        return std::nullopt;
    const auto name = part.property("TZNAME");
    Observance result{.change = {.offset = *after,
                                 .isDaylight = part.name() == "DAYLIGHT",
                                 .abbreviation = name ? name->value.trimmed() : QByteArray()},
                      .before = *before,
                      .start = localTimeOf(*start)};
    const auto property = part.property("RRULE");
    auto rule = property ? RecurrenceRule::parse(property->value) : std::nullopt;
    if (rule && isSensible(*rule))
        result.rule = std::move(rule);
    for (const Property& list : part.properties("RDATE")) {
        for (const QByteArray& value : list.value.split(',')) {
            if (result.dates.size() > mostOnsets)
                break;
            if (const auto date = readLocalDate(value); date && date->date().year() <= lastYear)
                result.dates.push_back(localTimeOf(*date));
        }
    }
    return result;
}

/// Writes out when the clocks of a definition are set, as far as that does not cost too much.
class Onsets {
  public:
    explicit Onsets(const std::vector<Observance>& observances) : observances_(observances) {
        bool isEndless = false;
        for (const Observance& each : observances) {
            isEndless = isEndless || each.isEndless();
            lastNamed_ = std::max(lastNamed_, each.start.day.year());
            for (const LocalTime& date : each.dates)
                lastNamed_ = std::max(lastNamed_, date.day.year());
            if (each.rule && each.rule->until)
                lastNamed_ = std::max(lastNamed_, each.rule->until->time.day.year());
        }
        end_ = std::max(firstRepeatedYear, std::min(lastNamed_, lastYear) + cycle + 1);
        if (isEndless)
            repeatsFrom_ = end_;
    }

    /// Rules are followed from `firstYear` on. False where there are more onsets than a zone has; then they
    /// are not all there.
    bool writeOut(int firstYear) {
        onsets_.clear();
        stepsLeft_ = mostSteps;
        const bool isComplete =
            std::all_of(observances_.begin(), observances_.end(), [&](const Observance& each) {
                return add(each, each.start) &&
                       std::all_of(each.dates.begin(), each.dates.end(),
                                   [&](const LocalTime& date) { return add(each, date); }) &&
                       (!each.rule || follow(each, firstYear));
            });
        return isComplete;
    }

    [[nodiscard]] ZoneChanges zone(bool isComplete) {
        std::stable_sort(onsets_.begin(), onsets_.end(),
                         [](const Onset& a, const Onset& b) { return a.change.at < b.change.at; });
        ZoneChanges result{.before = {.offset = onsets_.front().before}};
        for (Onset& onset : onsets_)
            result.changes.push_back(std::move(onset.change));
        if (isComplete)
            result.repeatsFrom = repeatsFrom_;
        return result;
    }

  private:
    struct Onset {
        ZoneChange change;
        int before = 0;
    };

    bool add(const Observance& each, const LocalTime& time) {
        if (onsets_.size() == mostOnsets)
            return false;
        onsets_.push_back({each.change, each.before});
        onsets_.back().change.at = secondsOf(time) - each.before;
        return true;
    }

    /// Adds the dates of a rule after its start; none where it is not one by which clocks are set.
    bool follow(const Observance& each, int firstYear) {
        OccurrenceIterator dates(*each.rule, each.start, DateKind::time,
                                 TimeZone::defined({}, {.before = {.offset = each.before}}));
        dates.limitSteps(stepsLeft_);
        dates.skipTo({QDate(firstYear, 1, 1), QTime(0, 0)});
        dates.endWith(each.start.day, QDate(end_ - 1, 12, 31));
        std::vector<LocalTime> found;
        int inYear = 0;
        for (auto date = dates.next(); date && found.size() <= mostOnsets; date = dates.next()) {
            inYear = !found.empty() && found.back().day.year() == date->day.year() ? inYear + 1 : 1;
            if (inYear > mostOnsetsAYear)
                return true;
            if (each.start < *date)
                found.push_back(*date);
        }
        stepsLeft_ = dates.stepsLeft();
        return !dates.ranOut() && std::all_of(found.begin(), found.end(),
                                              [&](const LocalTime& date) { return add(each, date); });
    }

    const std::vector<Observance>& observances_;
    std::vector<Onset> onsets_;
    qint64 stepsLeft_ = 0;
    int lastNamed_ = 0;
    /// Rules are followed up to this year.
    int end_ = 0;
    std::optional<int> repeatsFrom_;
};

std::optional<ZoneChanges> changesOf(ComponentView definition) {
    std::vector<Observance> observances;
    for (const char* kind : {"STANDARD", "DAYLIGHT"}) {
        for (const ComponentView& part : definition.components(kind)) {
            if (observances.size() == mostOnsets)
                break;
            if (auto observance = readObservance(part))
                observances.push_back(std::move(*observance));
        }
    }
    if (observances.empty())
        return std::nullopt;
    Onsets onsets(observances);
    // Where there is more than that, what is long past matters least.
    for (const int firstYear : {1900, 1970, 2000}) {
        if (onsets.writeOut(firstYear))
            return onsets.zone(true);
    }
    return onsets.zone(false);
}

}  // namespace

std::optional<TimeZone> zoneDefinedBy(ComponentView definition) {
    static std::mutex mutex;
    static QHash<QByteArray, std::optional<TimeZone>> known;

    const auto identifier = definition.property("TZID");
    qsizetype size = 0;
    for (const Line& line : definition.lines())
        size += line.raw().size();
    if (!identifier || size > longestDefinition)
        return std::nullopt;
    const QByteArray text = definition.text();
    {
        const std::lock_guard lock(mutex);
        const auto found = known.constFind(text);
        if (found != known.cend())
            return *found;
    }
    auto changes = changesOf(definition);
    const auto zone =
        changes ? std::optional(TimeZone::defined(zoneIdentifierIn(*identifier), std::move(*changes)))
                : std::nullopt;
    const std::lock_guard lock(mutex);
    if (known.size() >= mostDefinitionsKept)
        known.clear();
    return *known.insert(text, zone);
}

}  // namespace kestrant::icalendar
