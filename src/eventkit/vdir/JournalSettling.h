#pragma once

#include "eventkit/items/Journal.h"

#include <QByteArray>

namespace kestrant::vdir {

/// Whether a note names nothing but items below the folder.
[[nodiscard]] bool staysInFolder(const items::Journal& journal);

/// Takes the first step of a change below this folder back unless the second was carried out. False where
/// that cannot be found out, or not be done, now. No other process may be in the middle of the change.
[[nodiscard]] bool settle(const items::Journal& journal, const QByteArray& root);

}  // namespace kestrant::vdir
