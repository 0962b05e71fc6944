#include "platform/linux/ApplicationState.h"

#include <QGuiApplication>

#include <utility>

namespace kestrant {

void observeApplicationState(QObject* context, std::function<void(bool)> observer) {
    QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, context,
                     [observe = std::move(observer)](Qt::ApplicationState state) {
                         observe(state == Qt::ApplicationActive);
                     });
}

}  // namespace kestrant
