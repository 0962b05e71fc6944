#pragma once

#include "cues/AudioOutput.h"

namespace kestrant {

/// Decodes a sound file that libsndfile knows (mp3 among them), without the silence that an encoder has put
/// around it. Absent when it is damaged, longer than ten seconds, or of more than two channels. Thread: any.
[[nodiscard]] std::optional<PcmBuffer> decodeSoundFile(const QByteArray& file);

}  // namespace kestrant
