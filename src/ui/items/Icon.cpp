#include "ui/items/Icon.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>

namespace kestrant {
namespace {

/// Lines to stroke and areas to fill, in a square of 16 points.
struct Drawing {
    QPainterPath lines;
    QPainterPath areas;
};

void polyline(QPainterPath& path, std::initializer_list<QPointF> points) {
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (point == points.begin())
            path.moveTo(*point);
        else
            path.lineTo(*point);
    }
}

Drawing search() {
    Drawing drawing;
    drawing.lines.addEllipse(QPointF(7, 7), 4.5, 4.5);
    polyline(drawing.lines, {{10.3, 10.3}, {13.5, 13.5}});
    return drawing;
}

Drawing sort() {
    Drawing drawing;
    polyline(drawing.lines, {{5, 13}, {5, 3.5}});
    polyline(drawing.lines, {{2.5, 6}, {5, 3.5}, {7.5, 6}});
    polyline(drawing.lines, {{11, 3}, {11, 12.5}});
    polyline(drawing.lines, {{8.5, 10}, {11, 12.5}, {13.5, 10}});
    return drawing;
}

Drawing plus() {
    Drawing drawing;
    polyline(drawing.lines, {{8, 3}, {8, 13}});
    polyline(drawing.lines, {{3, 8}, {13, 8}});
    return drawing;
}

Drawing settings() {
    Drawing drawing;
    polyline(drawing.lines, {{2.5, 5}, {7.6, 5}});
    drawing.lines.addEllipse(QPointF(9.5, 5), 1.9, 1.9);
    polyline(drawing.lines, {{11.4, 5}, {13.5, 5}});
    polyline(drawing.lines, {{2.5, 11}, {4.6, 11}});
    drawing.lines.addEllipse(QPointF(6.5, 11), 1.9, 1.9);
    polyline(drawing.lines, {{8.4, 11}, {13.5, 11}});
    return drawing;
}

Drawing calendar() {
    Drawing drawing;
    drawing.lines.addRoundedRect(QRectF(2.75, 3.75, 10.5, 9.5), 2.5, 2.5);
    polyline(drawing.lines, {{2.75, 7}, {13.25, 7}});
    polyline(drawing.lines, {{5.5, 2.25}, {5.5, 4.5}});
    polyline(drawing.lines, {{10.5, 2.25}, {10.5, 4.5}});
    return drawing;
}

Drawing today() {
    Drawing drawing = calendar();
    drawing.areas.addEllipse(QPointF(8, 10.1), 1.3, 1.3);
    return drawing;
}

Drawing calendarMinus() {
    Drawing drawing = calendar();
    polyline(drawing.lines, {{6, 10.1}, {10, 10.1}});
    return drawing;
}

Drawing arrowRight() {
    Drawing drawing;
    polyline(drawing.lines, {{3, 8}, {13, 8}});
    polyline(drawing.lines, {{9, 4}, {13, 8}, {9, 12}});
    return drawing;
}

Drawing arrowsRight() {
    Drawing drawing;
    for (const double x : {3.5, 8.5})
        polyline(drawing.lines, {{x, 4}, {x + 4, 8}, {x, 12}});
    return drawing;
}

Drawing warning() {
    Drawing drawing;
    polyline(drawing.lines, {{8, 2.5}, {14, 13}, {2, 13}, {8, 2.5}});
    polyline(drawing.lines, {{8, 6.5}, {8, 9.3}});
    drawing.areas.addEllipse(QPointF(8, 11.1), 0.8, 0.8);
    return drawing;
}

Drawing overdue() {
    Drawing drawing;
    drawing.lines.addEllipse(QPointF(8, 8), 5.5, 5.5);
    polyline(drawing.lines, {{8, 5}, {8, 8.2}, {10.1, 9.6}});
    return drawing;
}

Drawing chevronDown() {
    Drawing drawing;
    polyline(drawing.lines, {{5, 6.75}, {8, 9.75}, {11, 6.75}});
    return drawing;
}

Drawing chevronLeft() {
    Drawing drawing;
    polyline(drawing.lines, {{9.5, 4}, {5.5, 8}, {9.5, 12}});
    return drawing;
}

Drawing chevronRight() {
    Drawing drawing;
    polyline(drawing.lines, {{6.5, 4}, {10.5, 8}, {6.5, 12}});
    return drawing;
}

Drawing check() {
    Drawing drawing;
    polyline(drawing.lines, {{3.5, 8.5}, {6.5, 11.5}, {12.5, 4.75}});
    return drawing;
}

Drawing close() {
    Drawing drawing;
    polyline(drawing.lines, {{4.75, 4.75}, {11.25, 11.25}});
    polyline(drawing.lines, {{11.25, 4.75}, {4.75, 11.25}});
    return drawing;
}

Drawing flag() {
    Drawing drawing;
    polyline(drawing.lines, {{4, 2.75}, {4, 13.5}});
    QPainterPath cloth;
    cloth.moveTo(4, 2.75);
    cloth.cubicTo(6, 1.75, 8, 3.75, 12.5, 2.75);
    cloth.lineTo(11, 5.75);
    cloth.lineTo(12.5, 8.75);
    cloth.cubicTo(8, 9.75, 6, 7.75, 4, 8.75);
    cloth.closeSubpath();
    drawing.areas = cloth;
    return drawing;
}

Drawing repeat() {
    Drawing drawing;
    drawing.lines.arcMoveTo(QRectF(3, 3, 10, 10), 20);
    drawing.lines.arcTo(QRectF(3, 3, 10, 10), 20, 300);
    polyline(drawing.lines, {{9.9, 6.2}, {13, 6.3}, {13.1, 3}});
    return drawing;
}

Drawing trash() {
    Drawing drawing;
    polyline(drawing.lines, {{3, 4.5}, {13, 4.5}});
    polyline(drawing.lines, {{6, 4.5}, {6, 2.75}, {10, 2.75}, {10, 4.5}});
    polyline(drawing.lines, {{4.25, 4.5}, {4.9, 13.25}, {11.1, 13.25}, {11.75, 4.5}});
    polyline(drawing.lines, {{6.9, 7}, {7.05, 10.75}});
    polyline(drawing.lines, {{9.1, 7}, {8.95, 10.75}});
    return drawing;
}

Drawing circle() {
    Drawing drawing;
    drawing.lines.addEllipse(QPointF(8, 8), 5.25, 5.25);
    polyline(drawing.lines, {{5.6, 8.2}, {7.3, 9.9}, {10.5, 6.2}});
    return drawing;
}

Drawing edit() {
    Drawing drawing;
    polyline(drawing.lines, {{3, 13}, {3.6, 10.2}, {10.9, 2.9}, {13.1, 5.1}, {5.8, 12.4}, {3, 13}});
    polyline(drawing.lines, {{9.3, 4.5}, {11.5, 6.7}});
    return drawing;
}

Drawing list() {
    Drawing drawing;
    for (const double y : {4.5, 8.0, 11.5}) {
        polyline(drawing.lines, {{6, y}, {13, y}});
        drawing.areas.addEllipse(QPointF(3.25, y), 1.0, 1.0);
    }
    return drawing;
}

Drawing notes() {
    Drawing drawing;
    for (const double y : {4.0, 8.0})
        polyline(drawing.lines, {{2.5, y}, {13.5, y}});
    polyline(drawing.lines, {{2.5, 12}, {9, 12}});
    return drawing;
}

Drawing bell() {
    Drawing drawing;
    QPainterPath& body = drawing.lines;
    body.moveTo(3, 11.5);
    body.cubicTo(4.4, 10.2, 4.4, 9, 4.4, 7);
    body.cubicTo(4.4, 4.6, 6, 3, 8, 3);
    body.cubicTo(10, 3, 11.6, 4.6, 11.6, 7);
    body.cubicTo(11.6, 9, 11.6, 10.2, 13, 11.5);
    body.closeSubpath();
    polyline(body, {{6.9, 13.6}, {9.1, 13.6}});
    return drawing;
}

Drawing priority() {
    Drawing drawing;
    for (const double x : {5.0, 8.0, 11.0}) {
        polyline(drawing.lines, {{x, 3.5}, {x, 9}});
        drawing.areas.addEllipse(QPointF(x, 12), 0.9, 0.9);
    }
    return drawing;
}

Drawing mouse() {
    Drawing drawing;
    drawing.lines.addRoundedRect(QRectF(4, 2.5, 8, 11), 4, 4);
    polyline(drawing.lines, {{8, 2.5}, {8, 6.5}, {12, 6.5}});
    return drawing;
}

Drawing eye() {
    Drawing drawing;
    drawing.lines.moveTo(1.75, 8);
    drawing.lines.cubicTo(4.5, 2.9, 11.5, 2.9, 14.25, 8);
    drawing.lines.cubicTo(11.5, 13.1, 4.5, 13.1, 1.75, 8);
    drawing.lines.addEllipse(QPointF(8, 8), 2, 2);
    return drawing;
}

const Drawing& drawingOf(const QString& name) {
    static const QHash<QString, Drawing> drawings{
        {QStringLiteral("search"), search()},
        {QStringLiteral("sort"), sort()},
        {QStringLiteral("plus"), plus()},
        {QStringLiteral("settings"), settings()},
        {QStringLiteral("calendar"), calendar()},
        {QStringLiteral("today"), today()},
        {QStringLiteral("overdue"), overdue()},
        {QStringLiteral("calendarMinus"), calendarMinus()},
        {QStringLiteral("arrowRight"), arrowRight()},
        {QStringLiteral("arrowsRight"), arrowsRight()},
        {QStringLiteral("warning"), warning()},
        {QStringLiteral("chevronDown"), chevronDown()},
        {QStringLiteral("chevronLeft"), chevronLeft()},
        {QStringLiteral("chevronRight"), chevronRight()},
        {QStringLiteral("check"), check()},
        {QStringLiteral("close"), close()},
        {QStringLiteral("flag"), flag()},
        {QStringLiteral("repeat"), repeat()},
        {QStringLiteral("trash"), trash()},
        {QStringLiteral("circle"), circle()},
        {QStringLiteral("edit"), edit()},
        {QStringLiteral("list"), list()},
        {QStringLiteral("bell"), bell()},
        {QStringLiteral("notes"), notes()},
        {QStringLiteral("priority"), priority()},
        {QStringLiteral("mouse"), mouse()},
        {QStringLiteral("eye"), eye()},
    };
    static const Drawing nothing;
    const auto found = drawings.constFind(name);
    return found == drawings.constEnd() ? nothing : *found;
}

}  // namespace

Icon::Icon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setImplicitSize(16, 16);
    setAntialiasing(true);
    connect(this, &Icon::changed, this, [this] { update(); });
}

void Icon::paint(QPainter* painter) {
    const double side = qMin(width(), height());
    const double scale = side / 16.0;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(scale, scale);
    const Drawing& drawing = drawingOf(name_);
    painter->fillPath(drawing.areas, color_);
    painter->strokePath(drawing.lines,
                        QPen(color_, strokeWidth_ / scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

}  // namespace kestrant
