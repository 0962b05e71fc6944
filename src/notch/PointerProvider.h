#pragma once

#include <QPointF>

#include <optional>

namespace kestrant {

/// Where the pointer is. Thread: main.
class PointerProvider {
  public:
    virtual ~PointerProvider() = default;
    /// Global location in points, y upwards. Absent while the platform does not tell, as it happens above
    /// windows of other programs in some sessions; that counts as being outside. Called 60 times a second:
    /// must be cheap.
    [[nodiscard]] virtual std::optional<QPointF> location() const = 0;
};

}  // namespace kestrant
