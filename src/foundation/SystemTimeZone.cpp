#include "foundation/SystemTimeZone.h"

#include "foundation/ZoneFile.h"
#include "foundation/ZoneRule.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <utility>

namespace kestrant {
namespace {

/// A chain of links is never longer, unless it is a ring.
constexpr int mostLinks = 20;

bool isPrintable(const QByteArray& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) ? file.read(1'000'000) : QByteArray();
}

/// The zone whose file lies at this path of the zone data.
std::optional<TimeZone> zoneAt(const QString& path) {
    for (const QString& folder : zoneFolders()) {
        if (!path.startsWith(folder + QLatin1Char('/')))
            continue;
        if (auto zone = TimeZone::named(QFile::encodeName(path.mid(folder.size() + 1))))
            return zone;
    }
    return std::nullopt;
}

/// A zone of the zone data with the very same content: the one that the machine says it is set to, or else
/// the first one.
std::optional<TimeZone> zoneLike(const QByteArray& content, const QString& settingsFolder) {
    const QByteArray set = contentOf(settingsFolder + QStringLiteral("/timezone")).trimmed();
    for (const QString& folder : zoneFolders()) {
        const QString path = folder + QLatin1Char('/') + QFile::decodeName(set);
        if (!set.isEmpty() && contentOf(path) == content)
            return zoneAt(path);
    }
    for (const QString& folder : zoneFolders()) {
        QStringList paths;
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            files.next();
            if (files.fileInfo().size() == content.size())
                paths.append(files.filePath());
        }
        paths.sort();
        for (const QString& path : std::as_const(paths)) {
            if (contentOf(path) != content)
                continue;
            if (auto zone = zoneAt(path))
                return zone;
        }
    }
    return std::nullopt;
}

std::optional<TimeZone> zoneOfFile(const QString& path, const QString& settingsFolder) {
    // A link says which of several names for the same zone is meant.
    QString target = QDir::cleanPath(path);
    for (int i = 0; i < mostLinks; ++i) {
        if (auto zone = zoneAt(target))
            return zone;
        const QFileInfo info(target);
        if (!info.isSymLink())
            break;
        target = QDir::cleanPath(info.symLinkTarget());
    }
    const QByteArray content = contentOf(path);
    auto changes = parseZoneFile(content);
    if (!changes)
        return std::nullopt;
    if (auto zone = zoneLike(content, settingsFolder))
        return zone;
    const QByteArray rule = ruleInZoneFile(content);
    return TimeZone::defined(rule.isEmpty() ? "Local" : rule, std::move(*changes));
}

}  // namespace

TimeZone systemTimeZone(const QString& settingsFolder) {
    if (!qEnvironmentVariableIsSet("TZ"))
        return zoneOfFile(settingsFolder + QStringLiteral("/localtime"), settingsFolder).value_or(TimeZone());
    QByteArray text = qgetenv("TZ");
    if (text.startsWith(':'))
        text.remove(0, 1);
    if (text.isEmpty())
        return {};
    if (text.startsWith('/')) {
        if (auto zone = zoneOfFile(QFile::decodeName(text), settingsFolder))
            return *std::move(zone);
    } else {
        for (const QString& folder : zoneFolders()) {
            if (auto zone = zoneOfFile(folder + QLatin1Char('/') + QFile::decodeName(text), settingsFolder))
                return *std::move(zone);
        }
    }
    const auto rule = ZoneRule::parse(text);
    return rule ? TimeZone::defined(isPrintable(text) ? text : "Local", rule->zone()) : TimeZone();
}

SystemTimeZone::SystemTimeZone(const QString& settingsFolder)
    : settingsFolder_(settingsFolder)
    , zone_(systemTimeZone(settingsFolder)) {
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

void SystemTimeZone::watch() {
    const QString timeZoneFile = settingsFolder_ + QStringLiteral("/timezone");
    // A file that was replaced is no longer watched.
    if (watcher_.files().isEmpty() && QFile::exists(timeZoneFile))
        watcher_.addPath(timeZoneFile);
}

void SystemTimeZone::refresh() {
    const TimeZone zone(systemTimeZone(settingsFolder_));
    if (zone == zone_)
        return;
    zone_ = zone;
    observers_.notify();
}

}  // namespace kestrant
