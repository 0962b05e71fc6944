#include "foundation/CurrentCalendars.h"

#include "foundation/SystemTimeZone.h"

#include <QFile>

namespace kestrant {

SystemCurrentCalendar::SystemCurrentCalendar(const QString& settingsFolder)
    : settingsFolder_(settingsFolder)
    , calendar_(systemTimeZone(settingsFolder)) {
    // "localtime" is a link that is replaced, which only its folder shows; "timezone" may be written in
    // place.
    watcher_.addPath(settingsFolder);
    watch();
    const auto changed = [this] {
        watch();
        refresh();
    };
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_, changed);
    QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, &watcher_, changed);
}

void SystemCurrentCalendar::watch() {
    const QString timeZoneFile = settingsFolder_ + QStringLiteral("/timezone");
    // A file that was replaced is no longer watched.
    if (watcher_.files().isEmpty() && QFile::exists(timeZoneFile))
        watcher_.addPath(timeZoneFile);
}

void SystemCurrentCalendar::refresh() {
    const ZoneCalendar calendar(systemTimeZone(settingsFolder_));
    if (calendar == calendar_)
        return;
    calendar_ = calendar;
    observers_.notify();
}

}  // namespace kestrant
