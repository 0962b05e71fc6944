#include "speech/Tokens.h"

#include <algorithm>

namespace kestrant::speech {
namespace {

using Kind = Token::Kind;
using Gap = Token::Gap;

bool isApostrophe(QChar c) {
    return c == u'\'' || c == u'’';
}

bool isOpeningQuote(QChar c) {
    return c == u'"' || c == u'“' || c == u'«' || c == u'„';
}

QChar closingQuote(QChar opening) {
    return opening == u'“' || opening == u'„' ? QChar(u'”') : opening == u'«' ? QChar(u'»') : opening;
}

bool isDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

bool isOneOf(QChar c, QStringView characters) {
    return characters.contains(c);
}

QChar foldedLetter(QChar c) {
    if (c.unicode() < 0x80)
        return c.toLower();
    if (c == u'’')
        return u'\'';
    const QString parts = c.decomposition();
    return (parts.isEmpty() || c.decompositionTag() != QChar::Canonical ? c : parts.front()).toLower();
}

/// The end of the text without blanks.
qsizetype endOfChunk(QStringView line, qsizetype start) {
    while (start < line.size() && !line[start].isSpace())
        ++start;
    return start;
}

enum class Chunk { plain, mail, link };

Chunk kindOfChunk(QStringView chunk) {
    if (chunk.startsWith(u"https://", Qt::CaseInsensitive) ||
        chunk.startsWith(u"http://", Qt::CaseInsensitive) || chunk.startsWith(u"www.", Qt::CaseInsensitive))
        return Chunk::link;
    const qsizetype at = chunk.indexOf(u'@');
    const bool isMail = at > 0 && at + 1 < chunk.size() && chunk[at - 1].isLetterOrNumber() &&
                        chunk[at + 1].isLetter() && chunk.indexOf(u'.', at) > 0;
    return isMail || chunk.contains(u"://") ? Chunk::mail : Chunk::plain;
}

}  // namespace

QString folded(QStringView text) {
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!c.isMark())
            result.append(foldedLetter(c));
    }
    return result;
}

Tokens::Tokens(const QString& line) {
    // Texts of tokens point into the folded letters, which therefore never move.
    folded_.reserve(line.size());
    tokens_.reserve(static_cast<std::size_t>(line.size() / 4 + 4));
    Gap gap = Gap::space;
    qsizetype chunkEnd = 0;
    qsizetype at = 0;
    const auto isLetter = [&](qsizetype place) {
        return place < line.size() && (line[place].isLetter() || line[place].isMark());
    };
    const auto add = [&](Token token, qsizetype end) {
        token.start = at;
        token.end = end;
        token.gap = gap;
        tokens_.push_back(token);
        at = end;
        gap = Gap::none;
    };
    while (at < line.size()) {
        const QChar c = line[at];
        if (c.isSpace()) {
            gap = Gap::space;
            ++at;
            continue;
        }
        if (at >= chunkEnd) {
            chunkEnd = endOfChunk(line, at);
            const Chunk chunk = kindOfChunk(QStringView(line).mid(at, chunkEnd - at));
            if (chunk != Chunk::plain) {
                qsizetype end = chunkEnd;
                while (chunk == Chunk::link && end > at + 1 && isOneOf(line[end - 1], u".,;:!?)"))
                    --end;
                add({.kind = chunk == Chunk::link ? Kind::link : Kind::opaque}, end);
                continue;
            }
        }
        if (isOpeningQuote(c)) {
            const qsizetype close = line.indexOf(closingQuote(c), at + 1);
            add({.kind = Kind::opaque}, close < 0 ? at + 1 : close + 1);
            chunkEnd = std::max(chunkEnd, at);
        } else if (isDigit(c)) {
            qsizetype end = at;
            int number = 0;
            while (end < line.size() && isDigit(line[end]))
                number = end - at < 8 ? number * 10 + (line[end++].unicode() - u'0') : (++end, -1);
            const int digits = static_cast<int>(end - at);
            add({.kind = Kind::number,
                 .number = digits <= 8 ? number : -1,
                 .digits = digits,
                 .text = QStringView(line).mid(at, digits)},
                end);
        } else if (isLetter(at)) {
            qsizetype end = at;
            const qsizetype begin = folded_.size();
            qsizetype capitals = 0;
            bool isAccented = false;
            while (isLetter(end)) {
                capitals += line[end].isUpper() ? 1 : 0;
                isAccented |= line[end].unicode() >= 0x80;
                if (!line[end].isMark())
                    folded_.append(foldedLetter(line[end]));
                ++end;
            }
            // Marks without a letter are no word.
            if (folded_.size() == begin) {
                add({.kind = Kind::opaque}, end);
                continue;
            }
            // "a.m.", "p.m." are one word.
            if (end == at + 1 && (folded_.back() == u'a' || folded_.back() == u'p') &&
                end + 1 < line.size() && line[end] == u'.' && line[end + 1].toLower() == u'm' &&
                !isLetter(end + 2)) {
                folded_.append(u'm');
                end += 2;
                if (end < line.size() && line[end] == u'.')
                    ++end;
            }
            Token token{.kind = Kind::word,
                        .isCapital = line[at].isUpper(),
                        .isAllCapitals = capitals > 1 && capitals == end - at,
                        .isAccented = isAccented};
            token.text = QStringView(folded_).mid(begin);
            add(token, end);
            // Hyphens and apostrophes within words part them without being said.
            if (isLetter(end + 1) && (isApostrophe(line[end]) || line[end] == u'-')) {
                gap = line[end] == u'-' ? Gap::hyphen : Gap::apostrophe;
                at = end + 1;
            }
        } else if (c.isHighSurrogate()) {
            add({.kind = Kind::opaque}, std::min(line.size(), at + 2));
        } else {
            add({.kind = c.isPunct() || c.isSymbol() ? Kind::sign : Kind::opaque, .sign = c.unicode()},
                at + 1);
        }
    }
}

bool Tokens::begins(int i) const {
    if (i <= 0 || i >= size())
        return i == 0;
    const Token& token = (*this)[i];
    if (token.gap != Gap::none)
        return token.gap == Gap::space;
    return isKind(i - 1, Kind::sign) && isOneOf((*this)[i - 1].sign, u"([{,;–—…@+!?¡¿|→•*") &&
           (isGlued(i - 1) ? begins(i - 1) || isOneOf((*this)[i - 1].sign, u",;–—…!?") : true);
}

bool Tokens::ends(int i) const {
    if (i >= size() || (*this)[i].gap == Gap::space)
        return true;
    if ((*this)[i].gap != Gap::none || !isKind(i, Kind::sign) || !isOneOf((*this)[i].sign, u",;:.!?)]}…–—|"))
        return false;
    return i + 1 >= size() || (*this)[i + 1].gap == Gap::space || isKind(i + 1, Kind::sign) ||
           isOneOf((*this)[i].sign, u",;)]}…–—|");
}

bool Tokens::isStop(int i) const {
    return i >= size() ||
           (ends(i) && isKind(i, Kind::sign) && isOneOf((*this)[i].sign, u",;:.!?()[]{}…–—-|#/@"));
}

}  // namespace kestrant::speech
