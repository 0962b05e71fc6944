#include "metrics/SerialThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace kestrant {

namespace {

using Milliseconds = std::chrono::milliseconds;

/// A timer that lives as long as somebody holds it, also while it is telling.
std::shared_ptr<QTimer> makeTimer(Duration delay) {
    std::shared_ptr<QTimer> timer(new QTimer, [](QTimer* ended) {
        ended->stop();
        ended->deleteLater();
    });
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(std::clamp(std::chrono::ceil<Milliseconds>(delay), Milliseconds(0),
                                  Milliseconds(std::numeric_limits<int>::max())));
    return timer;
}

}  // namespace

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
    inbox_->add([this] { thread_.quit(); });
    thread_.wait();
}

ScheduledTask SerialThread::after(Duration delay, std::function<void()> work) {
    auto state = std::make_shared<ScheduledTask::State>();
    const auto timer = makeTimer(delay);
    timer->setSingleShot(true);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [weak = std::weak_ptr(state)] {
        const auto due = weak.lock();
        if (!due || !due->pending)
            return;
        due->pending = false;
        const auto body = std::exchange(due->work, nullptr);
        body();
    });
    // The work holds its timer, so that cancelling the one ends the other.
    state->work = [timer, body = std::move(work)] { body(); };
    timer->start();
    return ScheduledTask(state);
}

ScheduledTask SerialThread::every(Duration interval, std::function<void()> work) {
    auto state = std::make_shared<ScheduledTask::State>();
    const auto timer = makeTimer(interval);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [weak = std::weak_ptr(state)] {
        const auto due = weak.lock();
        if (!due || !due->pending)
            return;
        const auto body = due->work;
        body();
    });
    state->work = [timer, body = std::move(work)] { body(); };
    timer->start();
    return ScheduledTask(state);
}

void SerialThread::post(std::function<void()> work) {
    inbox_->add(std::move(work));
}

}  // namespace kestrant
