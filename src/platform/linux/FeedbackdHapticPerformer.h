#pragma once

#include "feedback/Feedback.h"

#include <QDBusConnection>

#include <optional>

namespace kestrant {

/// Haptics through the desktop's feedback service (org.sigxcpu.Feedback), where it is running; it is never
/// started for this. Thread: main.
class FeedbackdHapticPerformer final : public HapticPerformer {
  public:
    /// The session bus, connected to when there is something to perform.
    FeedbackdHapticPerformer() = default;
    explicit FeedbackdHapticPerformer(const QDBusConnection& bus) : bus_(bus) {}

    void perform(HapticPattern pattern) override;

  private:
    std::optional<QDBusConnection> bus_;
};

}  // namespace kestrant
