#pragma once

#include "cues/AudioOutput.h"
#include "foundation/Scheduler.h"

#include <memory>

namespace kestrant {

/// Sound by way of a module that is loaded when it is first used; there is no device where the module or a
/// library behind it is missing.
///
/// To be constructed on the main thread before others may read the environment, in which it leaves its wishes
/// for the library; used and destroyed on the thread of `queue`, as the port says.
class ModuleAudioOutput final : public AudioOutput {
  public:
    explicit ModuleAudioOutput(Scheduler& queue);

    [[nodiscard]] std::optional<PcmBuffer> decode(const QByteArray& file) override;
    bool start() override;
    [[nodiscard]] std::vector<PlayerNode> attach(const PcmBuffer& buffer, int count) override;
    bool play(PlayerNode player, double volume, std::function<void()> completed) override;
    void observeConfiguration(std::function<void()> changed) override;

  private:
    /// Null where there is no module.
    [[nodiscard]] AudioOutput* output();

    Scheduler& queue_;
    bool wasLoaded_ = false;
    std::unique_ptr<AudioOutput> output_;
};

}  // namespace kestrant
