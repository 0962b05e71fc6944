#pragma once

#include "notch/PanelWindow.h"

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRectF>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <vector>

class QPointerEvent;

namespace kestrant {

class Appearance;
class NotchInteractionModel;

/// Shows popovers and menus in the panel's own scene, above everything else in it, and tells the interaction
/// model of them so that the panel stays open beneath. An overlay has the keyboard and the pointer to itself:
/// a press beside it closes it, but not the second one of the double click that opened it (`opensByClick`).
/// One that opens from another stands in its place (`isPage`), hangs below what it opened from or above it
/// where there is no room (`dropsDown`), or else lies wholly upon it; closing one closes those upon it.
/// Thread: main.
class OverlayHost : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the panel's window")
    /// Identifier of the uppermost overlay; empty when none is open.
    Q_PROPERTY(QString topmost READ topmost NOTIFY overlaysChanged)
    /// Covers the expanded panel's frame; the origin of every place below, and what overlays are put upon.
    Q_PROPERTY(QQuickItem* frame MEMBER frame_)
    /// Controls that a press reaches although it closes what is open: each opens something or changes what is
    /// shown, and nobody wants to press twice for that. What was opened by the pressed one is only closed.
    Q_PROPERTY(QQuickItem* controls MEMBER controls_)
    /// Where a message hangs below the panel; empty for none.
    Q_PROPERTY(QRectF toast READ toast WRITE setToast NOTIFY surfacesChanged)

  public:
    /// Everything must outlive the host.
    OverlayHost(QQuickWindow& window, QQmlEngine& engine, NotchInteractionModel& interaction,
                const Appearance& appearance, QObject* parent = nullptr);
    ~OverlayHost() override;

    /// Opens the overlay described by a file of the QML module ("QuickAddPopover.qml") below `anchor`, with
    /// the given properties. Options among them that the host takes for itself: "alignment" ("left", "center"
    /// or "right" edge of the anchor; center when absent) and "at" (a point in the anchor instead of its
    /// lower edge). An overlay that is open already is closed instead, so that its button toggles it.
    Q_INVOKABLE void present(const QString& id, const QString& file, QQuickItem* anchor,
                             const QVariantMap& properties = {});
    Q_INVOKABLE void dismiss(const QString& id);
    /// Closes the overlay after what it was opened for was done, so that the pointer may travel back.
    Q_INVOKABLE void dismissAfterSaving(const QString& id);
    Q_INVOKABLE void dismissAll();

    /// Keeps overlays within so many points from the top of the screen instead of above its bottom.
    void setRoomHeight(double height) { roomHeight_ = height; }
    /// Points from the top of the screen to where overlays must end.
    [[nodiscard]] Q_INVOKABLE double roomHeight() const;
    /// Points across the panel, which overlays keep within.
    [[nodiscard]] Q_INVOKABLE double roomWidth() const;

    [[nodiscard]] Q_INVOKABLE bool isPresented(const QString& id) const;
    [[nodiscard]] QString topmost() const;
    /// The item of an open overlay, else null.
    [[nodiscard]] Q_INVOKABLE QQuickItem* surface(const QString& id) const;

    [[nodiscard]] QRectF toast() const { return toast_; }
    void setToast(const QRectF& frame);
    /// The open surfaces, the lowest first.
    [[nodiscard]] std::vector<PanelSurface> surfaces() const;
    /// Around the frame, all that the open overlays and their shadows cover.
    [[nodiscard]] QRectF drawnArea() const;

  Q_SIGNALS:
    void overlaysChanged();
    /// Emitted after a surface was opened, closed, moved or resized.
    void surfacesChanged();
    /// The last open overlay has closed.
    void allOverlaysClosed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    class Layer;
    struct Overlay;

    [[nodiscard]] int indexOf(const QString& id) const;
    /// Closes overlays from the top until `count` are left.
    void closeDownTo(std::size_t count);
    void fadeOut(std::unique_ptr<Layer> layer);
    static void drop(QQuickItem& layer);
    void place(std::size_t index);
    /// The second press of a double click on what opened the uppermost overlay, for which one click would
    /// have done.
    [[nodiscard]] bool isSecondOfTwo(const QPointerEvent& press);
    /// Whether a press at a place in the window is the overlays' alone.
    [[nodiscard]] bool press(QPointF inWindow);
    [[nodiscard]] bool isOnControls(QPointF place) const;
    /// Takes a press on the uppermost overlay away from what lies beneath it: pointer handlers look on
    /// passively although an item above them has accepted the press, and would act on the release.
    void keepPressInside(QPointerEvent& event) const;
    /// Moves the focus on within the uppermost overlay where it would leave that by itself.
    [[nodiscard]] bool keepFocusInside(bool forward);

    QQuickWindow& window_;
    QQmlEngine& engine_;
    NotchInteractionModel& interaction_;
    const Appearance& appearance_;
    QPointer<QQuickItem> frame_;
    QPointer<QQuickItem> controls_;
    /// Where the keyboard focus goes back to.
    QPointer<QQuickItem> focusBeneath_;
    /// The last press closed something and has no other effect, nor has what follows of it.
    bool pressIsSpent_ = false;
    /// Milliseconds, and a place in the window.
    quint64 lastPress_ = 0;
    QPointF lastPlace_;
    double roomHeight_ = 0.0;
    QRectF toast_;
    std::vector<std::unique_ptr<Overlay>> overlays_;
    /// On their way out.
    std::vector<QPointer<QQuickItem>> leaving_;
};

}  // namespace kestrant
