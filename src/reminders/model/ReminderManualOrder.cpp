#include "reminders/model/ReminderManualOrder.h"

#include <QHash>
#include <QSet>

namespace kestrant {

QStringList mergedManualOrder(const QStringList& previous, const QStringList& arranged) {
    const QSet<QString> moving(arranged.begin(), arranged.end());
    QStringList result;
    result.reserve(previous.size() + arranged.size());
    auto next = arranged.begin();
    for (const QString& id : previous) {
        if (!moving.contains(id))
            result.append(id);
        else if (next != arranged.end())
            result.append(*next++);
    }
    for (; next != arranged.end(); ++next)
        result.append(*next);
    return result;
}

QStringList withPlaceRestored(QStringList order, const QStringList& former, const QString& id) {
    const auto formerPlace = former.indexOf(id);
    if (formerPlace < 0 || order.contains(id))
        return order;
    QHash<QString, qsizetype> places;
    for (qsizetype place = 0; place < order.size(); ++place)
        places.insert(order[place], place);
    qsizetype place = 0;
    for (qsizetype before = formerPlace - 1; before >= 0; --before) {
        if (const auto found = places.constFind(former[before]); found != places.cend()) {
            place = *found + 1;
            break;
        }
    }
    order.insert(place, id);
    return order;
}

}  // namespace kestrant
