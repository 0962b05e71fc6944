#pragma once

#include "notch/NotchContainerShape.h"
#include "platform/linux/x11/X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QWindow>

#include <optional>

namespace kestrant {

/// Blur of what lies behind a translucent window, by the protocol of KWin: a compositor that offers it names
/// the property `_KDE_NET_WM_BLUR_BEHIND_REGION` on the root window, and blurs behind the rectangles (x, y,
/// width and height in pixels) that a window's property of that name lists. Thread: main.
class BackdropBlur : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// The window must outlive this object.
    explicit BackdropBlur(QWindow& window);
    ~BackdropBlur() override;

    /// Follows compositors that start, stop or are set up otherwise.
    [[nodiscard]] bool isOffered() const { return isOffered_; }
    /// Where to blur: a shape that hangs from the middle of the window's top edge; nothing for nowhere.
    void setShape(const std::optional<NotchContainerShape>& shape);

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  Q_SIGNALS:
    void isOfferedChanged();

  private:
    void update();
    void apply();

    QWindow& window_;
    X11Connection server_;
    xcb_atom_t property_;
    bool isOffered_ = false;
    std::optional<NotchContainerShape> shape_;
};

}  // namespace kestrant
