#pragma once

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace kestrant {

/// A value that is seldom there, for what is kept in great numbers: where it is not, it takes the room of a
/// pointer. Used as a std::optional is.
template <typename Value>
class CompactOptional {
  public:
    CompactOptional() = default;
    CompactOptional(std::nullopt_t) {}  // NOLINT(google-explicit-constructor): as std::optional
    template <typename Given>
    requires std::is_convertible_v<Given, Value>
    CompactOptional(const Given& value)  // NOLINT(google-explicit-constructor)
        : value_(std::make_unique<Value>(value)) {}
    CompactOptional(std::optional<Value> value)  // NOLINT(google-explicit-constructor)
        : value_(value ? std::make_unique<Value>(std::move(*value)) : nullptr) {}
    CompactOptional(const CompactOptional& other)
        : value_(other.value_ ? std::make_unique<Value>(*other.value_) : nullptr) {}
    CompactOptional(CompactOptional&& other) noexcept = default;
    CompactOptional& operator=(const CompactOptional& other) {
        if (this != &other)
            value_ = other.value_ ? std::make_unique<Value>(*other.value_) : nullptr;
        return *this;
    }
    CompactOptional& operator=(CompactOptional&& other) noexcept = default;
    ~CompactOptional() = default;

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

    friend bool operator==(const CompactOptional& a, const CompactOptional& b) {
        return a.value_ && b.value_ ? *a.value_ == *b.value_ : a.has_value() == b.has_value();
    }

  private:
    std::unique_ptr<Value> value_;
};

}  // namespace kestrant
