#include "platform/linux/window/QtScreenProvider.h"

#include "platform/linux/window/CameraHousing.h"
#include "platform/linux/window/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

/// Qt stands in for missing displays with one of no name.
bool isReal(const QScreen* screen) {
    return screen && !screen->name().isEmpty() && !screen->geometry().isEmpty();
}

/// Whether a display is part of the machine. Where none says so by its name, as behind a compositor that
/// names them all alike, the main one is taken for it.
bool mayHaveHousing(const QScreen& screen) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    const bool named = std::any_of(screens.begin(), screens.end(),
                                   [](const QScreen* each) { return isBuiltIn(each->name()); });
    return named ? isBuiltIn(screen.name()) : &screen == QGuiApplication::primaryScreen();
}

}  // namespace

Screen QtScreenProvider::describe(const QScreen& screen) const {
    Screen result;
    result.name = screen.name();
    result.frame = flipped(QRectF(screen.geometry()));
    result.visibleFrame = flipped(QRectF(screen.availableGeometry()));
    if (!mayHaveHousing(screen))
        return result;
    const CameraHousings housings{cameraHousing_ ? cameraHousing_() : QString(), compatible_};
    const auto housing = housings.of(result);
    return housing ? withCameraHousing(result, *housing) : result;
}

QtScreenProvider::QtScreenProvider(std::function<QString()> cameraHousing)
    : cameraHousing_(std::move(cameraHousing))
    , compatible_(readCompatible()) {
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
    connect(screen, &QScreen::availableGeometryChanged, this, [this] { changed(); });
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
