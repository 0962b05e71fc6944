#pragma once

#include "foundation/Subscription.h"

#include <functional>
#include <map>
#include <memory>

namespace kestrant {

/// A list of callbacks with one argument list. An observer may subscribe, unsubscribe or destroy the list's
/// owner while it is being told; one added meanwhile is told from the next time on. Thread: one, that of its
/// owner.
template <typename... Arguments>
class ObserverList {
  public:
    using Observer = std::function<void(Arguments...)>;

    [[nodiscard]] Subscription add(Observer observer) {
        const int key = state_->next++;
        state_->observers.emplace(key, std::make_shared<Observer>(std::move(observer)));
        return Subscription([weak = std::weak_ptr<State>(state_), key] {
            if (const auto state = weak.lock())
                state->observers.erase(key);
        });
    }

    void notify(Arguments... arguments) const {
        const std::shared_ptr<State> state = state_;
        const auto observers = state->observers;
        for (const auto& [key, observer] : observers) {
            if (state->observers.contains(key))
                (*observer)(arguments...);
        }
    }

    [[nodiscard]] bool isEmpty() const { return state_->observers.empty(); }

  private:
    struct State {
        std::map<int, std::shared_ptr<Observer>> observers;
        int next = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace kestrant
