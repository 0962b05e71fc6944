#include "cli/CommandLineOutput.h"

#include "cli/TerminalText.h"
#include "foundation/ControlCharacters.h"

#include <QJsonObject>

#include <algorithm>
#include <numeric>

namespace kestrant {

namespace {

constexpr int gap = 2;
/// Columns that a long text is padded to where nothing is cut, and that are left of one that is.
constexpr int widestPadding = 60;
constexpr int narrowestCut = 16;

/// Makes the widest of the long columns narrower until a line fits, as far as that goes.
void fitInto(int lineWidth, std::vector<int>& widths, const std::vector<std::size_t>& longColumns) {
    const auto filled = std::count_if(widths.begin(), widths.end(), [](int width) { return width > 0; });
    int excess = std::accumulate(widths.begin(), widths.end(), 0) + gap * (int(filled) - 1) - lineWidth;
    while (excess > 0) {
        int* widest = nullptr;
        int second = narrowestCut;
        for (const std::size_t column : longColumns) {
            if (column >= widths.size())
                continue;
            int& width = widths[column];
            if (!widest || width > *widest) {
                if (widest)
                    second = std::max(second, *widest);
                widest = &width;
            } else {
                second = std::max(second, width);
            }
        }
        if (!widest || *widest <= narrowestCut)
            return;
        const int less = std::min(excess, std::max(1, *widest - second));
        *widest -= less;
        excess -= less;
    }
}

}  // namespace

QStringList alignedLines(const TextRows& rows, const std::vector<std::size_t>& longColumns,
                         std::optional<int> lineWidth) {
    std::vector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(std::max<std::size_t>(widths.size(), static_cast<std::size_t>(row.size())));
        for (qsizetype column = 0; column < row.size(); ++column)
            widths[static_cast<std::size_t>(column)] =
                std::max(widths[static_cast<std::size_t>(column)], columnsOf(row[column]));
    }
    if (lineWidth) {
        fitInto(*lineWidth, widths, longColumns);
    } else {
        for (const std::size_t column : longColumns) {
            if (column < widths.size())
                widths[column] = std::min(widths[column], widestPadding);
        }
    }
    QStringList result;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype column = 0; column < row.size(); ++column) {
            const int width = widths[static_cast<std::size_t>(column)];
            if (width == 0)
                continue;
            const QString cell = lineWidth && std::count(longColumns.begin(), longColumns.end(), column) > 0
                                     ? cutToColumns(row[column], width)
                                     : row[column];
            line += cell + QString(std::max(0, width - columnsOf(cell)) + gap, u' ');
        }
        while (line.endsWith(u' '))
            line.chop(1);
        result.append(line);
    }
    return result;
}

QString alignedText(const TextRows& rows, const std::vector<std::size_t>& longColumns,
                    std::optional<int> lineWidth) {
    QString result;
    for (const QString& line : alignedLines(rows, longColumns, lineWidth))
        result += line + u'\n';
    return result;
}

QJsonValue instantAsJson(const std::optional<Instant>& instant) {
    return instant ? QJsonValue(toIso8601(*instant)) : QJsonValue(QJsonValue::Null);
}

QJsonValue textAsJson(const std::optional<QString>& value) {
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

QJsonArray calendarsAsJson(const std::vector<EKCalendar>& calendars) {
    QJsonArray result;
    for (const EKCalendar& calendar : calendars)
        result.append(QJsonObject{
            {QStringLiteral("id"), calendar.calendarIdentifier},
            {QStringLiteral("title"), calendar.title},
            {QStringLiteral("color"),
             calendar.color ? QJsonValue(calendar.color->toString()) : QJsonValue(QJsonValue::Null)},
            {QStringLiteral("allowsContentModifications"), calendar.allowsContentModifications},
        });
    return result;
}

QString calendarsAsTable(const std::vector<EKCalendar>& calendars, EKEntityType type,
                         const OutputContext& context) {
    if (calendars.empty())
        return (type == EKEntityType::reminder ? text("No lists.\n", "Aucune liste.\n")
                                               : text("No calendars.\n", "Aucun calendrier.\n"))
            .in(context.language);
    TextRows rows;
    rows.reserve(calendars.size());
    const auto stateOf = [&](const EKCalendar& calendar) {
        if (!calendar.isAnswering)
            return text("does not answer", "ne répond pas").in(context.language);
        return calendar.allowsContentModifications ? QString()
                                                   : text("read-only", "lecture seule").in(context.language);
    };
    for (const EKCalendar& calendar : calendars)
        rows.push_back(
            {onOneLine(calendar.title), onOneLine(calendar.calendarIdentifier), stateOf(calendar)});
    return alignedText(rows, {0}, context.lineWidth);
}

}  // namespace kestrant
