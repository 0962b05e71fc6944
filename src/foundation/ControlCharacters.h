#pragma once

#include <QString>

namespace kestrant {

// Text from calendars and servers, for places that would carry out what is hidden in it: terminals,
// notifications.

/// Whether a character does something rather than being seen: controls (C0, C1, DEL), separators of lines and
/// paragraphs, and what turns the direction of writing round, also of what follows the text.
[[nodiscard]] bool isControlCharacter(char16_t character);

/// The text with visible signs in the place of control characters; what breaks a line is a blank, and what
/// turns the direction of writing is left out. Line feeds stay.
[[nodiscard]] QString withoutControlCharacters(const QString& text);

/// The same without line feeds.
[[nodiscard]] QString onOneLine(const QString& text);

}  // namespace kestrant
