#include "platform/linux/x11/BackdropBlur.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kestrant {
namespace {

constexpr auto blurProperty = "_KDE_NET_WM_BLUR_BEHIND_REGION";

}  // namespace

BackdropBlur::BackdropBlur(QWindow& window)
    : window_(window)
    , server_(X11Connection::ofApplication())
    , property_(server_.atom(blurProperty)) {
    // Qt itself asks for the changes of the root window's properties.
    qGuiApp->installNativeEventFilter(this);
    connect(&window_, &QWindow::widthChanged, this, &BackdropBlur::apply);
    connect(&window_, &QWindow::screenChanged, this, &BackdropBlur::apply);
    update();
}

BackdropBlur::~BackdropBlur() {
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

void BackdropBlur::setShape(const std::optional<NotchContainerShape>& shape) {
    if (shape == shape_)
        return;
    shape_ = shape;
    apply();
}

void BackdropBlur::apply() {
    const auto id = static_cast<xcb_window_t>(window_.winId());
    if (!shape_ || !isOffered_) {
        xcb_delete_property(server_.get(), id, property_);
    } else {
        std::vector<uint32_t> region;
        for (const QRect& part : pixelRectangles(*shape_, window_.width(), window_.devicePixelRatio()))
            for (const int number : {part.x(), part.y(), part.width(), part.height()})
                region.push_back(static_cast<uint32_t>(number));
        server_.setProperty(id, blurProperty, XCB_ATOM_CARDINAL, region);
    }
    server_.flush();
}

void BackdropBlur::update() {
    const XcbReply<xcb_list_properties_reply_t> reply(xcb_list_properties_reply(
        server_.get(), xcb_list_properties(server_.get(), server_.root()), nullptr));
    bool offered = false;
    if (reply) {
        const xcb_atom_t* atoms = xcb_list_properties_atoms(reply.get());
        const xcb_atom_t* end = atoms + xcb_list_properties_atoms_length(reply.get());
        offered = std::find(atoms, end, property_) != end;
    }
    if (offered == isOffered_)
        return;
    isOffered_ = offered;
    apply();
    Q_EMIT isOfferedChanged();
}

bool BackdropBlur::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) == XCB_PROPERTY_NOTIFY) {
        const auto* notice = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (notice->window == server_.root() && notice->atom == property_)
            update();
    }
    return false;
}

}  // namespace kestrant
