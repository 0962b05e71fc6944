#pragma once

#include <QString>

namespace kestrant {

/// A text with a capital letter at its beginning, for names that stand alone in languages that write them
/// small.
[[nodiscard]] inline QString capitalized(QString text) {
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

}  // namespace kestrant
