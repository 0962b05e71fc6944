#pragma once

#include "foundation/TimeZone.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kestrant {

/// The folders of the system's zone data, those that are looked at first in front: TZDIR, where it is set,
/// and the usual ones.
[[nodiscard]] QStringList zoneFolders();

/// Reads a zone of the system's zone data; absent for a name that it does not have, and for one that stands
/// for whatever the machine is set to.
[[nodiscard]] std::optional<ZoneChanges> readNamedZone(const QByteArray& name);

/// Reads a file of zone data (TZif, RFC 8536); absent for any other.
[[nodiscard]] std::optional<ZoneChanges> readZoneFile(const QString& path);
[[nodiscard]] std::optional<ZoneChanges> parseZoneFile(QByteArrayView content);

/// The rule at the end of such a file, as TZ may have it; empty where there is none.
[[nodiscard]] QByteArray ruleInZoneFile(QByteArrayView content);

}  // namespace kestrant
