#pragma once

#include "preferences/Preferences.h"

namespace kestrant {

/// The interface sounds.
enum class Cue { dragStart = 0, expand = 1, collapse = 2, drop = 3, snap = 4, focus = 5 };

enum class HapticPattern { generic = 0, alignment = 1, levelChange = 2 };

/// Plays cues. Thread: main for every call; never waits.
class CuePlayer {
  public:
    virtual ~CuePlayer() = default;
    /// Loads what playing needs, once; later calls do nothing. A cue that cannot be loaded stays silent.
    virtual void prepare() = 0;
    virtual void play(Cue cue) = 0;
};

/// Performs touch feedback at once, where there is a device for it. Thread: main; never waits.
class HapticPerformer {
  public:
    virtual ~HapticPerformer() = default;
    /// `strength` is never `off`.
    virtual void perform(HapticPattern pattern, HapticProfile strength) = 0;
};

class SilentCuePlayer : public CuePlayer {
  public:
    void prepare() override {}
    void play(Cue) override {}
};

class SilentHapticPerformer : public HapticPerformer {
  public:
    void perform(HapticPattern, HapticProfile) override {}
};

/// Sounds and touches behind the person's choice of profile, which is read anew for each of them. Thread:
/// main.
class SensoryFeedback {
  public:
    /// All three must outlive this object.
    SensoryFeedback(const Preferences& preferences, CuePlayer& player, HapticPerformer& performer);

    [[nodiscard]] SoundProfile soundProfile() const;
    /// Silent when the sound profile is off.
    void play(Cue cue) const;
    /// Does nothing while the haptic profile is off.
    void performHaptic(HapticPattern pattern) const;

  private:
    const Preferences& preferences_;
    CuePlayer& player_;
    HapticPerformer& performer_;
};

}  // namespace kestrant
