#include "foundation/ControlCharacters.h"

#include <QChar>

#include <algorithm>

namespace kestrant {

namespace {

enum class LineFeeds { keep, replace };

bool breaksLine(char16_t character) {
    return (character >= u'\t' && character <= u'\r') || character == 0x85 || character == 0x2028 ||
           character == 0x2029;
}

bool turnsDirection(char16_t character) {
    return (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

/// Absent for what is left out.
QString replacement(char16_t character) {
    if (breaksLine(character))
        return QStringLiteral(" ");
    if (turnsDirection(character))
        return {};
    if (character < 0x20)
        return QChar(0x2400 + character);  // its picture
    return character == 0x7f ? QChar(0x2421) : QChar(QChar::ReplacementCharacter);
}

QString cleaned(const QString& text, LineFeeds lineFeeds) {
    if (std::none_of(text.begin(), text.end(), [](QChar unit) { return isControlCharacter(unit.unicode()); }))
        return text;
    QString result;
    result.reserve(text.size());
    for (const QChar unit : text) {
        const char16_t character = unit.unicode();
        if (!isControlCharacter(character) || (character == u'\n' && lineFeeds == LineFeeds::keep))
            result += unit;
        else
            result += replacement(character);
    }
    return result;
}

}  // namespace

bool isControlCharacter(char16_t character) {
    return QChar::category(character) == QChar::Other_Control || turnsDirection(character) ||
           breaksLine(character);
}

QString withoutControlCharacters(const QString& text) {
    return cleaned(text, LineFeeds::keep);
}

QString onOneLine(const QString& text) {
    return cleaned(text, LineFeeds::replace);
}

}  // namespace kestrant
