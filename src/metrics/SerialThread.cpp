#include "metrics/SerialThread.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace kestrant {

/// Where other threads leave work.
class SerialThread::Inbox : public QObject {
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

SerialThread::SerialThread(const QString& name) : inbox_(std::make_unique<Inbox>()) {
    thread_.setObjectName(name);
    inbox_->moveToThread(&thread_);
    thread_.start();
}

SerialThread::~SerialThread() {
    inbox_->add([this] {
        timers_.reset();
        thread_.quit();
    });
    thread_.wait();
}

QtScheduler& SerialThread::timers() {
    return timers_ ? *timers_ : timers_.emplace();
}

ScheduledTask SerialThread::after(Duration delay, std::function<void()> work) {
    return timers().after(delay, std::move(work));
}

ScheduledTask SerialThread::every(Duration interval, std::function<void()> work) {
    return timers().every(interval, std::move(work));
}

void SerialThread::post(std::function<void()> work) {
    inbox_->add(std::move(work));
}

}  // namespace kestrant
