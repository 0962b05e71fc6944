#include "ui/onboarding/OnboardingWindowController.h"

#include "preferences/Preferences.h"
#include "ui/onboarding/OnboardingTrial.h"
#include "ui/onboarding/OnboardingViewModel.h"
#include "ui/panel/Appearance.h"
#include "ui/settings/SettingsViewModel.h"

#include <QCloseEvent>
#include <QPainterPath>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

namespace kestrant {
namespace {

constexpr double cornerRadius = 16.0;

}  // namespace

OnboardingWindowController::OnboardingWindowController(const Services& services,
                                                       std::function<void()> openApp, QObject* parent)
    : QObject(parent)
    , services_(services)
    , openApp_(std::move(openApp)) {}

OnboardingWindowController::~OnboardingWindowController() {
    if (!window_)
        return;
    trial_->overlays()->dismissAll();
    // The view goes before what it is bound to.
    window_->setSource({});
}

void OnboardingWindowController::createWindow() {
    model_ = std::make_unique<OnboardingViewModel>(services_.scheduler, services_.preferences,
                                                   services_.feedback, services_.touchpadsScrollNaturally);
    connect(model_.get(), &OnboardingViewModel::finished, this, &OnboardingWindowController::finish);

    window_ = std::make_unique<QQuickView>(&services_.engine, nullptr);
    window_->setFlags(Qt::Window | Qt::FramelessWindowHint);
    window_->setTitle(QStringLiteral("Kestrant"));
    window_->setColor(Qt::transparent);
    QSurfaceFormat transparent = window_->format();
    transparent.setAlphaBufferSize(8);
    window_->setFormat(transparent);
    window_->setResizeMode(QQuickView::SizeViewToRootObject);
    createTrial();
    window_->setInitialProperties({
        {QStringLiteral("trial"), QVariant::fromValue(trial_.get())},
        {QStringLiteral("onboarding"), QVariant::fromValue(model_.get())},
        {QStringLiteral("settings"), QVariant::fromValue(&services_.settings)},
    });
    window_->installEventFilter(this);
    window_->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Kestrant/OnboardingWindow.qml")));
    connect(&services_.appearance, &Appearance::compositingChanged, this,
            &OnboardingWindowController::cutCorners);
    // The window grows and shrinks with the desktop's text size.
    connect(window_.get(), &QWindow::heightChanged, this, [this] {
        center();
        cutCorners();
    });
    cutCorners();
}

void OnboardingWindowController::createTrial() {
    using Exercise = OnboardingViewModel::Exercise;
    trial_ = std::make_unique<OnboardingTrial>(
        OnboardingTrial::Services{*window_, services_.engine, services_.localizer, services_.appearance,
                                  services_.preferences, services_.scheduler, services_.clock,
                                  services_.currentZone, services_.feedback},
        *model_->notch());
    const auto count = [this](void (OnboardingTrial::*done)(), Exercise exercise) {
        connect(trial_.get(), done, model_.get(), [this, exercise] { model_->noteTried(exercise); });
    };
    count(&OnboardingTrial::completed, Exercise::complete);
    count(&OnboardingTrial::rescheduled, Exercise::drag);
    count(&OnboardingTrial::openedMenu, Exercise::menu);
    count(&OnboardingTrial::added, Exercise::add);
    count(&OnboardingTrial::tookBack, Exercise::undo);
}

void OnboardingWindowController::cutCorners() {
    const double radius = cornerRadius * window_->rootObject()->property("zoom").toDouble();
    QPainterPath outline;
    outline.addRoundedRect(QRectF(QPointF(), window_->size()), radius, radius);
    window_->setMask(services_.appearance.compositing() ? QRegion()
                                                        : QRegion(outline.toFillPolygon().toPolygon()));
}

void OnboardingWindowController::show(Page page) {
    if (!window_)
        createWindow();
    else if (!isVisible())
        trial_->reset();
    model_->begin(page == Page::welcome ? OnboardingViewModel::Page::welcome
                                        : OnboardingViewModel::Page::tutorial);
    center();
    activate();
}

void OnboardingWindowController::center() {
    QRect frame({}, window_->size());
    frame.moveCenter(window_->screen()->availableGeometry().center());
    window_->setPosition(frame.topLeft());
}

void OnboardingWindowController::activate() {
    if (window_->windowStates() & Qt::WindowMinimized)
        window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
    // A window that was just shown is in front already.
    if (window_->isVisible())
        window_->raise();
    window_->show();
    window_->requestActivate();
}

void OnboardingWindowController::orderOut() {
    if (window_)
        window_->hide();
}

bool OnboardingWindowController::isVisible() const {
    return window_ && window_->isVisible();
}

void OnboardingWindowController::finish() {
    openApp_();
    orderOut();
}

bool OnboardingWindowController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == window_.get()) {
        event->accept();
        orderOut();
        Q_EMIT dismissed();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace kestrant
