#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace kestrant::model {

enum class Kind {
    add,
    edit,
    complete,
    remove,
    move,
    take,
    editInHand,
    saveInHand,
    saveMany,
    takeBack,
    othersChange,
    othersRemove,
    othersAdd,
    othersTouch,
    othersMove,
    othersNote,
    othersJoin,
    addEvent,
    editEvent,
    moveEvent,
    removeEvent,
    removeSeries,
    takeEvent,
    saveEventInHand,
    takeBackEvent,
    othersChangeEvent,
    othersRemoveEvent,
};
constexpr int kinds = static_cast<int>(Kind::othersRemoveEvent) + 1;

/// A step; the numbers choose among what there is when it is taken.
struct Step {
    Kind kind;
    unsigned which;
    unsigned property;
    unsigned value;
    /// The next step comes before the change is noticed.
    bool isUnnoticed;
    /// Others change the item while it is being saved, removed or restored.
    bool isInterrupted;
};

inline std::vector<Step> stepsOf(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    // Not a distribution, whose numbers differ between libraries.
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    std::vector<Step> result;
    for (std::size_t i = 0; i < count; ++i) {
        // An empty database shows little: it begins with some items.
        const auto kind = i < 3 ? Kind::add : i == 3 ? Kind::addEvent : static_cast<Kind>(below(kinds));
        result.push_back({kind, below(1000), below(1000), below(1000), below(3) == 0, below(3) == 0});
    }
    return result;
}

}  // namespace kestrant::model
