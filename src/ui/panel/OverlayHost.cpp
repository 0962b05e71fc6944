#include "ui/panel/OverlayHost.h"

#include "notch/NotchInteractionModel.h"
#include "ui/panel/Appearance.h"

#include <QGuiApplication>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointerEvent>
#include <QPropertyAnimation>
#include <QQmlComponent>
#include <QScreen>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace kestrant {
namespace {

/// Points between an anchor and the overlay below it.
constexpr double distance = 8.0;
/// Points between an overlay and the lower edge of the screen.
constexpr double screenMargin = 8.0;
/// Points between an overlay and the sides of the panel's frame.
constexpr double panelMargin = 16.0;
/// Points around an overlay that its shadow may cover.
constexpr QMarginsF shadow(48.0, 28.0, 48.0, 68.0);
constexpr int leaveMilliseconds = 110;

/// Where a length may begin so that it lies within a range, as near to `wished` as possible; one that is
/// longer lies over the whole range, as far on either side.
double within(double wished, double length, double from, double to) {
    return length <= to - from ? std::clamp(wished, from, to - length) : (from + to - length) / 2;
}

}  // namespace

/// Lies over the whole scene and carries one overlay: what is beneath gets no pointer.
class OverlayHost::Layer : public QQuickItem {
  public:
    Layer(OverlayHost& host, QQuickItem& frame) : QQuickItem(&frame), host_(host) {
        setAcceptedMouseButtons(Qt::AllButtons);
        setAcceptHoverEvents(true);
        setZ(1);
    }
    /// Before the items lose their parents, which they are bound to.
    ~Layer() override { delete overlay; }
    [[nodiscard]] bool contains(const QPointF&) const override { return true; }
    /// Whether something that grabs the pointer belongs to the overlay.
    [[nodiscard]] bool carries(const QObject* grabber) const {
        const auto* item = qobject_cast<const QQuickItem*>(grabber);
        if (!item && grabber)
            item = qobject_cast<const QQuickItem*>(grabber->parent());  // A pointer handler and its item.
        return item && isAncestorOf(item);
    }
    [[nodiscard]] QRectF surface() const {
        return overlay ? QRectF(overlay->position(), overlay->size()) : QRectF();
    }

    QQuickItem* overlay = nullptr;

  protected:
    void mousePressEvent(QMouseEvent*) override {}
    void mouseDoubleClickEvent(QMouseEvent*) override {}
    void hoverEnterEvent(QHoverEvent* event) override { hoverMoveEvent(event); }
    void hoverMoveEvent(QHoverEvent* event) override {
        event->setAccepted(surface().contains(event->position()) || !host_.isOnControls(event->position()));
    }
    void wheelEvent(QWheelEvent* event) override { event->accept(); }

  private:
    OverlayHost& host_;
};

struct OverlayHost::Overlay {
    /// Stands in the place of the one beneath, which is hidden meanwhile.
    [[nodiscard]] bool isPage() const { return layer->overlay->property("isPage").toBool(); }

    QString id;
    std::unique_ptr<Layer> layer;
    QPointer<QQuickItem> anchor;
    QString alignment;
    std::optional<QPointF> at;
    /// Where the overlay hangs from: known still when the anchor is gone.
    QRectF hook;
    /// Where the lower edge of one that has no room below would be.
    double hookAbove = 0.0;
};

OverlayHost::OverlayHost(QQuickWindow& window, QQmlEngine& engine, NotchInteractionModel& interaction,
                         const Appearance& appearance, QObject* parent)
    : QObject(parent)
    , window_(window)
    , engine_(engine)
    , interaction_(interaction)
    , appearance_(appearance) {
    interaction_.setOverlayDismissalHandler([this] { dismissAll(); });
    window_.installEventFilter(this);
}

OverlayHost::~OverlayHost() {
    interaction_.setOverlayDismissalHandler({});
}

void OverlayHost::present(const QString& id, const QString& file, QQuickItem* anchor,
                          const QVariantMap& properties) {
    if (!anchor || !frame_)
        return;
    if (isPresented(id)) {
        dismiss(id);
        return;
    }
    // Overlays that the new one does not stand on close.
    const auto beneath = std::find_if(overlays_.begin(), overlays_.end(), [&](const auto& overlay) {
        return overlay->layer.get() == anchor || overlay->layer->isAncestorOf(anchor);
    });
    closeDownTo(beneath == overlays_.end() ? 0 : std::size_t(beneath - overlays_.begin()) + 1);

    auto overlay = std::make_unique<Overlay>();
    overlay->id = id;
    overlay->anchor = anchor;
    QVariantMap initial = properties;
    overlay->alignment = initial.take(QStringLiteral("alignment")).toString();
    if (const QVariant at = initial.take(QStringLiteral("at")); at.isValid())
        overlay->at = at.toPointF();
    initial.insert(QStringLiteral("overlays"), QVariant::fromValue(this));
    initial.insert(QStringLiteral("overlayId"), id);

    QQmlComponent component(&engine_, QUrl(QStringLiteral("qrc:/qt/qml/Kestrant/") + file));
    std::unique_ptr<QObject> object(component.isReady() ? component.createWithInitialProperties(initial)
                                                        : nullptr);
    auto* content = qobject_cast<QQuickItem*>(object.get());
    if (!content) {
        qWarning("%s", qUtf8Printable(component.errorString()));
        return;
    }
    overlay->layer = std::make_unique<Layer>(*this, *frame_);
    object.release()->setParent(overlay->layer.get());
    content->setParentItem(overlay->layer.get());
    overlay->layer->overlay = content;

    const std::size_t index = overlays_.size();
    const auto sized = [this, index] { place(index); };
    connect(content, &QQuickItem::implicitWidthChanged, this, sized);
    connect(content, &QQuickItem::implicitHeightChanged, this, sized);
    if (overlays_.empty())
        focusBeneath_ = window_.contentItem()->scopedFocusItem();
    if (index > 0)
        overlays_.back()->layer->setOpacity(overlay->isPage() ? 0.0 : 1.0);
    overlays_.push_back(std::move(overlay));
    place(index);
    content->forceActiveFocus(Qt::PopupFocusReason);

    interaction_.presentOverlay(id);
    Q_EMIT overlaysChanged();
}

