#pragma once

#include "foundation/Text.h"

#include <QString>
#include <QStringView>

#include <cstddef>
#include <optional>
#include <type_traits>

namespace kestrant {

/// One value of a closed set: its stored form, a text (UTF-8) or a number, and its title.
template <typename Value, typename Raw = const char*>
struct Choice {
    Value value;
    Raw rawValue;
    const char* english;
    const char* french;
};

/// All values of a set as an array of Choice, in their order. To be specialised beside the type.
template <typename Value>
inline constexpr std::nullptr_t choicesOf = nullptr;

template <typename Value>
concept HasChoices = !std::is_same_v<std::remove_cv_t<decltype(choicesOf<Value>)>, std::nullptr_t>;

template <HasChoices Value>
[[nodiscard]] const auto& choiceOf(Value value) {
    for (const auto& choice : choicesOf<Value>) {
        if (choice.value == value)
            return choice;
    }
    return choicesOf<Value>.front();
}

template <HasChoices Value>
[[nodiscard]] auto rawValue(Value value) {
    const auto raw = choiceOf(value).rawValue;
    if constexpr (std::is_same_v<decltype(raw), const char* const>)
        return QString::fromUtf8(raw);
    else
        return raw;
}

template <HasChoices Value>
[[nodiscard]] TextPair title(Value value) {
    return text(choiceOf(value).english, choiceOf(value).french);
}

/// A text as it is compared with stored ones, or the number.
template <HasChoices Value>
using RawView = std::conditional_t<std::is_same_v<decltype(rawValue(Value())), QString>, QStringView,
                                   decltype(rawValue(Value()))>;

/// Absent for a text or number that stands for no value of the set.
template <HasChoices Value>
[[nodiscard]] std::optional<Value> fromRawValue(RawView<Value> raw) {
    for (const auto& choice : choicesOf<Value>) {
        if (raw == rawValue(choice.value))
            return choice.value;
    }
    return {};
}

}  // namespace kestrant
