#pragma once

#include "foundation/ObserverList.h"
#include "notch/ScreenProvider.h"

#include <QByteArray>
#include <QObject>

#include <functional>

class QScreen;

namespace kestrant {

/// The displays Qt knows of. None tells of a camera housing by itself: a built-in display has the one that
/// the setting gives it, else that of the machine's model. Thread: main.
class QtScreenProvider : public QObject, public ScreenProvider {
  public:
    /// `cameraHousing` gives the setting, as in CameraHousings; may be empty.
    explicit QtScreenProvider(std::function<QString()> cameraHousing = {});

    /// To be called after the setting has changed.
    void cameraHousingChanged() { changed(); }

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override;

  private:
    [[nodiscard]] Screen describe(const QScreen& screen) const;
    void watch(QScreen* screen);
    void changed();

    std::function<QString()> cameraHousing_;
    QByteArray compatible_;
    ObserverList<> observers_;
    bool changePending_ = false;
};

}  // namespace kestrant
