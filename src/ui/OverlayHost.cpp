#include "ui/OverlayHost.h"

#include "notch/NotchInteractionModel.h"
#include "ui/Appearance.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainterPath>
#include <QQmlComponent>
#include <QScreen>

#include <algorithm>
#include <optional>

namespace kestrant {
namespace {

/// Points between an anchor and the surface below it, and between a surface and the edge of the screen.
constexpr double distance = 6.0;
/// Points between the window and the part of it that the panel's ears leave.
constexpr double panelMargin = 16.0;
constexpr double popoverRadius = 16.0;

double number(const QQuickItem& item, const char* property) {
    return item.property(property).toDouble();
}

/// Gives a key to what has the focus within the window, whether or not the window has it: up to the first
/// that takes it.
void deliverKey(QQuickWindow& window, QEvent& event) {
    QQuickItem* item = window.contentItem();
    while (item->isFocusScope() && item->scopedFocusItem())
        item = item->scopedFocusItem();
    do {
        event.accept();
        QCoreApplication::sendEvent(item, &event);
        item = item->parentItem();
    } while (item && !event.isAccepted());
}

}  // namespace

struct OverlayHost::Overlay {
    QString id;
    std::unique_ptr<QQuickWindow> window;
    QQuickItem* content = nullptr;
    QPointer<QQuickItem> anchor;
    QString alignment;
    std::optional<QPointF> at;
    /// Where the surface hangs from, in global points: known still when the anchor is gone.
    QRectF hook;
};

OverlayHost::OverlayHost(QQuickWindow& panel, QQmlEngine& engine, NotchInteractionModel& interaction,
                         const Appearance& appearance, QObject* parent)
    : QObject(parent)
    , panel_(panel)
    , engine_(engine)
    , interaction_(interaction)
    , appearance_(appearance) {
    interaction_.setOverlayDismissalHandler([this] { dismissAll(); });
    panel_.installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* focused) {
        // The focus passes through nothing on its way from one of our surfaces to another.
        if (!focused && !overlays_.empty())
            QMetaObject::invokeMethod(
                this,
                [this] {
                    if (!QGuiApplication::focusWindow())
                        dismissAll();
                },
                Qt::QueuedConnection);
    });
}

OverlayHost::~OverlayHost() {
    interaction_.setOverlayDismissalHandler({});
    overlays_.clear();
}

void OverlayHost::present(const QString& id, const QString& file, QQuickItem* anchor,
                          const QVariantMap& properties) {
    if (!anchor || !anchor->window())
        return;
    if (isPresented(id)) {
        dismiss(id);
        return;
    }
    // What is not beneath the new overlay closes for it.
    const auto beneath = std::find_if(overlays_.begin(), overlays_.end(), [&](const auto& overlay) {
        return overlay->window.get() == anchor->window();
    });
    if (beneath == overlays_.end())
        dismissAll();
    else
        closeDownTo(std::size_t(beneath - overlays_.begin()) + 1);

    auto overlay = std::make_unique<Overlay>();
    overlay->id = id;
    overlay->anchor = anchor;
    QVariantMap initial = properties;
    overlay->alignment = initial.take(QStringLiteral("alignment")).toString();
    if (const QVariant at = initial.take(QStringLiteral("at")); at.isValid())
        overlay->at = at.toPointF();
    initial.insert(QStringLiteral("overlays"), QVariant::fromValue(this));
    initial.insert(QStringLiteral("overlayId"), id);

    QQmlComponent component(&engine_, QUrl(QStringLiteral("qrc:/qt/qml/Kestrant/qml/") + file));
    std::unique_ptr<QObject> object(component.isReady() ? component.createWithInitialProperties(initial)
                                                        : nullptr);
    overlay->content = qobject_cast<QQuickItem*>(object.get());
    if (!overlay->content) {
        qWarning("%s", qUtf8Printable(component.errorString()));
        return;
    }

    overlay->window = std::make_unique<QQuickWindow>();
    QQuickWindow& window = *overlay->window;
    window.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint |
                    Qt::WindowStaysOnTopHint);
    window.setColor(Qt::transparent);
    QSurfaceFormat format = window.format();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    window.setTransientParent(anchor->window());
    window.setTitle(overlay->content->property("spokenName").toString());
    object.release()->setParent(window.contentItem());
    overlay->content->setParentItem(window.contentItem());
    overlay->content->setFocus(true);
    window.installEventFilter(this);

    Overlay* placed = overlay.get();
    const auto sized = [this, placed] { place(*placed); };
    connect(overlay->content, &QQuickItem::implicitWidthChanged, this, sized);
    connect(overlay->content, &QQuickItem::implicitHeightChanged, this, sized);
    overlays_.push_back(std::move(overlay));
    place(*placed);

    interaction_.presentOverlay(id);
    Q_EMIT overlaySurfaceCreated(&window);
    window.show();
    Q_EMIT overlaySurfaceShown(&window);
    Q_EMIT overlaysChanged();
}

