#pragma once

#include <QStringList>

namespace kestrant {

/// Puts `arranged` into a longer order: the places its ids hold in `previous` are filled anew, first to last,
/// and what is left over goes to the end. Ids of `previous` that are not in `arranged` keep their places.
[[nodiscard]] QStringList mergedManualOrder(const QStringList& previous, const QStringList& arranged);

}  // namespace kestrant
