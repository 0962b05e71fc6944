#include "reminders/ReminderManualOrder.h"

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

}  // namespace kestrant
