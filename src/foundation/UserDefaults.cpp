#include "foundation/UserDefaults.h"

#include <QJsonArray>

#include <cmath>

namespace kestrant {

std::optional<bool> UserDefaults::boolean(const QString& key) const {
    const QJsonValue value = object(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<qint64> UserDefaults::integer(const QString& key) const {
    const std::optional<double> value = number(key);
    constexpr double exactLimit =
        9007199254740992.0;  // 2^53: above it a double no longer tells integers apart
    if (!value || std::trunc(*value) != *value || std::abs(*value) > exactLimit)
        return {};
    return static_cast<qint64>(*value);
}

std::optional<double> UserDefaults::number(const QString& key) const {
    const QJsonValue value = object(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<QString> UserDefaults::string(const QString& key) const {
    const QJsonValue value = object(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QStringList> UserDefaults::stringList(const QString& key) const {
    const QJsonValue value = object(key);
    if (!value.isArray())
        return {};
    QStringList list;
    for (const QJsonValue& element : value.toArray()) {
        if (!element.isString())
            return {};
        list.append(element.toString());
    }
    return list;
}

void UserDefaults::setStringList(const QString& key, const QStringList& value) {
    set(key, QJsonArray::fromStringList(value));
}

}  // namespace kestrant
