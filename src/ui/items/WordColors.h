#pragma once

#include <QQmlEngine>
#include <QQuickTextDocument>
#include <QSyntaxHighlighter>
#include <QVariantList>

namespace kestrant {

/// Colours words of a text while it is written. Thread: main.
class WordColors : public QSyntaxHighlighter {
    Q_OBJECT
    QML_ELEMENT
    /// Of the text edit.
    Q_PROPERTY(QQuickTextDocument* textDocument READ textDocument WRITE setTextDocument NOTIFY changed)
    /// {start, length, color} each, counted in UTF-16 units of the whole text.
    Q_PROPERTY(QVariantList words READ words WRITE setWords NOTIFY changed)

  public:
    explicit WordColors(QObject* parent = nullptr);

    [[nodiscard]] QQuickTextDocument* textDocument() const { return textDocument_; }
    void setTextDocument(QQuickTextDocument* document);
    [[nodiscard]] const QVariantList& words() const { return words_; }
    void setWords(const QVariantList& words);

  Q_SIGNALS:
    void changed();

  protected:
    void highlightBlock(const QString& text) override;

  private:
    QQuickTextDocument* textDocument_ = nullptr;
    QVariantList words_;
};

}  // namespace kestrant
