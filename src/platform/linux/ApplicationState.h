#pragma once

#include <QObject>

#include <functional>

namespace kestrant {

/// Tells whether one of the application's surfaces has the keyboard focus, as it changes; until `context` is
/// destroyed. Thread: main.
void observeApplicationState(QObject* context, std::function<void(bool isActive)> observer);

}  // namespace kestrant
