#include "eventkit/icalendar/ItemReading.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kestrant::icalendar {
namespace {

/// The largest number of series with one UID that an override is compared with.
constexpr qsizetype mostCompared = 8;

/// To which of several series of one UID, whose indexes these are, a change belongs.
std::size_t seriesOf(const std::vector<qsizetype>& series, qsizetype change,
                     const std::function<bool(qsizetype, qsizetype)>& fits) {
    const auto behind = std::upper_bound(series.begin(), series.end(), change);
    const auto nearest = static_cast<qsizetype>(std::max<std::ptrdiff_t>(behind - series.begin(), 1)) - 1;
    const qsizetype last = std::max<qsizetype>(nearest - mostCompared, -1);
    for (qsizetype i = nearest; i > last && fits; --i) {
        if (fits(series[static_cast<std::size_t>(i)], change))
            return static_cast<std::size_t>(i);
    }
    return static_cast<std::size_t>(nearest);
}

}  // namespace

std::vector<ItemComponents> itemsAmong(const std::vector<ComponentView>& components,
                                       const std::function<bool(qsizetype)>& isUsable,
                                       const std::function<bool(qsizetype, qsizetype)>& fits) {
    const auto trimmedValue = [](ComponentView component, QByteArrayView name) {
        const auto property = component.property(name);
        return property ? property->value.trimmed() : QByteArray();
    };
    std::vector<ItemComponents> result;
    struct Claimants {
        std::vector<qsizetype> indexes;
        std::vector<std::size_t> places;
    };
    std::map<QByteArray, Claimants> ofUid;
    struct Change {
        QByteArray uid;
        QByteArray recurrenceId;
        qsizetype index;
    };
    std::vector<Change> changes;
    for (qsizetype i = 0; i < std::ssize(components); ++i) {
        if (!isUsable(i))
            continue;
        const ComponentView component = components[static_cast<std::size_t>(i)];
        QByteArray uid = trimmedValue(component, "UID");
        // Some write it with escapes, some without.
        if (uid.contains('\\'))
            uid = unescapedText(uid).toUtf8();
        QByteArray recurrenceId = trimmedValue(component, "RECURRENCE-ID");
        if (!recurrenceId.isEmpty()) {
            changes.push_back({std::move(uid), std::move(recurrenceId), i});
            continue;
        }
        Claimants& claimants = ofUid[uid];
        claimants.indexes.push_back(i);
        claimants.places.push_back(result.size());
        result.push_back({std::move(uid), i, {}});
    }
    for (Change& change : changes) {
        const auto found = ofUid.find(change.uid);
        if (found != ofUid.end()) {
            const auto& [indexes, places] = found->second;
            result[places[seriesOf(indexes, change.index, fits)]].changeIndexes.push_back(change.index);
            continue;
        }
        result.push_back({change.uid + '/' + change.recurrenceId, change.index, {}});
    }
    if (!changes.empty())
        std::sort(result.begin(), result.end(),
                  [](const ItemComponents& a, const ItemComponents& b) { return a.index < b.index; });
    return result;
}

std::optional<QString> readText(ComponentView item, QByteArrayView name) {
    const auto property = item.property(name);
    if (!property || property->value.isEmpty())
        return std::nullopt;
    return unescapedText(property->value);
}

std::optional<DateComponents> readDateProperty(ComponentView item, QByteArrayView name,
                                               const Document& document) {
    const auto property = item.property(name);
    return property ? readDate(*property, document) : std::nullopt;
}

std::vector<EKAlarm> readAlarms(ComponentView item, const Document& document, const TimeZone& local) {
    std::vector<EKAlarm> result;
    for (const ComponentView& alarm : item.components("VALARM"))
        result.push_back(readAlarm(alarm, document, local));
    return result;
}

}  // namespace kestrant::icalendar
