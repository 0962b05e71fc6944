#pragma once

#include <tuple>

namespace kestrant {

/// The edits of an item, applied to the state that it has by now.
template <typename Data>
struct Merged {
    Data merged;
    /// A property was changed on both sides, to different values; `merged` then holds the edited one.
    bool conflict = false;
};

/// Applies the edits that lead from `base` to `edited` to `current`, property by property: those that
/// reminders and events share, then the `others`, tuples of properties that count as one.
template <typename Data, typename... Others>
[[nodiscard]] Merged<Data> mergeProperties(const Data& base, const Data& edited, const Data& current,
                                           const Others&... others) {
    Merged<Data> result{current};
    const auto apply = [&](auto... properties) {
        const auto equal = [&](const Data& a, const Data& b) {
            return ((a.*properties == b.*properties) && ...);
        };
        if (equal(edited, base))
            return;
        if (!equal(current, base) && !equal(current, edited))
            result.conflict = true;
        ((result.merged.*properties = edited.*properties), ...);
    };
    apply(&Data::calendarIdentifier);
    apply(&Data::title);
    apply(&Data::notes);
    apply(&Data::location);
    apply(&Data::url);
    apply(&Data::alarms);
    apply(&Data::recurrenceRules);
    apply(&Data::creationDate);
    (std::apply(apply, others), ...);
    return result;
}

}  // namespace kestrant
