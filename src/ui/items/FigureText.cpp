#include "ui/items/FigureText.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <functional>

namespace kestrant {
namespace {

/// Calls `place` with every piece of the text, figures one by one, and the point where it begins; returns the
/// width of the whole.
double layOut(const QString& text, const QFont& font,
              const std::function<void(double x, const QString& piece)>& place) {
    const QFontMetricsF metrics(font);
    double figureWidth = 0;
    for (char16_t figure = u'0'; figure <= u'9'; ++figure)
        figureWidth = std::max(figureWidth, metrics.horizontalAdvance(QChar(figure)));
    double x = 0;
    for (qsizetype at = 0; at < text.size();) {
        if (text.at(at).isDigit()) {
            const QString figure = text.mid(at++, 1);
            place(x + (figureWidth - metrics.horizontalAdvance(figure)) / 2, figure);
            x += figureWidth;
            continue;
        }
        qsizetype end = at;
        while (end < text.size() && !text.at(end).isDigit())
            ++end;
        const QString words = text.mid(at, end - at);
        place(x, words);
        x += metrics.horizontalAdvance(words);
        at = end;
    }
    return x;
}

}  // namespace

FigureText::FigureText(QQuickItem* parent) : PaintedItem(parent) {
    connect(this, &FigureText::changed, this, &FigureText::measure);
    measure();
}

void FigureText::measure() {
    const double width = layOut(text_, font_, [](double, const QString&) {});
    setImplicitSize(std::ceil(width), std::ceil(QFontMetricsF(font_).height()));
    update();
}

void FigureText::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::TextAntialiasing);
    painter->setFont(font_);
    painter->setPen(color_);
    const QFontMetricsF metrics(font_);
    const double baseline = std::round((height() - metrics.height()) / 2 + metrics.ascent());
    layOut(text_, font_,
           [&](double x, const QString& piece) { painter->drawText(QPointF(x, baseline), piece); });
}

}  // namespace kestrant
