#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <utility>

namespace kestrant {

/// A value that is seldom there, for what is kept in great numbers: where it is not, it takes the room of a
/// pointer. Used as a std::optional is.
template <typename Value>
class Rare {
  public:
    Rare() = default;
    Rare(std::nullopt_t) {}  // NOLINT(google-explicit-constructor): as std::optional
    template <std::convertible_to<Value> Given>
    Rare(const Given& value)  // NOLINT(google-explicit-constructor)
        : value_(std::make_unique<Value>(value)) {}
    Rare(std::optional<Value> value)  // NOLINT(google-explicit-constructor)
        : value_(value ? std::make_unique<Value>(std::move(*value)) : nullptr) {}
    Rare(const Rare& other) : value_(other.value_ ? std::make_unique<Value>(*other.value_) : nullptr) {}
    Rare(Rare&& other) noexcept = default;
    Rare& operator=(const Rare& other) {
        if (this != &other)
            value_ = other.value_ ? std::make_unique<Value>(*other.value_) : nullptr;
        return *this;
    }
    Rare& operator=(Rare&& other) noexcept = default;
    ~Rare() = default;

    [[nodiscard]] bool has_value() const { return value_ != nullptr; }
    explicit operator bool() const { return has_value(); }
    [[nodiscard]] const Value& operator*() const { return *value_; }
    [[nodiscard]] Value& operator*() { return *value_; }
    [[nodiscard]] const Value* operator->() const { return value_.get(); }
    [[nodiscard]] Value* operator->() { return value_.get(); }
    [[nodiscard]] Value value_or(Value otherwise) const { return value_ ? *value_ : std::move(otherwise); }
    void reset() { value_.reset(); }

    // NOLINTNEXTLINE(google-explicit-constructor)
    operator std::optional<Value>() const { return value_ ? std::optional(*value_) : std::nullopt; }

    friend bool operator==(const Rare& a, const Rare& b) {
        return a.value_ && b.value_ ? *a.value_ == *b.value_ : a.has_value() == b.has_value();
    }

  private:
    std::unique_ptr<Value> value_;
};

}  // namespace kestrant
