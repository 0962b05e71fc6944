#pragma once

#include "foundation/Subscription.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kestrant {

/// A per-user key/value store with typed reads that tell absent from present. A value of another type than
/// the one asked for is absent: a JSON boolean is a Bool, an integral number an Int, any number a Double.
/// Reads and writes are safe from any thread; observers are registered and told on the thread that created
/// the store.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The stored value; QJsonValue::Undefined when the key is absent.
    [[nodiscard]] virtual QJsonValue object(const QString& key) const = 0;
    /// Stores a value; QJsonValue::Undefined removes the key.
    virtual void set(const QString& key, const QJsonValue& value) = 0;
    /// Told, with the key, after a value has changed, whoever changed it (another process too).
    [[nodiscard]] virtual Subscription observe(std::function<void(const QString& key)> observer) = 0;

    void remove(const QString& key) { set(key, QJsonValue(QJsonValue::Undefined)); }

    [[nodiscard]] std::optional<bool> boolean(const QString& key) const;
    [[nodiscard]] std::optional<qint64> integer(const QString& key) const;
    [[nodiscard]] std::optional<double> number(const QString& key) const;
    [[nodiscard]] std::optional<QString> string(const QString& key) const;
    /// Absent when any element is not a text.
    [[nodiscard]] std::optional<QStringList> stringList(const QString& key) const;
    void setStringList(const QString& key, const QStringList& value);
};

}  // namespace kestrant
