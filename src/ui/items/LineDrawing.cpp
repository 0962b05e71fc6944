#include "ui/items/LineDrawing.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kestrant {
namespace {

constexpr double degreesPerRadian = 180.0 / 3.14159265358979323846;

/// Walks over the commands and numbers of a path's data.
class PathData {
  public:
    explicit PathData(QStringView text) : text_(text) {}

    /// The next command, else 0 at the end and where a number stands.
    [[nodiscard]] char16_t command() {
        skipSeparators();
        if (at_ == text_.size() || !text_[at_].isLetter())
            return 0;
        return text_[at_++].unicode();
    }
    [[nodiscard]] bool isAtEnd() {
        skipSeparators();
        return at_ == text_.size();
    }
    [[nodiscard]] std::optional<double> number() {
        skipSeparators();
        const qsizetype begin = at_;
        bool hasPoint = false;
        for (; at_ < text_.size(); ++at_) {
            const QChar letter = text_[at_];
            const bool isSign = (letter == u'-' || letter == u'+') && at_ == begin;
            const bool isPoint = letter == u'.' && !hasPoint;
            if (!isSign && !isPoint && !letter.isDigit())
                break;
            hasPoint = hasPoint || isPoint;
        }
        bool isNumber = false;
        const double value = text_.mid(begin, at_ - begin).toDouble(&isNumber);
        return isNumber ? std::optional(value) : std::nullopt;
    }
    /// So many numbers, else nothing.
    [[nodiscard]] std::optional<std::vector<double>> numbers(std::size_t count) {
        std::vector<double> values;
        while (values.size() < count) {
            const std::optional<double> value = number();
            if (!value)
                return std::nullopt;
            values.push_back(*value);
        }
        return values;
    }

  private:
    void skipSeparators() {
        while (at_ < text_.size() && (text_[at_].isSpace() || text_[at_] == u','))
            ++at_;
    }

    QStringView text_;
    qsizetype at_ = 0;
};

/// An arc between two points of an ellipse, by its centre (SVG 2, appendix B.2.4).
void arcTo(QPainterPath& path, QPointF radii, bool isLarge, bool isClockwise, QPointF end) {
    const QPointF begin = path.currentPosition();
    const QPointF half = (begin - end) / 2;
    const double excess = std::pow(half.x() / radii.x(), 2) + std::pow(half.y() / radii.y(), 2);
    radii *= std::max(1.0, std::sqrt(excess));
    const double ratio = std::sqrt(std::max(0.0, 1.0 / std::min(1.0, excess) - 1.0));
    const double side = isLarge == isClockwise ? -ratio : ratio;
    const QPointF offset(side * radii.x() * half.y() / radii.y(), -side * radii.y() * half.x() / radii.x());
    const QPointF centre = (begin + end) / 2 + offset;
    // Angles run counterclockwise, the ordinate downwards.
    const auto angleOf = [&](QPointF place) {
        return degreesPerRadian *
               std::atan2((centre.y() - place.y()) / radii.y(), (place.x() - centre.x()) / radii.x());
    };
    double sweep = angleOf(end) - angleOf(begin);
    if (isClockwise && sweep > 0)
        sweep -= 360;
    else if (!isClockwise && sweep < 0)
        sweep += 360;
    path.arcTo(QRectF(centre - radii, centre + radii), angleOf(begin), sweep);
}

/// How many numbers a command takes; nothing for one that is not known.
std::optional<std::size_t> numbersOf(char16_t command) {
    switch (command) {
    case u'M':
    case u'L':
        return 2;
    case u'H':
    case u'V':
        return 1;
    case u'C':
        return 6;
    case u'A':
        return 7;
    default:
        return std::nullopt;
    }
}

std::optional<QPainterPath> pathFrom(QStringView text) {
    PathData data(text);
    QPainterPath path;
    char16_t letter = 0;
    while (!data.isAtEnd()) {
        // A command holds for all numbers up to the next one; after a move they are lines.
        const char16_t next = data.command();
        if (next)
            letter = next;
        else if (letter == u'M' || letter == u'm')
            letter = letter == u'M' ? u'L' : u'l';
        const char16_t command = QChar::toUpper(letter);
        if (command == u'Z' && next) {
            path.closeSubpath();
            continue;
        }
        const std::optional<std::size_t> count = numbersOf(command);
        const auto values = count ? data.numbers(*count) : std::nullopt;
        if (!values)
            return std::nullopt;
        const QPointF here = path.currentPosition();
        const QPointF origin = letter == command ? QPointF() : here;
        const auto point = [&](std::size_t index) {
            return origin + QPointF((*values)[index], (*values)[index + 1]);
        };
        if (command == u'M')
            path.moveTo(point(0));
        else if (command == u'L')
            path.lineTo(point(0));
        else if (command == u'H')
            path.lineTo(origin.x() + values->front(), here.y());
        else if (command == u'V')
            path.lineTo(here.x(), origin.y() + values->front());
        else if (command == u'C')
            path.cubicTo(point(0), point(2), point(4));
        else if (const QPointF radii((*values)[0], (*values)[1]);
                 (*values)[2] == 0 && radii.x() > 0 && radii.y() > 0 && point(5) != here)
            arcTo(path, radii, (*values)[3] != 0, (*values)[4] != 0, point(5));
        else
            return std::nullopt;
    }
    return path;
}

std::optional<QPainterPath> shapeOf(QStringView element, const QXmlStreamAttributes& attributes) {
    const auto length = [&](const char* name) { return attributes.value(QLatin1String(name)).toDouble(); };
    if (attributes.hasAttribute(QLatin1String("transform")))
        return std::nullopt;
    if (element == u"path")
        return pathFrom(attributes.value(QLatin1String("d")));
    QPainterPath path;
    if (element == u"circle")
        path.addEllipse(QPointF(length("cx"), length("cy")), length("r"), length("r"));
    else if (element == u"rect")
        path.addRoundedRect(QRectF(length("x"), length("y"), length("width"), length("height")), length("rx"),
                            length("rx"));
    else
        return std::nullopt;
    return path;
}

}  // namespace

std::optional<LineDrawing> lineDrawingFromSvg(const QByteArray& text) {
    QXmlStreamReader reader(text);
    LineDrawing drawing;
    std::vector<bool> fills{true};
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement)
            fills.pop_back();
        if (token != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        const QStringView fill = attributes.value(QLatin1String("fill"));
        fills.push_back(fill.isEmpty() ? fills.back() : fill != u"none");
        const QStringView element = reader.name();
        if (element == u"svg" || element == u"g" || element == u"title")
            continue;
        const std::optional<QPainterPath> shape = shapeOf(element, attributes);
        if (!shape)
            return std::nullopt;
        (fills.back() ? drawing.areas : drawing.lines).addPath(*shape);
    }
    if (reader.hasError())
        return std::nullopt;
    return drawing;
}

}  // namespace kestrant
