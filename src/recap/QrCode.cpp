#include "recap/QrCode.h"

#include <qrencode.h>

#include <memory>
#include <span>

namespace kestrant {

std::optional<QrCode> qrCodeOf(QByteArrayView text) {
    constexpr int smallestVersion = 0;
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeData(int(text.size()), reinterpret_cast<const unsigned char*>(text.data()),
                          smallestVersion, QR_ECLEVEL_M),
        &QRcode_free);
    if (!code)
        return std::nullopt;
    QrCode result{code->width, {}};
    const std::span modules(code->data, std::size_t(code->width) * std::size_t(code->width));
    result.modules.reserve(modules.size());
    // The lowest bit is the colour, the others say what the module is for.
    for (const unsigned char module : modules)
        result.modules.push_back((module & 1U) != 0);
    return result;
}

}  // namespace kestrant
