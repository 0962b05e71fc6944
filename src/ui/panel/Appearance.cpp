#include "ui/panel/Appearance.h"

#include <QVariant>

namespace kestrant {
namespace {

constexpr auto engineProperty = "kestrantAppearance";

}  // namespace

void Appearance::install(QQmlEngine& engine) {
    engine.setProperty(engineProperty, QVariant::fromValue(this));
}

Appearance* Appearance::create(QQmlEngine* engine, QJSEngine*) {
    auto* appearance = engine->property(engineProperty).value<Appearance*>();
    QJSEngine::setObjectOwnership(appearance, QJSEngine::CppOwnership);
    return appearance;
}

void Appearance::setHighContrast(bool on) {
    if (on == highContrast_)
        return;
    highContrast_ = on;
    Q_EMIT highContrastChanged();
}

void Appearance::setReducedMotion(bool on) {
    if (on == reducedMotion_)
        return;
    reducedMotion_ = on;
    Q_EMIT reducedMotionChanged();
}

void Appearance::setShowsFocus(bool on) {
    if (on == showsFocus_)
        return;
    showsFocus_ = on;
    Q_EMIT showsFocusChanged();
}

void Appearance::setTextScale(double scale) {
    if (scale == textScale_)
        return;
    textScale_ = scale;
    Q_EMIT textScaleChanged();
}

void Appearance::setBlurring(bool on) {
    if (on == blurring_)
        return;
    blurring_ = on;
    Q_EMIT blurringChanged();
}

void Appearance::setCompositing(bool on) {
    if (on == compositing_)
        return;
    compositing_ = on;
    Q_EMIT compositingChanged();
}

}  // namespace kestrant
