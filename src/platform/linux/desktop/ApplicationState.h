#pragma once

#include <QObject>

#include <functional>

namespace kestrant {

/// Tells whether one of the application's surfaces has the keyboard focus, as it changes; until `context` is
/// destroyed. Thread: main.
void observeApplicationState(QObject* context, std::function<void(bool isActive)> observer);

/// Calls the observer, instead of ending the event loop, when the application is asked to quit: by the
/// desktop as its session ends, or by Qt itself. Closing windows asks for nothing. The session waits for the
/// process to end. Until `context` is destroyed. Thread: main.
void observeQuitRequests(QObject* context, std::function<void()> observer);

}  // namespace kestrant
