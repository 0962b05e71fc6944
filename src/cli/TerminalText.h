#pragma once

#include <QString>

namespace kestrant {

// Text at a terminal. Nothing here depends on the locale of the process.

/// Columns that a text takes: two for wide characters and for emoji, sequences of several characters
/// included; none for marks that combine with what they follow and for characters without a shape. By the
/// East Asian Width of Unicode 14 (UAX #11), ambiguous characters counting as narrow.
[[nodiscard]] int columnsOf(const QString& text);

/// The text, or as much of its beginning as fits into the columns together with an ellipsis. What is drawn as
/// one character stays whole.
[[nodiscard]] QString cutToColumns(const QString& text, int columns);

/// JSON in which control characters, which a terminal would carry out, are written as escapes, so that its
/// values stay exactly the same.
[[nodiscard]] QString terminalJson(const QString& json);

}  // namespace kestrant
