#pragma once

#include <QString>

#include <optional>

namespace kestrant {

/// The file of a part of the program that is loaded when it is wanted, so that the program starts without the
/// libraries behind it: beside the program or where it was installed. Absent where there is none. Looks at
/// the disk. Thread: any, once the application object is there.
[[nodiscard]] std::optional<QString> moduleFile(const QString& name);

}  // namespace kestrant
