#include "reminders/quickadd/QuickAddTokens.h"

#include <QRegularExpression>

#include <optional>

namespace kestrant::quickadd {
namespace {

constexpr QChar typographicApostrophe(0x2019);

bool isQuote(QChar c) {
    return c == QLatin1Char('"') || c == QChar(0x201C) || c == QChar(0x00AB);
}
QChar closingQuote(QChar opening) {
    if (opening == QChar(0x201C))
        return QChar(0x201D);
    return opening == QChar(0x00AB) ? QChar(0x00BB) : opening;
}

bool isSign(QChar c) {
    static const QString signs = QStringLiteral(",;:.!?()[]&+-–—…");
    return signs.contains(c);
}

/// One expression for each kind of token that begins with a digit, the longest first. Each must end where a
/// number cannot go on.
struct Pattern {
    Token::Kind kind;
    QRegularExpression expression;
};

const std::vector<Pattern>& numberPatterns() {
    const auto pattern = [](Token::Kind kind, const char* text) {
        return Pattern{kind, QRegularExpression(QString::fromLatin1(text) +
                                                    QStringLiteral("(?![\\p{L}\\p{N}]|[-/:.,]\\p{N})"),
                                                QRegularExpression::CaseInsensitiveOption |
                                                    QRegularExpression::UseUnicodePropertiesOption)};
    };
    using Kind = Token::Kind;
    static const std::vector<Pattern> patterns{
        pattern(Kind::date, R"((?<year>\d{4})-(?<first>\d{1,2})-(?<second>\d{1,2}))"),
        pattern(Kind::date, R"((?<first>\d{1,2})([./-])(?<second>\d{1,2})\2(?<year>\d{4}))"),
        pattern(Kind::date, R"((?<first>\d{1,2})/(?<second>\d{1,2})(/(?<year>\d{2}))?)"),
        pattern(
            Kind::clock,
            R"((?<hour>\d{1,2})([:.](?<minute>\d{2}))?\s?(?<half>[ap])\.?m\b\.?([-–]\d{1,2}(:\d{2})?\s?[ap]\.?m\b\.?)?)"),
        pattern(Kind::clock,
                R"((?<hour>\d{1,2})(:(?<minute>\d{2}))?[-–]\d{1,2}(:\d{2})?\s?(?<half>[ap])\.?m\b\.?)"),
        pattern(Kind::clock, R"((?<hour>\d{1,2}):(?<minute>\d{2})([-–]\d{1,2}:\d{2})?)"),
        pattern(Kind::clockOfHours, R"((?<hour>\d{1,2})h(?<minute>\d{2})?([-–]\d{1,2}h(\d{2})?)?)"),
        pattern(Kind::ordinal, R"((?<number>\d{1,2})(st|nd|rd|th|er))"),
        pattern(Kind::quantity, R"((?<number>\d{1,4})(?<unit>min|mn|mins|hr|hrs|d|j|w|sem))"),
        pattern(Kind::number, R"((?<number>\d{1,5}))"),
    };
    return patterns;
}

int captured(const QRegularExpressionMatch& match, const QString& name) {
    return match.captured(name).toInt();
}

std::optional<Token> numberToken(const QString& line, qsizetype start) {
    for (const Pattern& pattern : numberPatterns()) {
        const auto match = pattern.expression.match(line, start, QRegularExpression::NormalMatch,
                                                    QRegularExpression::AnchorAtOffsetMatchOption);
        if (!match.hasMatch())
            continue;
        Token token{.kind = pattern.kind, .start = start, .end = match.capturedEnd()};
        switch (pattern.kind) {
        case Token::Kind::date:
            token.first = captured(match, QStringLiteral("first"));
            token.second = captured(match, QStringLiteral("second"));
            token.year = captured(match, QStringLiteral("year"));
            if (token.year > 0 && token.year < 100)
                token.year += 2000;
            token.isIsoDate = match.capturedStart(QStringLiteral("year")) == start;
            return token;
        case Token::Kind::clock:
        case Token::Kind::clockOfHours: {
            token.number = captured(match, QStringLiteral("hour"));
            token.minute = captured(match, QStringLiteral("minute"));
            const QString half = match.captured(QStringLiteral("half")).toLower();
            token.isWholeDayClock = true;
            if (!half.isEmpty()) {
                if (token.number < 1 || token.number > 12)
                    break;
                token.text = half;
                token.number = token.number % 12 + (half == QLatin1String("p") ? 12 : 0);
            } else if (pattern.kind == Token::Kind::clock) {
                token.isWholeDayClock = token.number > 12 || line[start] == QLatin1Char('0');
            }
            if (!QTime(token.number, token.minute).isValid())
                break;
            return token;
        }
        case Token::Kind::ordinal:
        case Token::Kind::number:
        case Token::Kind::quantity:
            token.number = captured(match, QStringLiteral("number"));
            token.text = match.captured(QStringLiteral("unit")).toLower();
            return token;
        default:
            break;
        }
    }
    return std::nullopt;
}

/// The end of the chunk without blanks.
qsizetype endOfChunk(const QString& line, qsizetype start) {
    qsizetype end = start;
    while (end < line.size() && !line[end].isSpace())
        ++end;
    return end;
}

bool isAddress(QStringView chunk) {
    return chunk.contains(QLatin1String("://")) || chunk.contains(QLatin1Char('@'), Qt::CaseInsensitive) ||
           chunk.startsWith(QLatin1String("www."), Qt::CaseInsensitive);
}

qsizetype endOfWord(const QString& line, qsizetype start) {
    static const QString within = QStringLiteral("-'.") + typographicApostrophe;
    qsizetype end = start;
    const auto isLetter = [&](qsizetype place) {
        return place < line.size() && (line[place].isLetter() || line[place].isMark());
    };
    while (isLetter(end) || (end < line.size() && isLetter(end + 1) && within.contains(line[end])))
        ++end;
    return end;
}

/// A word that something else is stuck to is no word of its own: "10kg", "monday.com".
Token wordToken(const QString& line, qsizetype start, bool isFree, qsizetype chunkEnd) {
    const auto end = endOfWord(line, start);
    const bool goesOn = end + 1 < line.size() &&
                        (line[end] == QLatin1Char('-') || line[end] == QLatin1Char('.')) &&
                        line[end + 1].isLetterOrNumber();
    if (!isFree || goesOn || !(end == line.size() || line[end].isSpace() || isSign(line[end])))
        return {.start = start, .end = std::max(end, chunkEnd)};
    return {.kind = Token::Kind::word,
            .start = start,
            .end = end,
            .text = normalized(line.mid(start, end - start))};
}

}  // namespace

QString normalized(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (const QChar c : text.normalized(QString::NormalizationForm_D)) {
        if (c.isMark())
            continue;
        result.append(c == typographicApostrophe ? QLatin1Char('\'') : c.toLower());
    }
    return result;
}

std::vector<Token> tokenize(const QString& line) {
    std::vector<Token> tokens;
    qsizetype position = 0;
    qsizetype chunkEnd = 0;
    const auto add = [&](Token token) {
        position = token.end;
        tokens.push_back(std::move(token));
    };
    while (position < line.size()) {
        const QChar c = line[position];
        if (c.isSpace()) {
            ++position;
            continue;
        }
        const bool beginsChunk = position == 0 || line[position - 1].isSpace();
        if (position >= chunkEnd)
            chunkEnd = endOfChunk(line, position);
        const QChar before = beginsChunk ? QChar(QLatin1Char(' ')) : line[position - 1];
        const bool isFree = beginsChunk || isSign(before);
        if (isQuote(c)) {
            const auto close = line.indexOf(closingQuote(c), position + 1);
            add({.start = position, .end = close < 0 ? position + 1 : close + 1});
        } else if (beginsChunk && c == QLatin1Char('@') &&
                   (position + 1 == chunkEnd || line[position + 1].isDigit())) {
            add({.kind = Token::Kind::word,
                 .start = position,
                 .end = position + 1,
                 .text = QStringLiteral("@")});
        } else if (beginsChunk && isAddress(QStringView(line).mid(position, chunkEnd - position))) {
            add({.start = position, .end = chunkEnd});
        } else if (auto number = c.isDigit() && (isFree || before == QLatin1Char('@'))
                                     ? numberToken(line, position)
                                     : std::nullopt) {
            add(std::move(*number));
        } else if (c.isLetter()) {
            add(wordToken(line, position, isFree, chunkEnd));
        } else if (isSign(c)) {
            add({.kind = Token::Kind::punctuation, .start = position, .end = position + 1, .text = c});
        } else {
            add({.start = position, .end = std::max(chunkEnd, position + 1)});
        }
    }
    for (Token& token : tokens) {
        if (token.kind == Token::Kind::opaque)
            token.text = line.mid(token.start, token.end - token.start);
    }
    return tokens;
}

}  // namespace kestrant::quickadd
