#include "feedback/Feedback.h"

namespace kestrant {

Feedback::Feedback(const Preferences& preferences, CuePlayer& player, HapticPerformer& performer)
    : preferences_(preferences)
    , player_(player)
    , performer_(performer) {}

SoundProfile Feedback::soundProfile() const {
    return preferences_.soundProfile();
}

void Feedback::play(Cue cue) const {
    if (soundProfile() != SoundProfile::off)
        player_.play(cue);
}

void Feedback::performHaptic(HapticPattern pattern) const {
    if (const HapticProfile profile = preferences_.hapticProfile(); profile != HapticProfile::off)
        performer_.perform(pattern, profile);
}

}  // namespace kestrant
