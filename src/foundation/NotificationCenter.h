#pragma once

#include "foundation/ObserverList.h"
#include "foundation/Subscription.h"

#include <QString>

#include <functional>
#include <map>

namespace kestrant {

/// Application-wide events with fixed names and no payload. Observers run at once, in the order they
/// registered. Thread: main only.
class NotificationCenter {
  public:
    void post(const QString& name);
    [[nodiscard]] Subscription observe(const QString& name, std::function<void()> observer);

  private:
    std::map<QString, ObserverList<>> observers_;
};

}  // namespace kestrant
