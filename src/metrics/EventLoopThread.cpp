#include "metrics/EventLoopThread.h"

#include "foundation/QtScheduler.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>

#include <pthread.h>

#include <deque>
#include <mutex>
#include <utility>

namespace kestrant {

namespace {

void nameThread(const QByteArray& label) {
    constexpr qsizetype longest = 15;
    const QByteArray name = label.mid(label.lastIndexOf('.') + 1).left(longest);
    if (!name.isEmpty())
        pthread_setname_np(pthread_self(), name.constData());
}

}  // namespace

class EventLoopThread::Loop : public QObject {
  public:
    void add(std::function<void()> work) {
        const std::lock_guard guard(mutex_);
        work_.push_back(std::move(work));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    void run() {
        events_.exec();
        // Deferred deletions of this thread are carried out before it ends.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void quit() { events_.quit(); }

    QtScheduler timers;

  protected:
    void customEvent(QEvent*) override {
        std::unique_lock lock(mutex_);
        const auto work = std::move(work_.front());
        work_.pop_front();
        lock.unlock();
        work();
    }

  private:
    QEventLoop events_;
    std::mutex mutex_;
    std::deque<std::function<void()>> work_;
};

EventLoopThread::EventLoopThread(const char* label, std::optional<Duration> patience) : patience_(patience) {
    std::promise<Loop*> started;
    auto loop = started.get_future();
    std::promise<void> ended;
    ended_ = ended.get_future();
    thread_ = std::thread([started = std::move(started), ended = std::move(ended), label]() mutable {
        nameThread(label);
        Loop own;
        started.set_value(&own);
        own.run();
        ended.set_value();
    });
    loop_ = loop.get();
}

EventLoopThread::~EventLoopThread() {
    post([loop = loop_] { loop->quit(); });
    if (patience_ && ended_.wait_for(*patience_) == std::future_status::timeout)
        thread_.detach();
    else
        thread_.join();
}

ScheduledTask EventLoopThread::after(Duration delay, std::function<void()> work) {
    return loop_->timers.after(delay, std::move(work));
}

ScheduledTask EventLoopThread::every(Duration interval, std::function<void()> work) {
    return loop_->timers.every(interval, std::move(work));
}

void EventLoopThread::post(std::function<void()> work) {
    loop_->add(std::move(work));
}

}  // namespace kestrant
