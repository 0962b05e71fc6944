#include "ui/recap/RecapPainting.h"

#include <QColor>
#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kestrant {
namespace {

constexpr int daysOfWeek = 7;
const QColor accent(0x0a, 0x84, 0xff);
const QColor calm(0x2e, 0x6f, 0xb8);
const QColor dot(0x3d, 0x8c, 0xe0);
const QColor primaryText(0xf4, 0xf4, 0xf6);
const QColor secondaryText(0xb2, 0xb4, 0xbe);

QColor white(double alpha) {
    return QColor::fromRgbF(1, 1, 1, float(alpha));
}

/// What there is nothing on, or what has not begun.
QColor blank(const RecapChartLook& look, bool isFuture) {
    return white((isFuture ? 0.05 : 0.10) * (look.highContrast ? 3 : 1));
}

int mostOf(const RecapCard& card) {
    return std::max(1, card.recap.bestCount);
}

int countOf(const RecapCard& card, int day) {
    return card.recap.days[std::size_t(day)];
}

bool isFuture(const RecapCard& card, int day) {
    return day >= card.recap.elapsedDays;
}

/// Columns from the first day of the week that holds `first`.
int weekdayOffset(const RecapCard& card, QDate first) {
    return (first.dayOfWeek() - card.firstDayOfWeek + daysOfWeek) % daysOfWeek;
}

void drawText(QPainter& painter, const QRectF& frame, int flags, const QString& words, double size,
              const QColor& color, QFont::Weight weight = QFont::Normal) {
    QFont font = painter.font();
    font.setPixelSize(std::max(1, qRound(size)));
    font.setWeight(weight);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(frame, flags, words);
}

// Each kind of chart gives the frame of a day and draws from these frames.

// A week: columns, the bar in each above the name of the day and below its count.

constexpr double barLabelHeight = 22;
constexpr double barCountHeight = 20;

QRectF weekFrame(const QRectF& area, int day) {
    const double pitch = area.width() / daysOfWeek;
    return {area.x() + day * pitch, area.y(), pitch, area.height()};
}

void paintWeek(QPainter& painter, const QRectF& area, const RecapCard& card, const RecapChartLook& look) {
    for (int day = 0; day < card.days(); ++day) {
        const QRectF frame = weekFrame(area, day);
        const int count = countOf(card, day);
        const bool isToday = day == card.todayIndex();
        const double room = frame.height() - barLabelHeight - (look.isCompact ? 0 : barCountHeight);
        const double height =
            count == 0 ? 4 : std::max(6.0, room * look.progress * double(count) / mostOf(card));
        const double width = look.isCompact ? 19 : 48;
        const double bottom = frame.bottom() - barLabelHeight;
        const QRectF bar(frame.center().x() - width / 2, bottom - height, width, height);
        painter.setPen(Qt::NoPen);
        painter.setBrush(count == 0 ? blank(look, isFuture(card, day)) : isToday ? accent : calm);
        const double radius = std::min(look.isCompact ? 4.0 : 5.0, height / 2);
        painter.drawRoundedRect(bar, radius, radius);
        if (day == look.current) {
            painter.setPen(QPen(primaryText, 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(bar.adjusted(-3, -3, 3, 3), radius + 3, radius + 3);
        }
        const QDate date = card.recap.period.first.addDays(day);
        const QString name =
            look.isCompact ? card.dates.standaloneDayName(date.dayOfWeek(), QLocale::NarrowFormat).toUpper()
                           : card.dates.toString(date, QStringLiteral("ddd d"));
        drawText(painter, QRectF(frame.x(), bottom + 4, frame.width(), barLabelHeight - 4), Qt::AlignCenter,
                 name, 11 * look.textScale, isToday ? primaryText : secondaryText,
                 isToday ? QFont::DemiBold : QFont::Normal);
        if (!look.isCompact && !isFuture(card, day))
            drawText(painter,
                     QRectF(frame.x(), bar.top() - barCountHeight, frame.width(), barCountHeight - 4),
                     Qt::AlignCenter, card.dates.toString(count), 12 * look.textScale, primaryText,
                     QFont::DemiBold);
    }
}

// A month: a row for each week. The area of a dot is the count.

constexpr double weekdayNameHeight = 20;
constexpr int weeksOfMonth = 6;

QRectF monthFrame(const QRectF& area, const RecapCard& card, bool isCompact, int day) {
    const double top = isCompact ? 0 : weekdayNameHeight;
    const int place = weekdayOffset(card, card.recap.period.first) + day;
    const int column = place % daysOfWeek;
    const int row = place / daysOfWeek;
    const double width = area.width() / daysOfWeek;
    const double height = (area.height() - top) / weeksOfMonth;
    return {area.x() + column * width, area.y() + top + row * height, width, height};
}

void paintMonth(QPainter& painter, const QRectF& area, const RecapCard& card, const RecapChartLook& look) {
    if (!look.isCompact) {
        for (int column = 0; column < daysOfWeek; ++column) {
            const int weekday = (card.firstDayOfWeek - 1 + column) % daysOfWeek + 1;
            const QRectF frame = weekFrame(area, column);
            drawText(painter, QRectF(frame.x(), frame.y(), frame.width(), weekdayNameHeight - 4),
                     Qt::AlignHCenter | Qt::AlignTop,
                     card.dates.standaloneDayName(weekday, QLocale::ShortFormat), 11 * look.textScale,
                     secondaryText);
        }
    }
    for (int day = 0; day < card.days(); ++day) {
        const QRectF frame = monthFrame(area, card, look.isCompact, day);
        const int count = countOf(card, day);
        const double most = std::min(frame.width(), frame.height()) / 2 * (look.isCompact ? 1.0 : 0.92);
        const double least = look.isCompact ? 3.5 : 5.5;
        const double full = std::max(least, most * std::sqrt(double(count) / mostOf(card)));
        const double radius = count > 0 ? full * (0.4 + 0.6 * look.progress) : look.isCompact ? 2.0 : 2.6;
        const bool isToday = day == card.todayIndex();
        painter.setPen(Qt::NoPen);
        if (isToday) {
            painter.setBrush(QColor(0x0a, 0x84, 0xff, 110));
            painter.drawEllipse(frame.center(), radius + 2.5, radius + 2.5);
        }
        painter.setBrush(count == 0 ? white(isFuture(card, day) ? 0.16 : 0.34) : isToday ? accent : dot);
        painter.drawEllipse(frame.center(), radius, radius);
        if (day == look.current) {
            painter.setPen(QPen(primaryText, 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(frame.center(), radius + 3, radius + 3);
        }
    }
}

// A year: a column for each week, in two halves one above the other where there is little room.

constexpr double monthNameHeight = 19;
constexpr double halfYearGap = 8;

struct YearPlace {
    int half = 0;
    int column = 0;
    int row = 0;
};

YearPlace yearPlace(const RecapCard& card, bool inHalves, int day) {
    const QDate first = card.recap.period.first;
    const QDate middle(first.year(), 7, 1);
    const int half = inHalves && first.addDays(day) >= middle ? 1 : 0;
    const QDate begin = half == 1 ? middle : first;
    const int place = weekdayOffset(card, begin) + int(begin.daysTo(first.addDays(day)));
    return {half, place / daysOfWeek, place % daysOfWeek};
}

double yearPitch(const QRectF& area, bool isCompact) {
    // Any year has room, also one whose first day ends a week.
    constexpr int columns = 54;
    constexpr int halfColumns = 28;
    const double across = area.width() / (isCompact ? halfColumns : columns - 1);
    const double down = isCompact ? (area.height() - halfYearGap) / (2.0 * daysOfWeek)
                                  : (area.height() - monthNameHeight) / daysOfWeek;
    return std::min(across, down);
}

QRectF yearFrame(const QRectF& area, const RecapCard& card, bool isCompact, int day) {
    const YearPlace place = yearPlace(card, isCompact, day);
    const double pitch = yearPitch(area, isCompact);
    const double top = isCompact ? place.half * (daysOfWeek * pitch + halfYearGap) : monthNameHeight;
    return {area.x() + place.column * pitch, area.y() + top + place.row * pitch, pitch, pitch};
}

QColor heat(int count, int most) {
    const std::array steps{QColor(0x1c, 0x4a, 0x80), QColor(0x1f, 0x6c, 0xc4), QColor(0x3d, 0x9b, 0xff),
                           QColor(0xa6, 0xd2, 0xff)};
    const int step = std::clamp((count * int(steps.size()) + most - 1) / most - 1, 0, int(steps.size()) - 1);
    return steps[std::size_t(step)];
}

void paintYear(QPainter& painter, const QRectF& area, const RecapCard& card, const RecapChartLook& look) {
    const double pitch = yearPitch(area, look.isCompact);
    const double side = pitch * 0.82;
    const double radius = side * 0.26;
    const double lit =
        area.x() +
        look.progress * (yearFrame(area, card, look.isCompact, card.days() - 1).right() - area.x());
    for (int day = 0; day < card.days(); ++day) {
        const QRectF frame = yearFrame(area, card, look.isCompact, day);
        const QRectF cell(frame.x(), frame.y(), side, side);
        const int count = countOf(card, day);
        const bool isLit = look.progress >= 1.0 || frame.center().x() <= lit;
        painter.setPen(Qt::NoPen);
        painter.setBrush(count > 0 && isLit ? heat(count, mostOf(card))
                                            : blank(look, isFuture(card, day) || !isLit));
        painter.drawRoundedRect(cell, radius, radius);
        if (day == look.current || (day == card.todayIndex() && isLit && !look.isCompact)) {
            painter.setPen(QPen(day == look.current ? primaryText : accent, 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(cell.adjusted(-1.2, -1.2, 1.2, 1.2), radius + 1, radius + 1);
        }
        const QDate date = card.recap.period.first.addDays(day);
        if (!look.isCompact && date.day() == 1)
            drawText(painter, QRectF(frame.x(), area.y(), 60, monthNameHeight - 4),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     card.dates.standaloneMonthName(date.month(), QLocale::ShortFormat), 11 * look.textScale,
                     secondaryText);
    }
    if (look.progress > 0.0 && look.progress < 1.0) {
        QLinearGradient line(0, area.y() + monthNameHeight, 0,
                             area.y() + monthNameHeight + daysOfWeek * pitch);
        line.setColorAt(0, Qt::transparent);
        line.setColorAt(0.5, QColor(0x5a, 0xc8, 0xfa));
        line.setColorAt(1, Qt::transparent);
        painter.fillRect(QRectF(lit, area.y() + monthNameHeight, 1.5, daysOfWeek * pitch), line);
    }
}

// A day: 48 half hours.

void paintDay(QPainter& painter, const QRectF& area, const RecapCard& card, const RecapChartLook& look) {
    const double pitch = area.width() / double(card.halfHours.size());
    const int most = std::max(1, *std::ranges::max_element(card.halfHours));
    const double full = std::min(area.height(), look.isCompact ? 60.0 : 28.0);
    painter.setPen(Qt::NoPen);
    for (std::size_t index = 0; index < card.halfHours.size(); ++index) {
        const int count = card.halfHours[index];
        const double height = count == 0 ? 4 : std::max(10.0, full * look.progress * count / most);
        const double width = std::max(2.0, pitch - (look.isCompact ? 2 : 3));
        const QRectF tick(area.x() + double(index) * pitch, area.bottom() - height, width, height);
        painter.setBrush(count > 0 ? accent : blank(look, card.recap.elapsedDays == 0));
        painter.drawRoundedRect(tick, 2, 2);
    }
}

}  // namespace

void paintRecapChart(QPainter& painter, const QRectF& area, const RecapCard& card,
                     const RecapChartLook& look) {
    if (card.recap.days.empty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    switch (card.recap.period.kind) {
    case RecapKind::day:
        paintDay(painter, area, card, look);
        break;
    case RecapKind::week:
        paintWeek(painter, area, card, look);
        break;
    case RecapKind::month:
        paintMonth(painter, area, card, look);
        break;
    case RecapKind::year:
        paintYear(painter, area, card, look);
        break;
    }
    painter.restore();
}

QRectF recapDayFrame(const QRectF& area, const RecapCard& card, bool isCompact, int day) {
    if (day < 0 || day >= card.days())
        return {};
    switch (card.recap.period.kind) {
    case RecapKind::day:
        break;
    case RecapKind::week:
        return weekFrame(area, day);
    case RecapKind::month:
        return monthFrame(area, card, isCompact, day);
    case RecapKind::year:
        return yearFrame(area, card, isCompact, day);
    }
    return area;
}

int recapDayAt(const QRectF& area, const RecapCard& card, bool isCompact, QPointF place) {
    for (int day = 0; day < int(card.recap.days.size()); ++day) {
        if (recapDayFrame(area, card, isCompact, day).contains(place))
            return day;
    }
    return -1;
}

void paintRecapPicture(QPainter& painter, const RecapCard& card) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QRectF all({}, recapPictureSize);
    constexpr double margin = 28;
    const double inner = all.width() - 2 * margin;
    QLinearGradient ground(0, 0, all.width() * 0.4, all.height());
    ground.setColorAt(0, QColor(0x11, 0x22, 0x42));
    ground.setColorAt(0.65, QColor(0x0b, 0x0c, 0x10));
    painter.fillRect(all, ground);

    drawText(painter, QRectF(margin, 26, inner, 24), Qt::AlignLeft | Qt::AlignVCenter, card.label, 16,
             QColor(0x7c, 0xbc, 0xff), QFont::DemiBold);
    QFont figures = painter.font();
    figures.setPixelSize(84);
    figures.setWeight(QFont::DemiBold);
    const double width = QFontMetricsF(figures).horizontalAdvance(card.number);
    drawText(painter, QRectF(margin - 3, 50, inner + 6, 92), Qt::AlignLeft | Qt::AlignVCenter, card.number,
             84 * std::min(1.0, inner / std::max(1.0, width)), primaryText, QFont::DemiBold);
    drawText(painter, QRectF(margin, 142, inner, 26), Qt::AlignLeft | Qt::AlignVCenter, card.caption, 18,
             primaryText, QFont::Medium);
    if (card.sentence.contains(u' '))
        drawText(painter, QRectF(margin, 172, inner, 40), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                 card.sentence, 13, secondaryText);
    RecapChartLook look;
    look.isCompact = true;
    look.textScale = 1.1;
    paintRecapChart(painter, QRectF(margin, 226, inner, 150), card, look);
    drawText(painter, QRectF(margin, 404, inner, 22), Qt::AlignLeft | Qt::AlignVCenter,
             QStringLiteral("Kestrant"), 13, secondaryText, QFont::DemiBold);
    painter.restore();
}

}  // namespace kestrant
