#pragma once

#include "foundation/ObserverList.h"
#include "notch/ScreenProvider.h"

#include <QObject>

class QScreen;

namespace kestrant {

/// The displays Qt knows of. No display of this platform tells of a camera housing, so none is reported; the
/// notch is then drawn in its usual size. Thread: main.
class QtScreenProvider : public QObject, public ScreenProvider {
  public:
    QtScreenProvider();

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override;

  private:
    void watch(QScreen* screen);
    void changed();

    ObserverList<> observers_;
    bool changePending_ = false;
};

}  // namespace kestrant
