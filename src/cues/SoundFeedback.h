#pragma once

#include "cues/AudioOutput.h"
#include "cues/SensoryFeedback.h"
#include "foundation/Scheduler.h"

#include <QString>

#include <memory>

namespace kestrant {

/// Plays the interface sounds from memory, each as often beside itself as it has players. A cue that cannot
/// be heard at once is never heard late: without a device, or with all of its players busy, it is dropped.
///
/// Thread: main for every call, which only hands over to the queue. Everything else happens there.
class SoundFeedback final : public CuePlayer {
  public:
    using Cue = kestrant::Cue;

    /// Name of the queue's thread.
    static constexpr char queueLabel[] = "com.Kestrant.notchapp.sound-feedback";
    /// Where the program's own sounds are.
    static constexpr char builtInSounds[] = ":/com.Kestrant.notchapp/sounds";
    static constexpr int playersPerCue = 3;
    static constexpr double volume = 0.6;
    /// A cue that has waited longer is dropped.
    static constexpr Duration latestStart = std::chrono::milliseconds(200);
    /// A device that could not be opened is not looked for again before.
    static constexpr Duration deviceRetryInterval = std::chrono::seconds(2);

    /// The name of a cue's file, without its extension "mp3".
    [[nodiscard]] static QString resourceName(Cue cue);

    /// `queue` runs one piece of work after the other, in order, and must outlive this object like `clock`.
    /// `output` is used and destroyed on it.
    SoundFeedback(std::unique_ptr<AudioOutput> output, Scheduler& queue, const Clock& clock,
                  QString soundFolder = QString::fromLatin1(builtInSounds));
    SoundFeedback(const SoundFeedback&) = delete;
    SoundFeedback& operator=(const SoundFeedback&) = delete;
    ~SoundFeedback() override;

    /// A file that is missing or damaged leaves its cue silent.
    void prepare() override;
    void play(Cue cue) override;

  private:
    class Engine;

    Scheduler& queue_;
    const Clock& clock_;
    std::shared_ptr<Engine> engine_;
};

}  // namespace kestrant
