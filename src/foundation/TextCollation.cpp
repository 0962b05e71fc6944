#include "foundation/TextCollation.h"

#include <algorithm>

namespace kestrant {

namespace {

bool isAscii(const QString& text) {
    return std::all_of(text.cbegin(), text.cend(),
                       [](QChar character) { return character.unicode() < 0x80; });
}

/// The C locale's collator orders by character codes and its keys mind letter case.
QLocale collatingLocale(const QLocale& locale) {
    return locale.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : locale;
}

}  // namespace

TextCollation::TextCollation(const QLocale& locale)
    : locale_(locale)
    , collator_(collatingLocale(locale))
    , hasDottedI_(locale.language() == QLocale::Turkish || locale.language() == QLocale::Azerbaijani) {
    collator_.setCaseSensitivity(Qt::CaseInsensitive);
}

int TextCollation::compare(const QString& a, const QString& b) const {
    return collator_.compare(a, b);
}

QCollatorSortKey TextCollation::sortKey(const QString& text) const {
    return collator_.sortKey(text);
}

bool TextCollation::contains(const QString& haystack, const QString& needle) const {
    if (needle != needle_) {
        needle_ = needle;
        foldedNeedle_ = fold(needle);
    }
    return fold(haystack).contains(foldedNeedle_);
}

QString TextCollation::fold(const QString& text) const {
    if (!hasDottedI_ && isAscii(text))
        return text.toLower();
    // Composed first and last: case folding may take characters apart, and the same text can be written both
    // ways.
    QString folded = text.normalized(QString::NormalizationForm_C);
    if (hasDottedI_)
        folded.replace(u'I', u'\u0131').replace(u'\u0130', u'i');
    // The one letter in use whose capital is two letters, which simple folding leaves as it is.
    return folded.toCaseFolded()
        .replace(QChar(u'\u00DF'), QStringLiteral("ss"))
        .normalized(QString::NormalizationForm_C);
}

}  // namespace kestrant
