#include "platform/linux/QtScreenProvider.h"

#include "platform/linux/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace kestrant {

namespace {

/// Qt stands in for missing displays with one of no name.
bool isReal(const QScreen* screen) {
    return screen && !screen->name().isEmpty() && !screen->geometry().isEmpty();
}

Screen describe(const QScreen& screen) {
    Screen result;
    result.name = screen.name();
    result.frame = flipped(QRectF(screen.geometry()));
    return result;
}

}  // namespace

QtScreenProvider::QtScreenProvider() {
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        changed();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { changed(); });
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { changed(); });
}

void QtScreenProvider::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, [this] { changed(); });
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, [this] { changed(); });
}

void QtScreenProvider::changed() {
    // One change of configuration comes as several signals, some while Qt is still at work.
    if (changePending_)
        return;
    changePending_ = true;
    QTimer::singleShot(0, this, [this] {
        changePending_ = false;
        observers_.notify();
    });
}

std::vector<Screen> QtScreenProvider::screens() const {
    std::vector<Screen> result;
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (isReal(screen))
            result.push_back(describe(*screen));
    }
    return result;
}

std::optional<Screen> QtScreenProvider::mainScreen() const {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return isReal(primary) ? std::optional(describe(*primary)) : std::nullopt;
}

Subscription QtScreenProvider::observeChanges(std::function<void()> observer) {
    return observers_.add(std::move(observer));
}

}  // namespace kestrant
