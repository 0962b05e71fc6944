#pragma once

#include <QByteArray>

#include <optional>

namespace kestrant::evolution {

/// Whether the service keeps changes of a list that it has not sent to the list's server. Its clients are
/// told nothing of them but the folder of the list's cache. There, in the file cache.db, each item has a
/// state, which is 0 once it has been sent (ECache and EOfflineState of libebackend). Absent where there is
/// no such file, as for local lists, or it cannot be read now. Thread: any; blocks for the disk.
[[nodiscard]] std::optional<bool> hasUnsentChanges(const QByteArray& cacheFolder);

}  // namespace kestrant::evolution
