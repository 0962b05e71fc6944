#include "metrics/EventLoopThread.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace kestrant {

/// Where other threads leave work.
class EventLoopThread::Inbox : public QObject {
  public:
    void add(std::function<void()> work) {
        const std::lock_guard guard(mutex_);
        work_.push_back(std::move(work));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    bool event(QEvent* event) override {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        if (const auto work = take())
            work();
        return true;
    }

  private:
    std::function<void()> take() {
        const std::lock_guard guard(mutex_);
        auto work = std::move(work_.front());
        work_.pop_front();
        return work;
    }

    std::mutex mutex_;
    std::deque<std::function<void()>> work_;
};

EventLoopThread::EventLoopThread(const QString& name) : inbox_(std::make_unique<Inbox>()) {
    thread_.setObjectName(name);
    inbox_->moveToThread(&thread_);
    thread_.start();
}

EventLoopThread::~EventLoopThread() {
    inbox_->add([this] {
        timers_.reset();
        thread_.quit();
    });
    thread_.wait();
}

QtScheduler& EventLoopThread::timers() {
    return timers_ ? *timers_ : timers_.emplace();
}

ScheduledTask EventLoopThread::after(Duration delay, std::function<void()> work) {
    return timers().after(delay, std::move(work));
}

ScheduledTask EventLoopThread::every(Duration interval, std::function<void()> work) {
    return timers().every(interval, std::move(work));
}

void EventLoopThread::post(std::function<void()> work) {
    inbox_->add(std::move(work));
}

}  // namespace kestrant
