#include "platform/linux/window/CameraHousing.h"

#include <QFile>
#include <QRegularExpression>

#include <array>
#include <cmath>

namespace kestrant {
namespace {

/// A display with a housing that reaches into its picture, in pixels.
struct KnownPanel {
    QByteArrayView compatible;
    QSizeF panel;
    QSizeF housing;
};

/// Names as in the kernel's Documentation/devicetree/bindings/arm/apple.yaml, sizes of the panels as their
/// makers publish them. Below the housing each has a picture of 16 : 10, which gives its height. The housing
/// of the larger panels is 370 pixels wide, of 254 an inch; the others' is taken to be as wide in inches, of
/// 224 pixels each.
constexpr QSizeF pro14(3024, 1964);
constexpr QSizeF pro16(3456, 2234);
constexpr QSizeF air13(2560, 1664);
constexpr QSizeF air15(2880, 1864);
constexpr QSizeF proHousing(370, 74);
constexpr QSizeF airHousing(326, 64);
constexpr std::array knownPanels{
    KnownPanel{"apple,j314s", pro14, proHousing}, KnownPanel{"apple,j314c", pro14, proHousing},
    KnownPanel{"apple,j414s", pro14, proHousing}, KnownPanel{"apple,j414c", pro14, proHousing},
    KnownPanel{"apple,j504", pro14, proHousing},  KnownPanel{"apple,j514s", pro14, proHousing},
    KnownPanel{"apple,j514c", pro14, proHousing}, KnownPanel{"apple,j514m", pro14, proHousing},
    KnownPanel{"apple,j316s", pro16, proHousing}, KnownPanel{"apple,j316c", pro16, proHousing},
    KnownPanel{"apple,j416s", pro16, proHousing}, KnownPanel{"apple,j416c", pro16, proHousing},
    KnownPanel{"apple,j516s", pro16, proHousing}, KnownPanel{"apple,j516c", pro16, proHousing},
    KnownPanel{"apple,j516m", pro16, proHousing}, KnownPanel{"apple,j413", air13, airHousing},
    KnownPanel{"apple,j613", air13, airHousing},  KnownPanel{"apple,j415", air15, airHousing},
    KnownPanel{"apple,j615", air15, airHousing},
};

/// The kernel leaves the rows beside the housing out of the picture unless it is told not to (show_notch of
/// its display driver): the display is then shorter, by more than this part of its height, and has no
/// housing.
constexpr double shapeTolerance = 0.01;

/// Absent where the setting says nothing; an empty size for none.
std::optional<QSizeF> parse(const QString& setting) {
    if (setting == QLatin1String("none"))
        return QSizeF(0, 0);
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*(\d+(?:\.\d+)?)\s*[x×]\s*(\d+(?:\.\d+)?)\s*$)"));
    const QRegularExpressionMatch match = pattern.match(setting);
    if (!match.hasMatch())
        return {};
    return QSizeF(match.captured(1).toDouble(), match.captured(2).toDouble());
}

}  // namespace

std::optional<QSizeF> CameraHousings::of(const Screen& screen) const {
    if (const auto chosen = parse(setting))
        return chosen->isEmpty() ? std::nullopt : chosen;
    const QList<QByteArray> names = compatible.split('\0');
    for (const KnownPanel& known : knownPanels) {
        if (!names.contains(known.compatible))
            continue;
        const double scale = screen.frame.width() / known.panel.width();
        if (std::abs(screen.frame.height() / (known.panel.height() * scale) - 1) < shapeTolerance)
            return known.housing * scale;
    }
    return {};
}

bool isBuiltIn(const QString& screenName) {
    for (const char* connector : {"eDP", "LVDS", "DSI"}) {
        if (screenName.startsWith(QLatin1String(connector)))
            return true;
    }
    return false;
}

QByteArray readCompatible() {
    QFile file(QStringLiteral("/proc/device-tree/compatible"));
    return file.open(QIODevice::ReadOnly) ? file.read(4096) : QByteArray();
}

Screen withCameraHousing(Screen screen, QSizeF housing) {
    const QRectF& frame = screen.frame;
    const double beside = (frame.width() - housing.width()) / 2;
    // With y upwards the larger y is the top.
    const double lower = frame.y() + frame.height() - housing.height();
    screen.auxiliaryTopLeftArea = QRectF(frame.x(), lower, beside, housing.height());
    screen.auxiliaryTopRightArea =
        QRectF(frame.x() + beside + housing.width(), lower, beside, housing.height());
    screen.topSafeAreaInset = housing.height();
    return screen;
}

}  // namespace kestrant
