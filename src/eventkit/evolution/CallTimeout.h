#pragma once

#include "eventkit/evolution/Glib.h"
#include "eventkit/evolution/SourceQueues.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <set>
#include <thread>

namespace kestrant::evolution {

/// Watches the calls that wait for the service. The calls of one piece of work share one limit: at its end
/// they are cancelled, since nothing has been lost by then. A piece of work that has begun to write is never
/// cut off in the middle, as nobody would know what became of it; that it takes too long is told instead.
class CallTimeout {
  public:
    struct Observer {
        /// The titles of the lists whose calls take a good part of the limit, whenever those become others;
        /// an empty title stands for the service itself.
        std::function<void(const std::set<QString>& lists)> slow;
        /// Work of this queue has waited for this list longer than the limit and goes on waiting.
        std::function<void(const QByteArray& queue, const QString& list)> overdue;
    };
    /// The observer is called on any thread, and must not make a call.
    CallTimeout(std::chrono::milliseconds longest, Observer observer);
    CallTimeout(const CallTimeout&) = delete;
    CallTimeout& operator=(const CallTimeout&) = delete;
    ~CallTimeout();

    [[nodiscard]] std::chrono::milliseconds longest() const;
    /// The program ends: from here on every call is cut off after this time, those under way too, and those
    /// of a queue that had one cut off at once. Thread: any.
    void prepareToClose(std::chrono::milliseconds longest);
    /// Waits this long, while others have their turn. False when the program ends; then it returns at once.
    /// Thread: any.
    [[nodiscard]] bool pause(std::chrono::milliseconds time);

    /// A call that is under way as long as this exists. Others have their turn meanwhile.
    class Call {
      public:
        Call(CallTimeout& limit, const QString& list);
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call();
        [[nodiscard]] GCancellable* cancellable() const { return cancellable_.get(); }

      private:
        friend class CallTimeout;
        using Time = std::chrono::steady_clock::time_point;

        CallTimeout& limit_;
        QString list_;
        QByteArray queue_;
        Ref<GCancellable> cancellable_;
        bool isCutOff_ = true;
        Time deadline_;
        /// When the call is to be told of as a slow one.
        Time slowAt_;
        bool isSlow_ = false;
        bool isOverdue_ = false;
        SourceQueues::Away away_;
    };
    /// `list` is the title of the list that is called; empty for the service itself.
    [[nodiscard]] Call call(const QString& list) { return {*this, list}; }
    /// The calling thread's work has begun to write.
    static void noteWrite();

  private:
    using Time = Call::Time;
    void loop();
    void look(Call& call, Time now);
    void tellSlow();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::chrono::milliseconds longest_;
    Observer observer_;
    std::list<Call*> calls_;
    std::set<QString> slow_;
    bool isHurrying_ = false;
    /// Queues that had a call cut off when the program ended.
    std::set<QByteArray> silent_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace kestrant::evolution
