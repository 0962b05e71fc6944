#pragma once

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

namespace kestrant {

class Appearance;
class NotchInteractionModel;

/// Shows popovers and menus as surfaces of their own, since they are taller than the panel, and tells the
/// interaction model of them so that the panel stays open beneath. A popover that opens from another one lies
/// upon it; closing one closes those upon it. Thread: main.
class OverlayHost : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the panel's window")
    /// Identifier of the uppermost overlay; empty when none is open.
    Q_PROPERTY(QString topmost READ topmost NOTIFY overlaysChanged)

  public:
    /// Everything must outlive the host.
    OverlayHost(QQuickWindow& panel, QQmlEngine& engine, NotchInteractionModel& interaction,
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

    /// Keeps surfaces within this area (in global points) instead of within the panel's screen.
    void setPlacementArea(const QRectF& area) { placementArea_ = area; }

    /// Points from the top of the screen to its bottom.
    [[nodiscard]] Q_INVOKABLE double roomHeight() const { return room().height(); }

    [[nodiscard]] Q_INVOKABLE bool isPresented(const QString& id) const;
    [[nodiscard]] QString topmost() const;
    /// The window of an open overlay, else null.
    [[nodiscard]] QQuickWindow* surface(const QString& id) const;

  Q_SIGNALS:
    void overlaysChanged();
    /// A surface is about to be shown for the first time: make its native window what it has to be (above the
    /// panel, on every desktop, in no task list).
    void overlaySurfaceCreated(QWindow* surface);
    /// A surface is on screen and wants the keyboard focus.
    void overlaySurfaceShown(QWindow* surface);
    /// The last open overlay has closed; the keyboard focus belongs to the panel again.
    void allOverlaysClosed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Overlay;

    [[nodiscard]] int indexOf(const QString& id) const;
    /// Closes overlays from the top until `count` are left.
    void closeDownTo(std::size_t count);
    void place(Overlay& overlay);
    /// Where surfaces may be, in global points.
    [[nodiscard]] QRectF room() const;

    QQuickWindow& panel_;
    QQmlEngine& engine_;
    NotchInteractionModel& interaction_;
    const Appearance& appearance_;
    QRectF placementArea_;
    std::vector<std::unique_ptr<Overlay>> overlays_;
};

}  // namespace kestrant