double OverlayHost::roomWidth() const {
    return frame_ ? frame_->width() : window_.width();
}

double OverlayHost::roomHeight() const {
    const double height = roomHeight_ > 0.0  ? roomHeight_
                          : window_.screen() ? window_.screen()->geometry().height()
                                             : 0.0;
    return height - screenMargin;
}

void OverlayHost::place(std::size_t index) {
    Overlay& overlay = *overlays_[index];
    QQuickItem& content = *overlay.layer->overlay;
    if (const QQuickItem* anchor = overlay.anchor; anchor && anchor->window()) {
        const QPointF origin = overlay.at.value_or(QPointF(0, anchor->height() + distance));
        overlay.hookAbove = overlay.at ? 0.0 : anchor->mapToItem(frame_, QPointF(0, -distance)).y();
        overlay.hook = QRectF(anchor->mapToItem(frame_, origin), QSizeF(overlay.at ? 0 : anchor->width(), 0));
        if (controls_ && controls_->isAncestorOf(anchor))
            overlay.hook.moveTop(
                controls_->mapToItem(frame_, QPointF(0, controls_->height() + distance)).y());
    }
    const double width = content.implicitWidth();
    const double height = content.implicitHeight();

    double x = overlay.hook.x();
    if (overlay.alignment == QLatin1String("right"))
        x += overlay.hook.width() - width;
    else if (overlay.alignment != QLatin1String("left"))
        x += (overlay.hook.width() - width) / 2;
    double y = overlay.hook.y();
    if (index > 0) {
        const QRectF beneath = overlays_[index - 1]->layer->surface();
        x = overlay.isPage() ? beneath.right() - width : within(x, width, beneath.left(), beneath.right());
        if (overlay.isPage())
            y = beneath.top();
        else if (!content.property("dropsDown").toBool())
            y = within(y, height, beneath.top(), beneath.bottom());
        else if (y + height > roomHeight() && overlay.hookAbove >= height)
            y = overlay.hookAbove - height;
    } else {
        // Beside the panel an overlay would look lost.
        x = within(x, width, panelMargin, frame_->width() - panelMargin);
    }
    y = std::max(0.0, std::min(y, roomHeight() - height));
    content.setPosition({std::round(x), std::round(y)});
    content.setSize({width, height});
    Q_EMIT surfacesChanged();
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
        // A closing overlay may still change its size.
        disconnect(closing->layer->overlay, nullptr, this, nullptr);
        interaction_.dismissOverlay(closing->id);
        fadeOut(std::move(closing->layer));
    }
    QQuickItem* next = focusBeneath_;
    if (!overlays_.empty()) {
        overlays_.back()->layer->setOpacity(1.0);
        next = overlays_.back()->layer->overlay;
    }
    if (next)
        next->forceActiveFocus(Qt::PopupFocusReason);
    Q_EMIT surfacesChanged();
    Q_EMIT overlaysChanged();
    if (overlays_.empty())
        Q_EMIT allOverlaysClosed();
}

void OverlayHost::fadeOut(std::unique_ptr<Layer> layer) {
    // Its own code may be what closes it.
    Layer* leaving = layer.release();
    leaving->overlay->setFocus(false);
    if (leaving->overlay->property("isPage").toBool() || appearance_.reducedMotion() ||
        !appearance_.compositing()) {
        drop(*leaving);
        return;
    }
    std::erase_if(leaving_, [](const auto& item) { return item.isNull(); });
    leaving_.emplace_back(leaving);
    auto* fade = new QPropertyAnimation(leaving, "opacity", leaving);
    fade->setEndValue(0.0);
    fade->setDuration(leaveMilliseconds);
    connect(fade, &QPropertyAnimation::finished, leaving, [leaving] { drop(*leaving); });
    fade->start();
}