QRectF OverlayHost::room() const {
    if (!placementArea_.isNull())
        return placementArea_;
    return panel_.screen() ? QRectF(panel_.screen()->geometry()) : QRectF();
}

void OverlayHost::place(Overlay& overlay) {
    QQuickItem& content = *overlay.content;
    QWindow& window = *overlay.window;
    const QSizeF size(content.implicitWidth(), content.implicitHeight());
    content.setSize(size);
    if (const QQuickItem* anchor = overlay.anchor; anchor && anchor->window()) {
        const QPointF origin = overlay.at.value_or(QPointF(0, anchor->height() + distance));
        overlay.hook = QRectF(anchor->mapToGlobal(origin), QSizeF(overlay.at ? 0 : anchor->width(), 0));
    }

    // The margins around the visible surface, where its shadow falls.
    const double side = number(content, "marginX");
    const double above = number(content, "marginTop");
    const double below = number(content, "marginBottom");
    const double visibleWidth = size.width() - 2 * side;
    const double visibleHeight = size.height() - above - below;

    double x = overlay.hook.x();
    const double anchorWidth = overlay.hook.width();
    if (overlay.alignment == QLatin1String("right"))
        x += anchorWidth - visibleWidth;
    else if (overlay.alignment != QLatin1String("left"))
        x += (anchorWidth - visibleWidth) / 2;
    double y = overlay.hook.y();
    const QRectF area = room();
    if (!area.isNull()) {
        // Beside the panel a surface would look lost.
        const QRectF across =
            QRectF(panel_.geometry()).adjusted(panelMargin, 0, -panelMargin, 0).intersected(area);
        x = std::clamp(x, across.left(), std::max(across.left(), across.right() - visibleWidth));
        y = std::clamp(y, area.top(), std::max(area.top(), area.bottom() - distance - visibleHeight));
    }
    window.setGeometry(QRect(QPointF(x - side, y - above).toPoint(), size.toSize()));
    if (!appearance_.compositing()) {
        QPainterPath outline;
        const double radius = popoverRadius * appearance_.textScale();
        outline.addRoundedRect(QRectF(QPointF(), size), radius, radius);
        window.setMask(QRegion(outline.toFillPolygon().toPolygon()));
    }
}

int OverlayHost::indexOf(const QString& id) const {
    const auto found = std::find_if(overlays_.begin(), overlays_.end(),
                                    [&](const auto& overlay) { return overlay->id == id; });
    return found == overlays_.end() ? -1 : int(found - overlays_.begin());
}

void OverlayHost::closeDownTo(std::size_t count) {
    if (overlays_.size() <= count)
        return;
    while (overlays_.size() > count) {
        const std::unique_ptr<Overlay> closing = std::move(overlays_.back());
        overlays_.pop_back();
        // What goes may still change its size on the way.
        closing->content->disconnect(this);
        disconnect(closing->content, nullptr, this, nullptr);
        closing->window->hide();
        // Its own code may be what closes it.
        closing->window.release()->deleteLater();
        interaction_.dismissOverlay(closing->id);
    }
    Q_EMIT overlaysChanged();
    if (overlays_.empty())
        Q_EMIT allOverlaysClosed();
    else
        Q_EMIT overlaySurfaceShown(overlays_.back()->window.get());
}

void OverlayHost::dismiss(const QString& id) {
    if (const int index = indexOf(id); index >= 0)
        closeDownTo(std::size_t(index));
}

void OverlayHost::dismissAfterSaving(const QString& id) {
    if (!isPresented(id))
        return;
    interaction_.popoverClosedAfterSaving();
    dismiss(id);
}

void OverlayHost::dismissAll() {
    closeDownTo(0);
}

bool OverlayHost::isPresented(const QString& id) const {
    return indexOf(id) >= 0;
}

QString OverlayHost::topmost() const {
    return overlays_.empty() ? QString() : overlays_.back()->id;
}

QQuickWindow* OverlayHost::surface(const QString& id) const {
    const int index = indexOf(id);
    return index < 0 ? nullptr : overlays_[std::size_t(index)]->window.get();
}

bool OverlayHost::eventFilter(QObject* watched, QEvent* event) {
    if (overlays_.empty())
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        // The keyboard is the uppermost surface's from the moment it opens, before the focus has reached it.
        QQuickWindow& top = *overlays_.back()->window;
        if (watched == &top)
            return QObject::eventFilter(watched, event);
        deliverKey(top, *event);
        return true;
    }
    if (event->type() != QEvent::MouseButtonPress)
        return QObject::eventFilter(watched, event);
    // A press beside the uppermost surface closes what lies above the pressed one, and does nothing else.
    if (watched == &panel_) {
        dismissAll();
        return true;
    }
    for (std::size_t index = 0; index + 1 < overlays_.size(); ++index) {
        if (overlays_[index]->window.get() == watched) {
            closeDownTo(index + 1);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace kestrant
