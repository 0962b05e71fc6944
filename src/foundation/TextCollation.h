#pragma once

#include <QCollator>
#include <QLocale>
#include <QString>

namespace kestrant {

/// Locale-aware, case-insensitive comparison and containment of texts. Not thread-safe; make one where it is
/// needed.
class TextCollation {
  public:
    explicit TextCollation(const QLocale& locale);

    [[nodiscard]] const QLocale& locale() const { return locale_; }
    /// Negative, zero or positive as `a` comes before, equals or comes after `b`.
    [[nodiscard]] int compare(const QString& a, const QString& b) const;
    /// A key whose order under compare() is that of the texts; prepare once to sort often.
    [[nodiscard]] QCollatorSortKey sortKey(const QString& text) const;
    /// Whether `haystack` contains `needle`, letter case aside, as the locale counts it; accents matter,
    /// however they are encoded. An empty needle is contained in every text. Asking for one needle in many
    /// texts is fast.
    [[nodiscard]] bool contains(const QString& haystack, const QString& needle) const;

  private:
    [[nodiscard]] QString fold(const QString& text) const;

    QLocale locale_;
    QCollator collator_;
    bool hasDottedI_;
    mutable QString needle_;
    mutable QString foldedNeedle_;
};

}  // namespace kestrant
