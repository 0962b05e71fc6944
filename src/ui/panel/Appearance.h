#pragma once

#include <QObject>
#include <QQmlEngine>

namespace kestrant {

/// Settings of the desktop and the person that concern every view's look; the tokens themselves are in
/// Theme.qml. Serves one QML engine. Thread: main.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool highContrast READ highContrast WRITE setHighContrast NOTIFY highContrastChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(bool showsFocus READ showsFocus WRITE setShowsFocus NOTIFY showsFocusChanged)
    Q_PROPERTY(double textScale READ textScale WRITE setTextScale NOTIFY textScaleChanged)
    Q_PROPERTY(bool compositing READ compositing WRITE setCompositing NOTIFY compositingChanged)
    Q_PROPERTY(bool blurring READ blurring WRITE setBlurring NOTIFY blurringChanged)

  public:
    /// Without a default: QML would make an instance of its own.
    explicit Appearance(QObject* parent) : QObject(parent) {}

    /// Makes this the `Appearance` of an engine, before any of its views is made.
    void install(QQmlEngine& engine);
    static Appearance* create(QQmlEngine* engine, QJSEngine*);

    [[nodiscard]] bool highContrast() const { return highContrast_; }
    void setHighContrast(bool on);
    /// No motion and no fading; every change is immediate.
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }
    void setReducedMotion(bool on);
    /// The keyboard was used last, not the pointer: whatever has the focus is outlined.
    [[nodiscard]] bool showsFocus() const { return showsFocus_; }
    void setShowsFocus(bool on);
    /// Of text, 1 is the usual size. The panel, whose size is fixed, follows it as far as its texts fit.
    [[nodiscard]] double textScale() const { return textScale_; }
    void setTextScale(double scale);
    /// Windows may be translucent. Without it popovers have no shadow and are cut to their outline.
    [[nodiscard]] bool compositing() const { return compositing_; }
    void setCompositing(bool on);
    /// Whether the compositor blurs what lies behind translucent parts of the panel.
    [[nodiscard]] bool blurring() const { return blurring_; }
    void setBlurring(bool on);

  Q_SIGNALS:
    void highContrastChanged();
    void reducedMotionChanged();
    void showsFocusChanged();
    void textScaleChanged();
    void compositingChanged();
    void blurringChanged();

  private:
    bool highContrast_ = false;
    bool reducedMotion_ = false;
    bool showsFocus_ = false;
    double textScale_ = 1.0;
    bool compositing_ = true;
    bool blurring_ = false;
};

}  // namespace kestrant
