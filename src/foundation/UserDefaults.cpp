#include "foundation/UserDefaults.h"

#include <QJsonArray>

#include <cmath>

namespace kestrant {

std::optional<bool> UserDefaults::boolean(const QString& key) const {
    const QJsonValue value = object(key);
    if (!value.isBool())
        return std::nullopt;
    return value.toBool();
}

std::optional<qint64> UserDefaults::integer(const QString& key) const {
    const QJsonValue value = object(key);
    // toInteger() gives its default for a number that is no integer, so two defaults tell whether it is one.
    if (!value.isDouble() || value.toInteger(0) != value.toInteger(1))
        return std::nullopt;
    return value.toInteger();
}

std::optional<double> UserDefaults::number(const QString& key) const {
    const QJsonValue value = object(key);
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        return std::nullopt;
    return value.toDouble();
}

std::optional<QString> UserDefaults::string(const QString& key) const {
    const QJsonValue value = object(key);
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

std::optional<QStringList> UserDefaults::stringList(const QString& key) const {
    const QJsonValue value = object(key);
    if (!value.isArray())
        return std::nullopt;
    QStringList texts;
    const QJsonArray array = value.toArray();
    texts.reserve(array.size());
    for (const QJsonValue element : array) {
        if (!element.isString())
            return std::nullopt;
        texts.append(element.toString());
    }
    return texts;
}

void UserDefaults::setStringList(const QString& key, const QStringList& value) {
    set(key, QJsonArray::fromStringList(value));
}

}  // namespace kestrant
