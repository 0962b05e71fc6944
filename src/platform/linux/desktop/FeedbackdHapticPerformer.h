#pragma once

#include "cues/SensoryFeedback.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

#include <memory>
#include <optional>

namespace kestrant {

/// Haptics through the desktop's feedback service (org.sigxcpu.Feedback), where it is running; it is never
/// started for this. Thread: main.
class FeedbackdHapticPerformer final : public HapticPerformer {
  public:
    /// The session bus, connected to when there is something to perform.
    FeedbackdHapticPerformer() = default;
    explicit FeedbackdHapticPerformer(const QDBusConnection& bus) : bus_(bus) {}

    void perform(HapticPattern pattern, HapticProfile strength) override;

    /// Begins to follow whether the service is there; isAvailable() answers from then on, as soon as the bus
    /// has.
    void watch();
    /// Whether anything can be felt.
    [[nodiscard]] bool isAvailable() const { return isAvailable_; }

  private:
    [[nodiscard]] QDBusConnection& bus();

    std::optional<QDBusConnection> bus_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    bool isAvailable_ = false;
};

}  // namespace kestrant
