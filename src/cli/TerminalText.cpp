#include "cli/TerminalText.h"

#include "foundation/ControlCharacters.h"

#include <QChar>
#include <QStringView>

#include <algorithm>
#include <array>

namespace kestrant {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// The wide and full-width characters of EastAsianWidth.txt, Unicode 14, across unassigned gaps.
constexpr std::array wideRanges{
    Range{0x1100, 0x115f},   Range{0x231a, 0x231b},   Range{0x2329, 0x232a},   Range{0x23e9, 0x23ec},
    Range{0x23f0, 0x23f0},   Range{0x23f3, 0x23f3},   Range{0x25fd, 0x25fe},   Range{0x2614, 0x2615},
    Range{0x2648, 0x2653},   Range{0x267f, 0x267f},   Range{0x2693, 0x2693},   Range{0x26a1, 0x26a1},
    Range{0x26aa, 0x26ab},   Range{0x26bd, 0x26be},   Range{0x26c4, 0x26c5},   Range{0x26ce, 0x26ce},
    Range{0x26d4, 0x26d4},   Range{0x26ea, 0x26ea},   Range{0x26f2, 0x26f3},   Range{0x26f5, 0x26f5},
    Range{0x26fa, 0x26fa},   Range{0x26fd, 0x26fd},   Range{0x2705, 0x2705},   Range{0x270a, 0x270b},
    Range{0x2728, 0x2728},   Range{0x274c, 0x274c},   Range{0x274e, 0x274e},   Range{0x2753, 0x2755},
    Range{0x2757, 0x2757},   Range{0x2795, 0x2797},   Range{0x27b0, 0x27b0},   Range{0x27bf, 0x27bf},
    Range{0x2b1b, 0x2b1c},   Range{0x2b50, 0x2b50},   Range{0x2b55, 0x2b55},   Range{0x2e80, 0x303e},
    Range{0x3041, 0x3247},   Range{0x3250, 0x4dbf},   Range{0x4e00, 0xa4c6},   Range{0xa960, 0xa97c},
    Range{0xac00, 0xd7a3},   Range{0xf900, 0xfad9},   Range{0xfe10, 0xfe19},   Range{0xfe30, 0xfe6b},
    Range{0xff01, 0xff60},   Range{0xffe0, 0xffe6},   Range{0x16fe0, 0x18d08}, Range{0x1aff0, 0x1b2fb},
    Range{0x1f004, 0x1f004}, Range{0x1f0cf, 0x1f0cf}, Range{0x1f18e, 0x1f18e}, Range{0x1f191, 0x1f19a},
    Range{0x1f200, 0x1f265}, Range{0x1f300, 0x1f320}, Range{0x1f32d, 0x1f335}, Range{0x1f337, 0x1f37c},
    Range{0x1f37e, 0x1f393}, Range{0x1f3a0, 0x1f3ca}, Range{0x1f3cf, 0x1f3d3}, Range{0x1f3e0, 0x1f3f0},
    Range{0x1f3f4, 0x1f3f4}, Range{0x1f3f8, 0x1f43e}, Range{0x1f440, 0x1f440}, Range{0x1f442, 0x1f4fc},
    Range{0x1f4ff, 0x1f53d}, Range{0x1f54b, 0x1f54e}, Range{0x1f550, 0x1f567}, Range{0x1f57a, 0x1f57a},
    Range{0x1f595, 0x1f596}, Range{0x1f5a4, 0x1f5a4}, Range{0x1f5fb, 0x1f64f}, Range{0x1f680, 0x1f6c5},
    Range{0x1f6cc, 0x1f6cc}, Range{0x1f6d0, 0x1f6d2}, Range{0x1f6d5, 0x1f6df}, Range{0x1f6eb, 0x1f6ec},
    Range{0x1f6f4, 0x1f6fc}, Range{0x1f7e0, 0x1f7f0}, Range{0x1f90c, 0x1f93a}, Range{0x1f93c, 0x1f945},
    Range{0x1f947, 0x1f9ff}, Range{0x1fa70, 0x1faff}, Range{0x20000, 0x3fffd},
};

constexpr char32_t joiner = 0x200d;
constexpr char32_t emojiStyle = 0xfe0f;

bool isWide(char32_t character) {
    const auto range =
        std::lower_bound(wideRanges.begin(), wideRanges.end(), character,
                         [](const Range& candidate, char32_t sought) { return candidate.last < sought; });
    return range != wideRanges.end() && range->first <= character;
}

/// Takes no column of its own.
bool isAttached(char32_t character) {
    // Vowels and final consonants of Hangul that complete a syllable.
    if ((character >= 0x1160 && character <= 0x11ff) || (character >= 0xd7b0 && character <= 0xd7fb))
        return true;
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Control:
        return true;
    case QChar::Other_Format:
        // The soft hyphen, and signs that stand before Arabic and Syriac figures, are drawn.
        return character != 0xad && !(character >= 0x600 && character <= 0x605) && character != 0x6dd &&
               character != 0x70f && character != 0x890 && character != 0x891 && character != 0x8e2;
    default:
        return false;
    }
}

