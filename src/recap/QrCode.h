#pragma once

#include <QByteArrayView>

#include <optional>
#include <vector>

namespace kestrant {

/// A QR code (ISO/IEC 18004) without the quiet zone of four light modules that belongs around it.
struct QrCode {
    /// Modules in a row.
    int size = 0;
    /// Row by row; true is dark.
    std::vector<bool> modules;

    [[nodiscard]] bool isDark(int row, int column) const {
        return modules[std::size_t(row) * std::size_t(size) + std::size_t(column)];
    }
};

/// The smallest code that holds a text, with error correction M. Absent where none does, which is so for more
/// than 2,331 octets, and for an empty text. Thread: any.
[[nodiscard]] std::optional<QrCode> qrCodeOf(QByteArrayView text);

}  // namespace kestrant
