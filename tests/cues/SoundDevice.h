#pragma once

#include "cues/AudioOutput.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kestrant::test {

/// A sound device that can be unplugged, and what it has played. Files hold their sound as they are: a file's
/// text is what is heard of it, and one that begins with "damaged" is.
struct SoundDevice {
    struct Playback {
        std::string sound;
        std::function<void()> completed;
    };

    bool isThere = true;
    /// Which device it is: another number, and whoever opened the former has to open it anew.
    int number = 0;
    /// How often it was looked for.
    int starts = 0;
    std::function<void()> changed;
    std::vector<Playback> playing;
    std::vector<std::string> heard;
    std::vector<double> volumes;
    bool isClosed = false;

    [[nodiscard]] std::vector<std::string> takeHeard() { return std::exchange(heard, {}); }
    void finish(std::size_t index) {
        const auto completed = std::move(playing.at(index).completed);
        playing.erase(playing.begin() + static_cast<std::ptrdiff_t>(index));
        completed();
    }
    void finishAll() {
        while (!playing.empty())
            finish(0);
    }
};

class DeviceOutput final : public AudioOutput {
  public:
    explicit DeviceOutput(SoundDevice& device) : device_(device) {}
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;
    ~DeviceOutput() override { device_.isClosed = true; }

    std::optional<PcmBuffer> decode(const QByteArray& file) override {
        if (file.startsWith("damaged"))
            return {};
        return PcmBuffer{44100, 1, {file.begin(), file.end()}};
    }
    bool start() override {
        ++device_.starts;
        sounds_.clear();
        opened_ = device_.isThere ? std::optional(device_.number) : std::nullopt;
        return opened_.has_value();
    }
    std::vector<PlayerNode> attach(const PcmBuffer& buffer, int count) override {
        std::vector<PlayerNode> nodes;
        for (int index = 0; index < count; ++index) {
            nodes.push_back(static_cast<PlayerNode>(sounds_.size()));
            sounds_.emplace_back(buffer.samples.begin(), buffer.samples.end());
        }
        return nodes;
    }
    bool play(PlayerNode player, double volume, std::function<void()> completed) override {
        if (!device_.isThere || opened_ != device_.number)
            return false;
        const std::string& sound = sounds_.at(static_cast<std::size_t>(player));
        device_.heard.push_back(sound);
        device_.volumes.push_back(volume);
        device_.playing.push_back({sound, std::move(completed)});
        return true;
    }
    void observeConfiguration(std::function<void()> changed) override {
        device_.changed = std::move(changed);
    }

  private:
    SoundDevice& device_;
    std::vector<std::string> sounds_;
    std::optional<int> opened_;
};

}  // namespace kestrant::test
