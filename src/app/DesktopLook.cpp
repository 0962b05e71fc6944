#include "app/DesktopLook.h"

#include "app/NativePanel.h"
#include "notch/NotchGeometry.h"
#include "platform/linux/window/DesktopPanelWindow.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/PanelViewModel.h"

namespace kestrant {
namespace {

/// As long as the panel takes to grow.
constexpr Duration openingTime = std::chrono::milliseconds(280);

}  // namespace

DesktopLook::DesktopLook(const Services& services) : services_(services) {
    if (isOnX11())
        blur_.emplace(services.view);
    const auto followCompositor = [this] {
        services_.appearance.setCompositing(services_.window.isCompositing());
    };
    connect(&services.window, &DesktopPanelWindow::isCompositingChanged, this, followCompositor);
    followCompositor();
    if (blur_)
        connect(&*blur_, &BackdropBlur::isOfferedChanged, this, &DesktopLook::followBlur);
    connect(&services.panel, &PanelViewModel::shapeChanged, this, &DesktopLook::followBlur);
    connect(&services.panel, &PanelViewModel::materialChanged, this, &DesktopLook::followBlur);
    connect(&services.appearance, &Appearance::highContrastChanged, this, &DesktopLook::followBlur);
    followBlur();
}

void DesktopLook::followSettings() {
    settings_ = std::make_unique<DesktopAppearance>();
    connect(settings_.get(), &DesktopAppearance::changed, this, [this] {
        const AppearanceSettings& appearance = settings_->appearance();
        services_.appearance.setReducedMotion(appearance.reducedMotion);
        services_.appearance.setHighContrast(appearance.highContrast);
        services_.appearance.setTextScale(appearance.textScale);
    });
}

void DesktopLook::followBlur() {
    if (!blur_)
        return;
    services_.appearance.setBlurring(blur_->isOffered());
    blurring_ = {};
    const bool isGlass =
        services_.panel.material() == QLatin1String("glass") && !services_.appearance.highContrast();
    if (!services_.panel.isExpanded() || !isGlass)
        return blur_->setShape(std::nullopt);
    // Set once the outline has stopped growing, so that blur and outline never disagree.
    blurring_ = services_.scheduler.after(
        openingTime, [this] { blur_->setShape(services_.geometry.shape(NotchPhase::expanded)); });
}

}  // namespace kestrant
