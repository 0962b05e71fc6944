#include "ui/items/WordColors.h"

#include <QColor>
#include <QTextBlock>
#include <QVariantMap>

#include <algorithm>

namespace kestrant {

WordColors::WordColors(QObject* parent) : QSyntaxHighlighter(parent) {}

void WordColors::setTextDocument(QQuickTextDocument* document) {
    if (document == textDocument_)
        return;
    textDocument_ = document;
    setDocument(document ? document->textDocument() : nullptr);
    Q_EMIT changed();
}

void WordColors::setWords(const QVariantList& words) {
    if (words == words_)
        return;
    words_ = words;
    rehighlight();
    Q_EMIT changed();
}

void WordColors::highlightBlock(const QString& text) {
    const int begin = currentBlock().position();
    for (const QVariant& entry : words_) {
        const QVariantMap word = entry.toMap();
        const int start = std::max(0, word[QStringLiteral("start")].toInt() - begin);
        const int end = std::min(int(text.size()), word[QStringLiteral("start")].toInt() +
                                                       word[QStringLiteral("length")].toInt() - begin);
        if (start < end)
            setFormat(start, end - start, word[QStringLiteral("color")].value<QColor>());
    }
}

}  // namespace kestrant
