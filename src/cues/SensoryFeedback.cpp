#include "cues/SensoryFeedback.h"

namespace kestrant {

SensoryFeedback::SensoryFeedback(const Preferences& preferences, CuePlayer& player,
                                 HapticPerformer& performer)
    : preferences_(preferences)
    , player_(player)
    , performer_(performer) {}

SoundProfile SensoryFeedback::soundProfile() const {
    return preferences_.soundProfile();
}

void SensoryFeedback::play(Cue cue) const {
    if (soundProfile() != SoundProfile::off)
        player_.play(cue);
}

void SensoryFeedback::performHaptic(HapticPattern pattern) const {
    if (const HapticProfile profile = preferences_.hapticProfile(); profile != HapticProfile::off)
        performer_.perform(pattern, profile);
}

}  // namespace kestrant
