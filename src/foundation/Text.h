#pragma once

#include <QString>

namespace kestrant {

/// The language of every text a person sees.
enum class Language { english, french };

/// One text in both languages. Created at the place of use with text(); shown with in().
struct TextPair {
    QString english;
    QString french;

    [[nodiscard]] const QString& in(Language language) const {
        return language == Language::french ? french : english;
    }
    bool operator==(const TextPair&) const = default;
};

/// text("Done", "Terminé"): both literals are UTF-8.
[[nodiscard]] inline TextPair text(const char* english, const char* french) {
    return {QString::fromUtf8(english), QString::fromUtf8(french)};
}

}  // namespace kestrant
