#pragma once

#include "eventkit/items/StorageContents.h"
#include "eventkit/vdir/VdirFiles.h"
#include "foundation/TimeZone.h"

#include <QByteArray>

#include <tl/expected.hpp>

#include <atomic>
#include <optional>
#include <vector>

namespace kestrant::vdir {

/// The result of an update.
struct Updated {
    /// Whether anything came out differently.
    bool changed = false;
    /// Files and folders that could not be read, but may become readable without a change.
    items::Changes unread;
};

/// Brings the contents up to date with the disk. Of a collection's files those named in `changes` are read,
/// or with `everything`, or with no name or the empty one given, those that differ in their stamp; on several
/// threads when there are many. Collections are only looked for where `collections` is given. What cannot be
/// read becomes a problem, and what was known of it stays. Once `isEnding` is true long readings are broken
/// off.
[[nodiscard]] Updated updateContents(items::StorageContents& contents, const QByteArray& root,
                                     const std::optional<tl::expected<RootFolder, int>>& rootFolder,
                                     const items::Changes& changes, const TimeZone& local,
                                     const std::atomic<bool>& isEnding);

}  // namespace kestrant::vdir
