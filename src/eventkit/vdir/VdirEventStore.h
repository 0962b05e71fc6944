#pragma once

#include "eventkit/items/ItemEventStore.h"
#include "foundation/CurrentTimeZone.h"

namespace kestrant {

/// The database in a folder of iCalendar files (vdir): one sub-folder for each
/// list, one file for each item, shared with whatever other programs and
/// synchronisers use it.
class VdirEventStore final : public items::ItemEventStore {
  public:
    /// Nothing is read before access is requested; the folder is then created
    /// where it is missing.
    VdirEventStore(const QString& root, Scheduler& scheduler, const Clock& clock,
                   const CurrentTimeZone& currentZone);
};

}  // namespace kestrant
