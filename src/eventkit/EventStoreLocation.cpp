#include "eventkit/EventStoreLocation.h"

#include "foundation/StandardFolders.h"

#include <QDir>

namespace kestrant {

EventStoreLocation EventStoreLocation::embeddedDefault() {
    return {applicationSupportFolder() + QStringLiteral("/calendars")};
}

tl::expected<EventStoreLocation, TextPair> EventStoreLocation::parse(const QString& text) {
    const QLatin1String scheme("vdir:");
    QString path = text.mid(scheme.size());
    if (!text.startsWith(scheme) || path.isEmpty())
        return tl::unexpected(
            TextPair{QStringLiteral("“%1” is no store; write vdir:PATH.").arg(text),
                     QStringLiteral("« %1 » n’est pas une base ; écrivez vdir:CHEMIN.").arg(text)});
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, QDir::homePath());
    return EventStoreLocation{QDir::cleanPath(QDir::current().absoluteFilePath(path))};
}

}  // namespace kestrant
