#pragma once

#include "foundation/Choice.h"
#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"

#include <QString>

#include <limits>
#include <type_traits>

namespace kestrant {

/// One preference, to be read by calling it and written by set(). Reading never writes: a default is not
/// stored, and a stored value of another type counts as absent. A value of a closed set is stored as its raw
/// value. As the MEMBER of a Q_PROPERTY it has the type that is stored. Thread: main.
template <typename Value>
class Setting {
  public:
    using Stored = std::conditional_t<HasChoices<Value>, QString, Value>;

    /// Both must outlive the setting.
    Setting(UserDefaults& defaults, const Preference<Stored>& preference)
        : defaults_(defaults)
        , preference_(preference) {}

    [[nodiscard]] Value operator()() const {
        if constexpr (HasChoices<Value>)
            return fromRawValue<Value>(stored()).value_or(*fromRawValue<Value>(preference_.defaultValue));
        else
            return stored();
    }
    void set(const Value& value) {
        if constexpr (HasChoices<Value>)
            defaults_.set(preference_, rawValue(value));
        else
            defaults_.set(preference_, value);
    }

    // NOLINTNEXTLINE(google-explicit-constructor): what a property is made of
    operator Stored() const {
        if constexpr (HasChoices<Value>)
            return rawValue((*this)());
        else
            return (*this)();
    }
    /// A raw value that stands for nothing changes nothing.
    Setting& operator=(const Stored& written) {
        if constexpr (HasChoices<Value>) {
            if (const auto value = fromRawValue<Value>(written))
                set(*value);
        } else {
            set(written);
        }
        return *this;
    }
    bool operator==(const Stored& other) const { return Stored(*this) == other; }

  private:
    [[nodiscard]] Stored stored() const {
        if constexpr (std::is_same_v<Stored, bool>) {
            return defaults_.boolean(preference_).value_or(preference_.defaultValue);
        } else if constexpr (std::is_same_v<Stored, double>) {
            return defaults_.number(preference_).value_or(preference_.defaultValue);
        } else if constexpr (std::is_same_v<Stored, int>) {
            const auto value = defaults_.integer(preference_);
            return value && *value >= 0 && *value <= std::numeric_limits<int>::max()
                       ? static_cast<int>(*value)
                       : preference_.defaultValue;
        } else {
            return defaults_.string(preference_).value_or(preference_.defaultValue);
        }
    }

    UserDefaults& defaults_;
    const Preference<Stored>& preference_;
};

}  // namespace kestrant
