#include "platform/linux/x11/X11PointerProvider.h"

#include "platform/linux/window/ScreenCoordinates.h"

#include <QGuiApplication>
#include <QScreen>

namespace kestrant {

namespace {

/// A location in the server's pixels in Qt's points. Qt leaves each screen's corner where it is and scales
/// from there.
QPointF toPoints(QPoint pixel) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const double scale = screen->devicePixelRatio();
        const QPoint corner = screen->geometry().topLeft();
        const QRectF pixels(corner, QSizeF(screen->geometry().size()) * scale);
        if (pixels.contains(pixel))
            return QPointF(corner) + QPointF(pixel - corner) / scale;
    }
    return pixel;
}

}  // namespace

X11PointerProvider::X11PointerProvider()
    : connection_(xcb_connect(nullptr, nullptr))
    , server_(connection_.get())
    , isXWayland_(server_.isXWayland()) {}

X11PointerProvider::~X11PointerProvider() = default;

std::optional<QPointF> X11PointerProvider::location() const {
    const XcbReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(server_.get(), xcb_query_pointer(server_.get(), server_.root()), nullptr));
    if (!reply || !reply->same_screen)
        return std::nullopt;
    // Above windows of other compositor clients the server keeps its last location, but names no window under
    // it.
    if (isXWayland_ && reply->child == XCB_WINDOW_NONE)
        return std::nullopt;
    return flipped(toPoints(QPoint(reply->root_x, reply->root_y)));
}

}  // namespace kestrant
