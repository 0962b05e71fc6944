#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/ObserverList.h"
#include "foundation/TimeZone.h"

#include <QFileSystemWatcher>
#include <QString>

#include <functional>
#include <utility>

namespace kestrant {

/// The zone that the C library takes for this process (tzset): that of TZ, which is a name or path of zone
/// data, with or without a colon before it, or else a rule; UTC where it makes no sense. Without TZ, that of
/// "localtime" in the folder of the machine's settings. It has the name of the zone data it comes from, where
/// that can be told.
[[nodiscard]] TimeZone systemTimeZone(const QString& settingsFolder);

/// The machine's time zone: that of TZ where it is set, else that of the system's settings,
/// whose files are watched. Needs an event loop to notice changes by itself. Thread: main.
class SystemTimeZone final : public CurrentTimeZone {
  public:
    /// `settingsFolder` is where the zone's files, "localtime" and "timezone", are.
    explicit SystemTimeZone(const QString& settingsFolder = QStringLiteral("/etc"));

    [[nodiscard]] TimeZone zone() const override { return zone_; }
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override {
        return observers_.add(std::move(observer));
    }

    /// Looks at the zone again and tells the observers if it is another. For when the machine has woken up.
    void refresh();

  private:
    void watch();

    QString settingsFolder_;
    QFileSystemWatcher watcher_;
    TimeZone zone_;
    ObserverList<> observers_;
};

}  // namespace kestrant
