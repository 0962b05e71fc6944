#include "app/OpenEventStore.h"

#include "eventkit/model/UnusableEventStore.h"
#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/Modules.h"

#include <QLibrary>

namespace kestrant {
namespace {

using MakeStore = EKEventStore* (*)(Scheduler&, const Clock&, const CurrentTimeZone&, const EventStoreUse&);

std::optional<QString> modulePath() {
    return moduleFile(QStringLiteral("kestrant_evolution.so"));
}

/// Opens the module and makes the store; once opened it stays. Fails, with a sentence, where it or a library
/// that it needs is missing. Nothing is asked of the service yet.
tl::expected<std::unique_ptr<EKEventStore>, TextPair> makeEvolutionStore(Scheduler& scheduler,
                                                                         const Clock& clock,
                                                                         const CurrentTimeZone& currentZone,
                                                                         const EventStoreUse& use) {
    const auto path = modulePath();
    if (!path)
        return tl::unexpected(text("Kestrant was built or installed without the desktop’s calendar service.",
                                   "Kestrant a été compilé ou installé sans le service d’agenda du bureau."));
    QLibrary library(*path);
    if (const auto make = reinterpret_cast<MakeStore>(library.resolve("kestrantMakeEvolutionStore")))
        return std::unique_ptr<EKEventStore>(make(scheduler, clock, currentZone, use));
    const TextPair pair = text("The desktop’s calendar service cannot be used: %1",
                               "Le service d’agenda du bureau est inutilisable : %1");
    return tl::unexpected(
        TextPair{pair.english.arg(library.errorString()), pair.french.arg(library.errorString())});
}

}  // namespace

bool hasEvolutionModule() {
    return modulePath().has_value();
}

std::unique_ptr<EKEventStore> openEventStore(const EventStoreLocation& location, Scheduler& scheduler,
                                             const Clock& clock, const CurrentTimeZone& currentZone,
                                             const EventStoreUse& use) {
    if (location.kind == EventStoreLocation::Kind::vdir)
        return std::make_unique<VdirEventStore>(location.folder, scheduler, clock, currentZone);
    auto store = makeEvolutionStore(scheduler, clock, currentZone, use);
    if (store)
        return std::move(*store);
    return std::make_unique<UnusableEventStore>(scheduler, EKError{EKError::Code::storage, store.error()});
}

}  // namespace kestrant
