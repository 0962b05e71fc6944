#include "platform/linux/desktop/ApplicationState.h"

#include <QEvent>
#include <QGuiApplication>
#include <QSessionManager>

#include <utility>

namespace kestrant {

namespace {

class QuitRequests : public QObject {
  public:
    QuitRequests(QObject* parent, std::function<void()> observer)
        : QObject(parent)
        , observe_(std::move(observer)) {
        qGuiApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != qGuiApp || event->type() != QEvent::Quit)
            return QObject::eventFilter(watched, event);
        observe_();
        event->accept();
        return true;
    }

  private:
    std::function<void()> observe_;
};

}  // namespace

void observeApplicationState(QObject* context, std::function<void(bool)> observer) {
    QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, context,
                     [observe = std::move(observer)](Qt::ApplicationState state) {
                         observe(state == Qt::ApplicationActive);
                     });
}

void observeQuitRequests(QObject* context, std::function<void()> observer) {
    new QuitRequests(context, std::move(observer));
    // The program starts with the session by its own entry, not because it was running at the end of the last
    // one.
    QObject::connect(qGuiApp, &QGuiApplication::saveStateRequest, context,
                     [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); });
}

}  // namespace kestrant
