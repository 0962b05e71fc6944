#include "foundation/CurrentCalendars.h"

#include <QFile>

namespace kestrant {

SystemCurrentCalendar::SystemCurrentCalendar(const QString& settingsFolder)
    : timeZoneFile_(settingsFolder + QStringLiteral("/timezone"))
    , calendar_(QTimeZone::systemTimeZone()) {
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
    // A file that was replaced is no longer watched.
    if (watcher_.files().isEmpty() && QFile::exists(timeZoneFile_))
        watcher_.addPath(timeZoneFile_);
}

void SystemCurrentCalendar::refresh() {
    const ZoneCalendar calendar(QTimeZone::systemTimeZone());
    if (calendar == calendar_)
        return;
    calendar_ = calendar;
    observers_.notify();
}

}  // namespace kestrant
