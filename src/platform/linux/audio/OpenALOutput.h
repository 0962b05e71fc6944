#pragma once

#include "cues/AudioOutput.h"
#include "foundation/Scheduler.h"

#include <memory>

namespace kestrant {

/// Sound through OpenAL Soft, which finds the desktop's sound service or the sound card; files are decoded by
/// libsndfile. While nothing is heard the device rests, so that neither the processor nor the sound card
/// stays awake for it.
///
/// Thread: that of `queue`, as the port says. One for the process.
class OpenALOutput final : public AudioOutput {
  public:
    explicit OpenALOutput(Scheduler& queue);
    OpenALOutput(const OpenALOutput&) = delete;
    OpenALOutput& operator=(const OpenALOutput&) = delete;
    ~OpenALOutput() override;

    [[nodiscard]] std::optional<PcmBuffer> decode(const QByteArray& file) override;
    bool start() override;
    [[nodiscard]] std::vector<PlayerNode> attach(const PcmBuffer& buffer, int count) override;
    bool play(PlayerNode player, double volume, std::function<void()> completed) override;
    void observeConfiguration(std::function<void()> changed) override;

  private:
    class Device;

    void watch();

    Scheduler& queue_;
    std::unique_ptr<Device> device_;
    std::function<void()> configurationChanged_;
    ScheduledTask watching_;
    ScheduledTask resting_;
};

}  // namespace kestrant
