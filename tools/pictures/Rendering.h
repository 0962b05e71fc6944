#pragma once

#include <QString>

namespace kestrant {

/// To be called before the application object is made: a screen in memory with two pixels a point (or as many
/// as QT_SCALE_FACTOR says), for pictures that are the same on every machine.
void prepareRendering();

/// Writes a picture of every state of the panel, in both languages, into a folder (made if need be):
/// demonstration data, a fixed clock, no motion. Names are "LANGUAGE-STATE.png". False when one could not be
/// made or written, with the reason on stderr. Thread: main; takes a few seconds.
[[nodiscard]] bool renderPictures(const QString& directory);

}  // namespace kestrant
