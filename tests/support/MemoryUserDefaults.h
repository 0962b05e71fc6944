#pragma once

#include "foundation/ObserverList.h"
#include "foundation/UserDefaults.h"

#include <QJsonObject>

namespace kestrant {

/// User defaults that live as long as the object. For one thread.
class MemoryUserDefaults : public UserDefaults {
  public:
    explicit MemoryUserDefaults(QJsonObject values = {}) : values_(std::move(values)) {}

    [[nodiscard]] QJsonValue object(const QString& key) const override { return values_.value(key); }
    void set(const QString& key, const QJsonValue& value) override;
    [[nodiscard]] Subscription observe(std::function<void(const QString&)> observer) override {
        return observers_.add(std::move(observer));
    }
    [[nodiscard]] const QJsonObject& values() const { return values_; }

  private:
    QJsonObject values_;
    ObserverList<QString> observers_;
};

}  // namespace kestrant
