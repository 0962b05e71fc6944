#include "foundation/NotificationCenter.h"

namespace kestrant {

void NotificationCenter::post(const QString& name) {
    const auto found = observers_.find(name);
    if (found != observers_.end())
        found->second.notify();
}

Subscription NotificationCenter::observe(const QString& name, std::function<void()> observer) {
    return observers_[name].add(std::move(observer));
}

}  // namespace kestrant
