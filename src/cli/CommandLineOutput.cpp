#include "cli/CommandLineOutput.h"

#include <QJsonObject>

#include <algorithm>
#include <cwchar>

namespace kestrant {

namespace {

/// Columns a terminal needs for a text.
int displayWidth(const QString& line) {
    int width = 0;
    for (const char32_t character : line.toUcs4())
        width += std::max(0, ::wcwidth(static_cast<wchar_t>(character)));
    return width;
}

}  // namespace

QString printable(QString text) {
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return text;
}

QStringList alignedLines(const TextRows& rows) {
    std::vector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(std::max<std::size_t>(widths.size(), static_cast<std::size_t>(row.size())));
        for (qsizetype column = 0; column < row.size(); ++column)
            widths[static_cast<std::size_t>(column)] =
                std::max(widths[static_cast<std::size_t>(column)], displayWidth(row[column]));
    }
    QStringList result;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype column = 0; column < row.size(); ++column) {
            const int width = widths[static_cast<std::size_t>(column)];
            if (width == 0)
                continue;
            line += row[column] + QString(width - displayWidth(row[column]) + 2, u' ');
        }
        while (line.endsWith(u' '))
            line.chop(1);
        result.append(line);
    }
    return result;
}

QString alignedText(const TextRows& rows) {
    QString result;
    for (const QString& line : alignedLines(rows))
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

QString calendarsAsTable(const std::vector<EKCalendar>& calendars, EKEntityType type, Language language) {
    if (calendars.empty())
        return (type == EKEntityType::reminder ? text("No lists.\n", "Aucune liste.\n")
                                               : text("No calendars.\n", "Aucun calendrier.\n"))
            .in(language);
    TextRows rows;
    rows.reserve(calendars.size());
    for (const EKCalendar& calendar : calendars)
        rows.push_back({printable(calendar.title), printable(calendar.calendarIdentifier),
                        calendar.allowsContentModifications
                            ? QString()
                            : text("read-only", "lecture seule").in(language)});
    return alignedText(rows);
}

}  // namespace kestrant
