#pragma once

#include "foundation/Text.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <type_traits>

namespace kestrant {

/// One value of a closed set: how it is stored, and what a person reads. UTF-8.
template <typename Value>
struct Choice {
    Value value;
    const char* rawValue;
    const char* english;
    const char* french;
};

/// All values of a set as an array of Choice, in their order. To be specialised beside the type.
template <typename Value>
inline constexpr std::nullptr_t choicesOf = nullptr;

template <typename Value>
concept HasChoices = !std::is_same_v<std::remove_cv_t<decltype(choicesOf<Value>)>, std::nullptr_t>;

template <HasChoices Value>
[[nodiscard]] const Choice<Value>& choiceOf(Value value) {
    for (const Choice<Value>& choice : choicesOf<Value>) {
        if (choice.value == value)
            return choice;
    }
    return choicesOf<Value>.front();
}

template <HasChoices Value>
[[nodiscard]] QString rawValue(Value value) {
    return QString::fromUtf8(choiceOf(value).rawValue);
}

template <HasChoices Value>
[[nodiscard]] TextPair title(Value value) {
    return text(choiceOf(value).english, choiceOf(value).french);
}

/// Absent for a text that stands for no value of the set.
template <HasChoices Value>
[[nodiscard]] std::optional<Value> fromRawValue(QStringView raw) {
    for (const Choice<Value>& choice : choicesOf<Value>) {
        if (raw == QString::fromUtf8(choice.rawValue))
            return choice.value;
    }
    return {};
}

}  // namespace kestrant
