#include "ui/panel/PanelView.h"

#include "notch/NotchInteractionModel.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelComposition.h"
#include "ui/panel/SealedEngine.h"
#include "ui/settings/SettingsViewModel.h"

#include <QFont>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>

#include <algorithm>

extern void qml_register_types_Kestrant();

namespace kestrant {
namespace {

/// Points around the open panel, and around the resting notch, for their shadows and a message below.
constexpr QSizeF panelShadow(128, 96);
constexpr QSizeF notchShadow(36, 24);

/// Keys after which a person must see what has the focus: they move it, or act on what has it. Those that
/// write into a text, stand for a command or close something do neither.
bool concernsFocus(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    case Qt::Key_Escape:
        return false;
    default:
        break;
    }
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    if (QObject* focused = QGuiApplication::focusObject())
        QCoreApplication::sendEvent(focused, &query);
    const bool isModifier = event.key() >= Qt::Key_Shift && event.key() <= Qt::Key_ScrollLock;
    return !isModifier && !query.value(Qt::ImEnabled).toBool();
}

/// Notes whether the keyboard or the pointer was used last, in any of the program's windows.
class FocusWatch : public QObject {
  public:
    FocusWatch(Appearance& appearance, QObject* parent) : QObject(parent), appearance_(appearance) {
        qGuiApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (!watched->isWindowType())
            return false;
        if (event->type() == QEvent::KeyPress && concernsFocus(*static_cast<QKeyEvent*>(event)))
            appearance_.setShowsFocus(true);
        else if (event->type() == QEvent::MouseButtonPress)
            appearance_.setShowsFocus(false);
        return false;
    }

  private:
    Appearance& appearance_;
};

}  // namespace

void PanelView::chooseRenderer() {
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void PanelView::chooseTypeface() {
    const QString inter = QStringLiteral("Inter");
    QFont font = QGuiApplication::font();
    if (font.families().value(0) == inter)
        return;
    font.setFamilies(QStringList{inter} + font.families());
    QGuiApplication::setFont(font);
}

PanelView::PanelView(const Models& models, Loading loading)
    : PanelView(models, loading, std::make_unique<SealedEngine>()) {}

PanelView::PanelView(const Models& models, Loading loading, std::unique_ptr<QQmlEngine> engine)
    : QQuickView(engine.get(), nullptr)
    , panel_(models.panel.panel)
    , engine_(std::move(engine)) {
    qml_register_types_Kestrant();
    engine_->addImportPath(QStringLiteral("qrc:/qt/qml"));
    models.localizer.install(*engine_);
    models.appearance.install(*engine_);
    new FocusWatch(models.appearance, this);
    overlays_ = std::make_unique<OverlayHost>(*this, *engine_, models.interaction, models.appearance);

    setFlags(Qt::FramelessWindowHint | Qt::Tool | Qt::NoDropShadowWindowHint);
    setColor(Qt::transparent);
    QSurfaceFormat transparent = format();
    transparent.setAlphaBufferSize(8);
    setFormat(transparent);
    setTitle(QStringLiteral("Kestrant"));
    setResizeMode(QQuickView::SizeRootObjectToView);
    resize(qRound(panel_.expandedWidth()), qRound(panel_.expandedHeight()));
    setInitialProperties({
        {QStringLiteral("panel"), QVariant::fromValue(&panel_)},
        {QStringLiteral("reminders"), QVariant::fromValue(&models.panel.reminders)},
        {QStringLiteral("calendar"), QVariant::fromValue(&models.panel.days)},
        {QStringLiteral("quickAdd"), QVariant::fromValue(&models.panel.quickAdd)},
        {QStringLiteral("settings"), QVariant::fromValue(&models.settings)},
        {QStringLiteral("newEvent"), QVariant::fromValue(&models.panel.newEvent)},
        {QStringLiteral("calendarEdit"), QVariant::fromValue(&models.panel.calendarEdit)},
        {QStringLiteral("eventDetails"), QVariant::fromValue(&models.panel.eventDetails)},
        {QStringLiteral("reminderEdit"), QVariant::fromValue(&models.panel.reminderEdit)},
        {QStringLiteral("history"), QVariant::fromValue(&models.panel.history)},
        {QStringLiteral("recap"), QVariant::fromValue(&models.panel.recap)},
        {QStringLiteral("celebration"), QVariant::fromValue(&models.panel.celebration)},
        {QStringLiteral("announcement"), QVariant::fromValue(&models.panel.announcement)},
        {QStringLiteral("yearReveal"), QVariant::fromValue(&models.panel.yearReveal)},
        {QStringLiteral("overlays"), QVariant::fromValue(overlays_.get())},
        {QStringLiteral("loadInBackground"), loading == Loading::inBackground},
    });
    setSource(QUrl(QStringLiteral("qrc:/qt/qml/Kestrant/Panel.qml")));

    connect(&panel_, &PanelViewModel::shapeChanged, this, &PanelView::updateExtent);
    connect(overlays_.get(), &OverlayHost::surfacesChanged, this, &PanelView::updateExtent);
    if (rootObject())
        connect(rootObject(), SIGNAL(isSpreadChanged()), this, SLOT(updateExtent()));
    updateExtent();
}

PanelView::~PanelView() {
    // Observers of the surfaces may have been destroyed before the view.
    overlays_->disconnect();
    overlays_->dismissAll();
    // The views go before what they are bound to.
    setSource({});
}

void PanelView::updateExtent() {
    QSizeF extent = QSizeF(panel_.hoverWidth(), panel_.restingHeight()) + notchShadow;
    if (rootObject() && rootObject()->property("isSpread").toBool()) {
        const QSizeF frame(panel_.expandedWidth(), panel_.expandedHeight());
        const QRectF drawn = overlays_->drawnArea();
        const double beside =
            std::max({panelShadow.width() / 2, -drawn.left(), drawn.right() - frame.width()});
        const double below = std::max(panelShadow.height(),
                                      std::min(drawn.bottom(), overlays_->roomHeight()) - frame.height());
        extent = frame + QSizeF(2 * beside, below);
        // Memory is kept while the panel is open.
        if (extent_.width() >= frame.width())
            extent = extent.expandedTo(extent_);
    }
    if (extent == extent_)
        return;
    extent_ = extent;
    Q_EMIT extentChanged();
}

void PanelView::fillWindow() {
    if (rootObject())
        rootObject()->setSize(size());
}

bool PanelView::contentScrollsUp(QPointF locationInPanel) const {
    QVariant scrolls;
    if (rootObject())
        QMetaObject::invokeMethod(rootObject(), "scrollsDownAt", Q_RETURN_ARG(QVariant, scrolls),
                                  Q_ARG(QVariant, locationInPanel.x()),
                                  Q_ARG(QVariant, panel_.expandedHeight() - locationInPanel.y()));
    return scrolls.toBool();
}

}  // namespace kestrant
