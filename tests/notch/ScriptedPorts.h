#pragma once

#include "cues/SensoryFeedback.h"
#include "foundation/ObserverList.h"
#include "notch/PanelWindow.h"
#include "notch/PointerProvider.h"
#include "notch/ScreenProvider.h"

#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

/// Screens as a test sets them.
class ScriptedScreens : public ScreenProvider {
  public:
    explicit ScriptedScreens(std::vector<Screen> screens) : screens_(std::move(screens)) {}

    void change(std::vector<Screen> screens) {
        screens_ = std::move(screens);
        observers_.notify();
    }
    [[nodiscard]] std::vector<Screen> screens() const override { return screens_; }
    [[nodiscard]] std::optional<Screen> mainScreen() const override {
        return screens_.empty() ? std::nullopt : std::optional(screens_.front());
    }
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer) override {
        return observers_.add(std::move(observer));
    }

  private:
    std::vector<Screen> screens_;
    ObserverList<> observers_;
};

class ScriptedPointer : public PointerProvider {
  public:
    [[nodiscard]] std::optional<QPointF> location() const override { return at; }
    std::optional<QPointF> at;
};

/// A window that keeps what it was told.
class ScriptedWindow : public PanelWindow {
  public:
    void setEventHandler(PanelEventHandler* eventHandler) override { handler = eventHandler; }
    void setFrame(const QRectF& rectangle) override { frame = rectangle; }
    void setShape(const NotchContainerShape& outline) override { shape = outline; }
    void setRestingArea(QSizeF size) override { restingArea = size; }
    void setExtent(QSizeF) override {}
    void setSurfaces(const std::vector<PanelSurface>& value) override { surfaces = value; }
    void setPanelLevel() override { atPanelLevel = true; }
    void orderFrontRegardless() override {
        visible = true;
        ++orderedFront;
    }
    void orderOut() override { visible = false; }
    void setIgnoresMouseEvents(bool value) override {
        ignores = value;
        ++ignoresWrites;
    }
    [[nodiscard]] bool ignoresMouseEvents() const override { return ignores; }
    void makeKey() override { isKey = true; }
    void resignKey() override { isKey = false; }

    PanelEventHandler* handler = nullptr;
    QRectF frame;
    NotchContainerShape shape;
    QSizeF restingArea;
    std::vector<PanelSurface> surfaces;
    bool atPanelLevel = false;
    bool visible = false;
    int orderedFront = 0;
    bool ignores = false;
    int ignoresWrites = 0;
    bool isKey = false;
};

/// Writes down sounds and touches in the order in which they were asked for.
class RecordingFeedback : public CuePlayer, public HapticPerformer {
  public:
    void prepare() override {}
    void play(Cue cue) override {
        static const QStringList names{"dragStart", "expand", "collapse", "drop", "snap", "focus"};
        log << names[static_cast<int>(cue)];
    }
    void perform(HapticPattern pattern, HapticProfile) override {
        static const QStringList names{"generic", "alignment", "levelChange"};
        log << names[static_cast<int>(pattern)];
    }
    [[nodiscard]] QStringList take() { return std::exchange(log, {}); }

    QStringList log;
};

/// A laptop's screen with a camera housing in the middle of its top edge.
inline Screen notchedScreen(double housingWidth, double inset, QSizeF size = {1512, 982}) {
    Screen screen;
    screen.name = QStringLiteral("built-in");
    screen.frame = QRectF(QPointF(), size);
    const double side = (size.width() - housingWidth) / 2;
    screen.auxiliaryTopLeftArea = QRectF(0, size.height() - inset, side, inset);
    screen.auxiliaryTopRightArea = QRectF(side + housingWidth, size.height() - inset, side, inset);
    screen.topSafeAreaInset = inset;
    return screen;
}

inline Screen plainScreen(QRectF frame) {
    Screen screen;
    screen.name = QStringLiteral("external");
    screen.frame = frame;
    return screen;
}

}  // namespace kestrant
