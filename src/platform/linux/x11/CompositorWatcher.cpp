#include "platform/linux/x11/CompositorWatcher.h"

#include <QGuiApplication>

#include <xcb/xfixes.h>

namespace kestrant {

CompositorWatcher::CompositorWatcher()
    : server_(X11Connection::ofApplication())
    , selection_(server_.atom("_NET_WM_CM_S0")) {
    const xcb_query_extension_reply_t* xfixes = xcb_get_extension_data(server_.get(), &xcb_xfixes_id);
    if (xfixes && xfixes->present) {
        firstEvent_ = xfixes->first_event;
        // The server must be told a version before it serves any other request of the extension.
        const XcbReply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            server_.get(), xcb_xfixes_query_version(server_.get(), 2, 0), nullptr));
        xcb_xfixes_select_selection_input(server_.get(), server_.root(), selection_,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        server_.flush();
        qGuiApp->installNativeEventFilter(this);
    }
    update();
}

CompositorWatcher::~CompositorWatcher() {
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

void CompositorWatcher::update() {
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        server_.get(), xcb_get_selection_owner(server_.get(), selection_), nullptr));
    const bool compositing = reply && reply->owner != XCB_WINDOW_NONE;
    if (compositing == compositing_)
        return;
    compositing_ = compositing;
    Q_EMIT changed();
}

bool CompositorWatcher::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) == firstEvent_ + XCB_XFIXES_SELECTION_NOTIFY &&
        reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event)->selection == selection_)
        update();
    return false;
}

}  // namespace kestrant
