#include "eventkit/model/EventStoreLocation.h"

#include "foundation/StandardFolders.h"

#include <QDir>

namespace kestrant {
namespace {

const QLatin1String vdirScheme("vdir:");
const QLatin1String evolutionName("evolution");

}  // namespace

EventStoreLocation EventStoreLocation::embeddedDefault() {
    return {applicationSupportFolder() + QStringLiteral("/calendars")};
}

tl::expected<EventStoreLocation, TextPair> EventStoreLocation::parse(const QString& text) {
    if (text == evolutionName)
        return evolution();
    QString path = text.mid(vdirScheme.size());
    if (!text.startsWith(vdirScheme) || path.isEmpty())
        return tl::unexpected(TextPair{
            QStringLiteral("“%1” is no store; write vdir:PATH or evolution.").arg(text),
            QStringLiteral("« %1 » n’est pas une base ; écrivez vdir:CHEMIN ou evolution.").arg(text)});
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, QDir::homePath());
    return EventStoreLocation{QDir::cleanPath(QDir::current().absoluteFilePath(path))};
}

QString EventStoreLocation::toString() const {
    return kind == Kind::evolution ? QString(evolutionName) : vdirScheme + folder;
}

EventStoreLocation eventStoreToUse(const std::optional<EventStoreLocation>& named,
                                   const std::optional<QString>& preference,
                                   const EventStoreLocation& embedded,
                                   const std::function<bool()>& desktopHasOne) {
    if (named)
        return *named;
    if (preference)
        return EventStoreLocation::parse(*preference).value_or(embedded);
    // Lists in the folder must not vanish because a service was installed.
    const bool hasLists = !QDir(embedded.folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty();
    return !hasLists && desktopHasOne && desktopHasOne() ? EventStoreLocation::evolution() : embedded;
}

}  // namespace kestrant
