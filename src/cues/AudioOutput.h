#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

/// A whole sound, decoded.
struct PcmBuffer {
    /// Frames a second.
    int sampleRate = 0;
    /// 1 or 2.
    int channelCount = 0;
    /// The channels of a frame beside each other.
    std::vector<std::int16_t> samples;

    [[nodiscard]] bool operator==(const PcmBuffer&) const = default;
};

/// The machine's sound device, through players that each play one sound again and again.
///
/// Thread: one for every call and for destruction; callbacks come on it as well, never from within a call.
/// No call waits longer than the sound service takes to answer; none reports to the person.
class AudioOutput {
  public:
    enum class PlayerNode : std::uint32_t {};

    virtual ~AudioOutput() = default;

    /// Absent when the file is not a short sound of one or two channels.
    [[nodiscard]] virtual std::optional<PcmBuffer> decode(const QByteArray& file) = 0;

    /// Opens the device that is the right one now; false when there is none. Every player attached before is
    /// gone, and what it played has not completed.
    virtual bool start() = 0;

    /// Makes `count` players for a sound on the open device; none when it has no room for them. They are
    /// there until start() is called again.
    [[nodiscard]] virtual std::vector<PlayerNode> attach(const PcmBuffer& buffer, int count) = 0;

    /// Plays the player's sound from its beginning, at `volume` (1 as recorded), and calls `completed` when
    /// it has been played to its end. False when the device is gone: nothing is heard before another start().
    virtual bool play(PlayerNode player, double volume, std::function<void()> completed) = 0;

    /// `changed` is called when the device is found to be gone while it plays.
    virtual void observeConfiguration(std::function<void()> changed) = 0;
};

}  // namespace kestrant
