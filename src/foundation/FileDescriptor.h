#pragma once

#include <unistd.h>

#include <utility>

namespace kestrant {

/// An open file, closed at the end of its scope. Negative where opening failed.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int value) : value_(value) {}
    FileDescriptor(FileDescriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    [[nodiscard]] bool isOpen() const { return value_ >= 0; }
    [[nodiscard]] int get() const { return value_; }
    /// The descriptor, which is then somebody else's to close.
    [[nodiscard]] int release() { return std::exchange(value_, -1); }
    /// The result of close(2); 0 where nothing is open.
    int close() { return value_ < 0 ? 0 : ::close(release()); }

  private:
    int value_ = -1;
};

}  // namespace kestrant
