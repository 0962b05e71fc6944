#pragma once

#include <functional>
#include <utility>

namespace kestrant {

/// Keeps an observer registered; destroying it (or calling cancel()) ends the registration. Move-only.
/// Thread: that of whatever handed it out.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> unsubscribe) : unsubscribe_(std::move(unsubscribe)) {}
    Subscription(Subscription&& other) noexcept : unsubscribe_(std::exchange(other.unsubscribe_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            cancel();
            unsubscribe_ = std::exchange(other.unsubscribe_, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { cancel(); }

    void cancel() {
        if (auto unsubscribe = std::exchange(unsubscribe_, nullptr))
            unsubscribe();
    }

  private:
    std::function<void()> unsubscribe_;
};

}  // namespace kestrant
