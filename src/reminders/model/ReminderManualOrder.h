#pragma once

#include <QStringList>

namespace kestrant {

/// Puts `arranged` into a longer order: the places its ids hold in `previous` are filled anew, first to last,
/// and what is left over goes to the end. Ids of `previous` that are not in `arranged` keep their places.
[[nodiscard]] QStringList mergedManualOrder(const QStringList& previous, const QStringList& arranged);

/// Puts an id that was away back into an order, where it stood in `former`: behind the nearest one before it
/// there that is still present. Changes nothing when it is present, or was not placed in `former` either.
[[nodiscard]] QStringList withPlaceRestored(QStringList order, const QStringList& former, const QString& id);

}  // namespace kestrant
