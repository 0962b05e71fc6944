#include "foundation/TextCollation.h"

namespace kestrant {

TextCollation::TextCollation(const QLocale& locale) : locale_(locale), collator_(locale) {
    collator_.setCaseSensitivity(Qt::CaseInsensitive);
}

int TextCollation::compare(const QString& a, const QString& b) const {
    return collator_.compare(a, b);
}

QCollatorSortKey TextCollation::sortKey(const QString& text) const {
    return collator_.sortKey(text);
}

bool TextCollation::contains(const QString& haystack, const QString& needle) const {
    return haystack.contains(needle, Qt::CaseInsensitive);
}

}  // namespace kestrant