/// A picture, or a sign that can be drawn as one.
bool isPicture(char32_t character) {
    const QChar::Category category = QChar::category(character);
    return category == QChar::Symbol_Other || category == QChar::Symbol_Math || isWide(character);
}

bool hasEmojiStyle(char32_t character) {
    return isPicture(character) || character == U'#' || character == U'*' ||
           (character >= U'0' && character <= U'9') || character == 0x203c || character == 0x2049 ||
           character == 0x2139 || character == 0x3030 || character == 0x303d;
}

bool isSkinTone(char32_t character) {
    return character >= 0x1f3fb && character <= 0x1f3ff;
}

bool isRegion(char32_t character) {
    return character >= 0x1f1e6 && character <= 0x1f1ff;
}

/// Reads characters from a text; 0 at its end.
class Reader {
  public:
    explicit Reader(QStringView text) : text_(text) {}

    [[nodiscard]] char32_t next() const {
        if (position_ >= text_.size())
            return 0;
        const QChar unit = text_[position_];
        return takesTwoUnits() ? QChar::surrogateToUcs4(unit, text_[position_ + 1])
                               : char32_t(unit.unicode());
    }
    void advance() { position_ += takesTwoUnits() ? 2 : 1; }
    [[nodiscard]] bool isAtEnd() const { return position_ >= text_.size(); }
    [[nodiscard]] qsizetype position() const { return position_; }

  private:
    [[nodiscard]] bool takesTwoUnits() const {
        return text_[position_].isHighSurrogate() && position_ + 1 < text_.size() &&
               text_[position_ + 1].isLowSurrogate();
    }

    QStringView text_;
    qsizetype position_ = 0;
};

/// Reads what is drawn as one character; returns its columns.
int readCluster(Reader& reader) {
    const char32_t base = reader.next();
    reader.advance();
    if (isRegion(base) && isRegion(reader.next())) {
        reader.advance();
        return 2;
    }
    int columns = isAttached(base) ? 0 : isWide(base) ? 2 : 1;
    while (!reader.isAtEnd()) {
        const char32_t next = reader.next();
        if (isSkinTone(next) && isPicture(base)) {
            columns = 2;
        } else if (!isAttached(next) || columns == 0) {
            break;
        } else if (next == emojiStyle && hasEmojiStyle(base)) {
            columns = 2;
        }
        reader.advance();
        // Pictures that are joined are drawn as one.
        if (next == joiner && isPicture(base) && isPicture(reader.next()))
            reader.advance();
    }
    return columns;
}

}  // namespace

int columnsOf(const QString& text) {
    int columns = 0;
    for (Reader reader(text); !reader.isAtEnd();)
        columns += readCluster(reader);
    return columns;
}

QString cutToColumns(const QString& text, int columns) {
    // No character of one unit takes more than two columns, so most texts need not be measured.
    if (text.size() * 2 <= columns)
        return text;
    Reader reader(text);
    qsizetype kept = 0;
    for (int taken = 0; !reader.isAtEnd();) {
        taken += readCluster(reader);
        if (taken > columns)
            return text.left(kept) + QChar(0x2026);
        if (taken < columns)
            kept = reader.position();
    }
    return text;
}

QString terminalJson(const QString& json) {
    QString result;
    result.reserve(json.size());
    for (const QChar unit : json) {
        const char16_t character = unit.unicode();
        if (character != u'\n' && isControlCharacter(character))
            result += QStringLiteral("\\u%1").arg(uint(character), 4, 16, QLatin1Char('0'));
        else
            result += unit;
    }
    return result;
}

}  // namespace kestrant
