#include "eventkit/vdir/VdirEventStore.h"

#include "eventkit/vdir/VdirStorage.h"
#include "foundation/CurrentTimeZone.h"

#include <QDir>
#include <QFile>

#include <utility>

namespace kestrant {

VdirEventStore::VdirEventStore(const QString& root, Scheduler& scheduler, const Clock& clock,
                               const CurrentTimeZone& currentZone)
    : ItemEventStore(
          scheduler, clock, currentZone,
          [&](items::StorageObserver observer) {
              return std::make_unique<vdir::VdirStorage>(
                  QFile::encodeName(QDir::cleanPath(QDir(root).absolutePath())), std::move(observer.changed));
          },
          std::make_unique<items::SingleQueue>()) {}

}  // namespace kestrant
