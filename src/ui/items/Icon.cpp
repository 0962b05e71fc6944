#include "ui/items/Icon.h"

#include "ui/items/LineDrawing.h"

#include <QFile>
#include <QHash>
#include <QPainter>

#include <optional>

namespace kestrant {
namespace {

/// The drawing in resources/icons/panel, read once.
const LineDrawing& drawingOf(const QString& name) {
    static QHash<QString, LineDrawing> drawings;
    const auto found = drawings.constFind(name);
    if (found != drawings.constEnd())
        return *found;
    QFile file(QStringLiteral(":/qt/qml/Kestrant/icons/%1.svg").arg(name));
    std::optional<LineDrawing> drawing;
    if (file.open(QIODevice::ReadOnly))
        drawing = lineDrawingFromSvg(file.readAll());
    if (!drawing)
        qWarning("There is no icon \"%s\".", qUtf8Printable(name));
    return *drawings.insert(name, drawing.value_or(LineDrawing()));
}

}  // namespace

Icon::Icon(QQuickItem* parent) : PaintedItem(parent) {
    setImplicitSize(16, 16);
    setAntialiasing(true);
    connect(this, &Icon::changed, this, [this] { update(); });
}

void Icon::paint(QPainter* painter) {
    if (name_.isEmpty())
        return;
    const double side = qMin(width(), height());
    const double scale = side / 16.0;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(scale, scale);
    const LineDrawing& drawing = drawingOf(name_);
    painter->fillPath(drawing.areas, color_);
    painter->strokePath(drawing.lines,
                        QPen(color_, strokeWidth_ / scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

}  // namespace kestrant
