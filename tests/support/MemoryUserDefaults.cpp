#include "support/MemoryUserDefaults.h"

namespace kestrant {

void MemoryUserDefaults::set(const QString& key, const QJsonValue& value) {
    if (values_.value(key) == value)
        return;
    if (value.isUndefined())
        values_.remove(key);
    else
        values_.insert(key, value);
    observers_.notify(key);
}

}  // namespace kestrant
