#include "foundation/ZoneOffsets.h"

#include <QDateTime>
#include <QHash>

#include <algorithm>
#include <limits>
#include <mutex>

namespace kestrant {

namespace {

constexpr qint64 distantPast = std::numeric_limits<qint64>::min();
constexpr qint64 distantFuture = std::numeric_limits<qint64>::max();
constexpr qint64 microsecondsPerYear = 31'556'952'000'000;
/// Between these the offsets are kept in a table: before 1800 no zone had transitions. Rules for the time
/// after it are evaluated when somebody asks, which is rare and slower.
constexpr qint64 tableStart = -170 * microsecondsPerYear;
constexpr qint64 tableEnd = 130 * microsecondsPerYear;

QDateTime dateTime(qint64 microseconds) {
    return QDateTime::fromMSecsSinceEpoch(microseconds / 1000, Qt::UTC);
}

}  // namespace

std::shared_ptr<const ZoneOffsets> ZoneOffsets::of(const QTimeZone& zone) {
    static std::mutex mutex;
    static QHash<QByteArray, std::shared_ptr<const ZoneOffsets>> known;

    const QByteArray identifier = zone.id();
    const std::lock_guard lock(mutex);
    std::shared_ptr<const ZoneOffsets>& offsets = known[identifier];
    // A zone without a name is what the machine's own file holds just now, which may change.
    if (!offsets || identifier.isEmpty())
        offsets = std::make_shared<const ZoneOffsets>(zone);
    return offsets;
}

ZoneOffsets::ZoneOffsets(const QTimeZone& zone) : zone_(zone), spans_(computeSpans(tableStart, tableEnd)) {}

qint64 ZoneOffsets::at(qint64 utc) const {
    if (utc >= tableEnd)
        return qint64{zone_.offsetFromUtc(dateTime(utc))} * 1'000'000;
    const auto next = std::upper_bound(spans_.begin(), spans_.end(), utc,
                                       [](qint64 value, const Span& span) { return value < span.end; });
    return next->offset;
}

std::vector<ZoneOffsets::Span> ZoneOffsets::spansBetween(qint64 first, qint64 last) const {
    if (last >= tableEnd)
        return computeSpans(first, last);
    const auto isBefore = [](const Span& span, qint64 value) { return span.end <= value; };
    const auto begin = std::lower_bound(spans_.begin(), spans_.end(), first, isBefore);
    const auto end = std::lower_bound(begin, spans_.end(), last, isBefore);
    return {begin, end + 1};
}

std::vector<ZoneOffsets::Span> ZoneOffsets::computeSpans(qint64 first, qint64 last) const {
    std::vector<Span> spans{
        {distantPast, distantFuture, qint64{zone_.offsetFromUtc(dateTime(first))} * 1'000'000}};
    if (!zone_.hasTransitions())
        return spans;
    qint64 after = first;
    while (true) {
        const QTimeZone::OffsetData transition = zone_.nextTransition(dateTime(after));
        if (!transition.atUtc.isValid())
            break;
        const qint64 at = transition.atUtc.toMSecsSinceEpoch() * 1000;
        if (at > last)
            break;
        const qint64 offset = qint64{transition.offsetFromUtc} * 1'000'000;
        if (offset != spans.back().offset) {
            spans.back().end = at;
            spans.push_back({at, distantFuture, offset});
        }
        // A step further than the transition: at the last listed one the rule for what follows would not be
        // asked.
        after = at + 1000;
    }
    return spans;
}

}  // namespace kestrant
