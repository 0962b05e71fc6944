#include "eventkit/icalendar/ItemReading.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kestrant::icalendar {

std::vector<ItemComponents> itemsAmong(const std::vector<ComponentView>& components,
                                       const std::function<bool(qsizetype)>& isUsable) {
    const auto trimmedValue = [](ComponentView component, QByteArrayView name) {
        const auto property = component.property(name);
        return property ? property->value.trimmed() : QByteArray();
    };
    std::vector<ItemComponents> result;
    std::map<QByteArray, std::size_t> firstOfUid;
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
        firstOfUid.emplace(uid, result.size());
        result.push_back({std::move(uid), i, {}});
    }
    for (Change& change : changes) {
        const auto series = firstOfUid.find(change.uid);
        if (series != firstOfUid.end())
            result[series->second].changeIndexes.push_back(change.index);
        else
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

std::vector<EKAlarm> readAlarms(ComponentView item, const AlarmAnchor& anchor, const Document& document,
                                const ZoneCalendar& local) {
    std::vector<EKAlarm> result;
    for (const ComponentView& alarm : item.components("VALARM"))
        result.push_back(readAlarm(alarm, anchor, document, local));
    return result;
}

}  // namespace kestrant::icalendar
