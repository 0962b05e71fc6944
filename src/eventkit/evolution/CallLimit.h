#pragma once

#include "eventkit/evolution/Glib.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace kestrant::evolution {

/// Ends calls that wait for a service longer than they may, and tells of those that take a good part of that
/// time. One call at a time.
class CallLimit {
  public:
    /// `slow` is told true once a call has been under way for long, and false when that one has ended.
    /// Thread: any; not within a call of this.
    CallLimit(std::chrono::milliseconds longest, std::function<void(bool isSlow)> slow);
    CallLimit(const CallLimit&) = delete;
    CallLimit& operator=(const CallLimit&) = delete;
    ~CallLimit();

    /// For later calls and for the one that is under way. Thread: any.
    void setLongest(std::chrono::milliseconds longest);

    /// A call that is under way as long as this exists.
    class Call {
      public:
        explicit Call(CallLimit& limit);
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call();
        [[nodiscard]] GCancellable* cancellable() const { return cancellable_.get(); }

      private:
        CallLimit& limit_;
        Ref<GCancellable> cancellable_;
    };
    [[nodiscard]] Call call() { return Call(*this); }

  private:
    void loop();

    std::chrono::milliseconds longest_;
    std::function<void(bool isSlow)> slow_;
    std::mutex mutex_;
    std::condition_variable changed_;
    GCancellable* current_ = nullptr;
    std::chrono::steady_clock::time_point deadline_;
    /// When the call under way is to be told of, and whether it was.
    std::chrono::steady_clock::time_point slowAt_;
    bool isSlow_ = false;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace kestrant::evolution
