#include "ui/reminders/SpokenWords.h"

#include "foundation/ClockText.h"
#include "foundation/ControlCharacters.h"

#include <utility>

namespace kestrant {

using PieceKind = speech::Piece::Kind;

const QString& kindOf(PieceKind kind) {
    static const QString due = QStringLiteral("due");
    static const QString repeat = QStringLiteral("repeat");
    static const QString zone = QStringLiteral("zone");
    static const QString priority = QStringLiteral("priority");
    static const QString list = QStringLiteral("list");
    static const QString flag = QStringLiteral("flag");
    static const QString link = QStringLiteral("link");
    static const QString notes = QStringLiteral("notes");
    static const QString place = QStringLiteral("place");
    static const QString alert = QStringLiteral("alert");
    switch (kind) {
    case PieceKind::day:
    case PieceKind::time:
        return due;
    case PieceKind::repeat:
        return repeat;
    case PieceKind::zone:
        return zone;
    case PieceKind::priority:
        return priority;
    case PieceKind::list:
        return list;
    case PieceKind::flag:
        return flag;
    case PieceKind::link:
        return link;
    case PieceKind::note:
        return notes;
    case PieceKind::place:
        return place;
    case PieceKind::alert:
        return alert;
    }
    return due;
}

QVariantList coloredWords(const QString& line, const std::vector<speech::Piece>& pieces) {
    std::vector<std::pair<QString, speech::TextRange>> words;
    for (const speech::Piece& piece : pieces) {
        const QString& kind = kindOf(piece.kind);
        const bool isNext = !words.empty() && words.back().first == kind &&
                            QStringView(line)
                                .mid(words.back().second.end(), piece.range.start - words.back().second.end())
                                .trimmed()
                                .isEmpty();
        if (isNext)
            words.back().second.length = piece.range.end() - words.back().second.start;
        else
            words.emplace_back(kind, piece.range);
    }
    QVariantList result;
    for (const auto& [kind, range] : words)
        result.append(QVariantMap{{QStringLiteral("kind"), kind},
                                  {QStringLiteral("start"), range.start},
                                  {QStringLiteral("length"), range.length}});
    return result;
}

std::vector<speech::TextRange> rangesOf(const QStringList& words, const QString& line) {
    std::vector<speech::TextRange> ranges;
    for (const QString& each : words)
        if (const qsizetype start = line.indexOf(each); start >= 0)
            ranges.push_back({start, each.size()});
    return ranges;
}

QString zoneText(const std::optional<QTime>& time, const QString& zone, const Localizer& localizer) {
    return time ? clockText(*time, localizer.clockHours()) + QLatin1Char(' ') + zone : QString();
}

QString begunList(const QString& line) {
    const qsizetype mark = line.lastIndexOf(u'#');
    if (mark < 0 || (mark > 0 && !line[mark - 1].isSpace()) || line.endsWith(u' '))
        return {};
    return line.mid(mark + 1);
}

QString begunTitle(const QString& line, const std::vector<speech::Piece>& pieces) {
    constexpr qsizetype fewestLetters = 3;
    return line.size() >= fewestLetters && pieces.empty() && !line.contains(u'#') ? line : QString();
}

QString restOf(const QString& name, const QString& begun) {
    const bool isBegun =
        !begun.isEmpty() && name.size() > begun.size() && name.startsWith(begun, Qt::CaseInsensitive);
    return isBegun ? onOneLine(name).mid(begun.size()) : QString();
}

}  // namespace kestrant
