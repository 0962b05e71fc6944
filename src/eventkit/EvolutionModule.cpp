#include "eventkit/EvolutionModule.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QStringList>

namespace kestrant {
namespace {

using MakeStore = EKEventStore* (*)(Scheduler&, const Clock&, const CurrentCalendar&);

TextPair missing(const QString& detail) {
    const TextPair pair = text("The desktop’s calendar service cannot be used: %1",
                               "Le service d’agenda du bureau ne peut pas être utilisé : %1");
    return {pair.english.arg(detail), pair.french.arg(detail)};
}

/// Where the module may be, from the folder of the program.
QStringList candidates() {
    const QString folder = QCoreApplication::applicationDirPath();
    const QString name = QStringLiteral("/kestrant_evolution");
    return {folder + name, folder + QStringLiteral("/../" KESTRANT_MODULE_FOLDER) + name};
}

}  // namespace

tl::expected<std::unique_ptr<EKEventStore>, TextPair>
makeEvolutionStore(Scheduler& scheduler, const Clock& clock, const CurrentCalendar& calendar) {
    QString error;
    for (const QString& path : candidates()) {
        QLibrary library(path);
        const auto make = reinterpret_cast<MakeStore>(library.resolve("kestrantMakeEvolutionStore"));
        if (make)
            return std::unique_ptr<EKEventStore>(make(scheduler, clock, calendar));
        if (error.isEmpty() || QLibrary::isLibrary(path))
            error = library.errorString();
    }
    return tl::unexpected(missing(error));
}

}  // namespace kestrant