void OverlayHost::drop(QQuickItem& layer) {
    // Hidden, its items would be shown once more as they lose their parents.
    layer.setParentItem(nullptr);
    layer.deleteLater();
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

QQuickItem* OverlayHost::surface(const QString& id) const {
    const int index = indexOf(id);
    return index < 0 ? nullptr : overlays_[std::size_t(index)]->layer->overlay;
}

void OverlayHost::setToast(const QRectF& frame) {
    if (frame == toast_)
        return;
    toast_ = frame;
    Q_EMIT surfacesChanged();
}

std::vector<PanelSurface> OverlayHost::surfaces() const {
    std::vector<PanelSurface> surfaces;
    if (!toast_.isEmpty() && frame_) {
        const double edge = frame_->height();
        surfaces.push_back({PanelSurface::Kind::toast, toast_, toast_.height() / 2});
        surfaces.push_back(
            {PanelSurface::Kind::gap, QRectF(toast_.left(), edge, toast_.width(), toast_.top() - edge), 0.0});
    }
    for (const auto& overlay : overlays_) {
        if (overlay->layer->opacity() > 0.0)
            surfaces.push_back({PanelSurface::Kind::popover, overlay->layer->surface(),
                                overlay->layer->overlay->property("cornerRadius").toDouble()});
    }
    return surfaces;
}

QRectF OverlayHost::drawnArea() const {
    QRectF area;
    for (const auto& overlay : overlays_)
        area |= overlay->layer->surface().marginsAdded(shadow);
    return area;
}

bool OverlayHost::isOnControls(QPointF place) const {
    return controls_ && controls_->isVisible() && controls_->contains(controls_->mapFromItem(frame_, place));
}

bool OverlayHost::press(QPointF inWindow) {
    // A closing overlay no longer counts.
    for (const QPointer<QQuickItem>& leaving : std::exchange(leaving_, {})) {
        if (leaving)
            drop(*leaving);
    }
    if (overlays_.empty() || !frame_)
        return false;
    const QPointF place = frame_->mapFromScene(inWindow);
    for (std::size_t count = overlays_.size(); count > 0; --count) {
        if (overlays_[count - 1]->layer->surface().contains(place)) {
            const bool closes = count < overlays_.size();
            closeDownTo(count);
            return closes;
        }
    }
    const QQuickItem* opener = overlays_.front()->anchor;
    const bool isOnOpener = opener && opener->contains(opener->mapFromScene(inWindow));
    const bool isOnControl = isOnControls(place);
    dismissAll();
    return isOnOpener || !isOnControl;
}

void OverlayHost::keepPressInside(QPointerEvent& event) const {
    const Layer& layer = *overlays_.back()->layer;
    for (const QEventPoint& point : event.points()) {
        for (const QPointer<QObject>& grabber : event.passiveGrabbers(point)) {
            if (grabber && !layer.carries(grabber))
                event.removePassiveGrabber(point, grabber);
        }
    }
}

bool OverlayHost::isSecondOfTwo(const QPointerEvent& press) {
    const QPointF place = press.points().constFirst().position();
    const auto* hints = QGuiApplication::styleHints();
    const bool isSecond = press.timestamp() - lastPress_ < quint64(hints->mouseDoubleClickInterval()) &&
                          (place - lastPlace_).manhattanLength() < hints->mouseDoubleClickDistance();
    lastPress_ = press.timestamp();
    lastPlace_ = place;
    return isSecond && !overlays_.empty() &&
           overlays_.back()->layer->overlay->property("opensByClick").toBool();
}

bool OverlayHost::keepFocusInside(bool forward) {
    const QQuickItem& overlay = *overlays_.back()->layer->overlay;
    QQuickItem* focused = window_.activeFocusItem();
    if (!focused)
        return false;
    QQuickItem* next = focused->nextItemInFocusChain(forward);
    if (overlay.isAncestorOf(next)) {
        // From a stop of Tab the focus goes there by itself; from anything else to the first in the window.
        for (const QQuickItem* item = focused; item && item != &overlay; item = item->parentItem()) {
            if (item->activeFocusOnTab())
                return false;
        }
    } else {
        // To the other end.
        next = focused;
        for (QQuickItem* end = focused->nextItemInFocusChain(!forward);
             end != focused && overlay.isAncestorOf(end); end = end->nextItemInFocusChain(!forward))
            next = end;
    }
    next->forceActiveFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

bool OverlayHost::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) {
        const auto& pointer = *static_cast<const QPointerEvent*>(event);
        pressIsSpent_ = isSecondOfTwo(pointer) || press(pointer.points().constFirst().position());
        return pressIsSpent_;
    }
    if (event->type() == QEvent::MouseButtonDblClick)
        return pressIsSpent_;
    if (!overlays_.empty() &&
        (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease ||
         event->type() == QEvent::TouchUpdate || event->type() == QEvent::TouchEnd))
        keepPressInside(*static_cast<QPointerEvent*>(event));
    if (event->type() == QEvent::KeyPress && !overlays_.empty()) {
        const auto& key = *static_cast<const QKeyEvent*>(event);
        const bool isTab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
        if (isTab && !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
            return keepFocusInside(key.key() == Qt::Key_Tab && !(key.modifiers() & Qt::ShiftModifier));
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace kestrant
