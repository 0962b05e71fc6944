#pragma once

#include "foundation/ObserverList.h"
#include "foundation/ZoneCalendar.h"

#include <QFileSystemWatcher>
#include <QString>

namespace kestrant {

/// The calendar in the machine's time zone: that of TZ where it is set, else that of the system's settings,
/// whose files are watched. Needs an event loop to notice changes by itself. Thread: main.
class SystemCurrentCalendar final : public CurrentCalendar {
  public:
    /// `settingsFolder` is where the zone's files, "localtime" and "timezone", are.
    explicit SystemCurrentCalendar(const QString& settingsFolder = QStringLiteral("/etc"));

    [[nodiscard]] ZoneCalendar calendar() const override { return calendar_; }
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override {
        return observers_.add(std::move(observer));
    }

    /// Looks at the zone again and tells the observers if it is another. For when the machine has woken up.
    void refresh();

  private:
    void watch();

    QString settingsFolder_;
    QFileSystemWatcher watcher_;
    ZoneCalendar calendar_;
    ObserverList<> observers_;
};

/// A calendar in one zone that never changes.
class FixedCurrentCalendar final : public CurrentCalendar {
  public:
    explicit FixedCurrentCalendar(ZoneCalendar calendar) : calendar_(std::move(calendar)) {}
    [[nodiscard]] ZoneCalendar calendar() const override { return calendar_; }
    [[nodiscard]] Subscription observeChanges(std::function<void()>) override { return {}; }

  private:
    ZoneCalendar calendar_;
};

}  // namespace kestrant
