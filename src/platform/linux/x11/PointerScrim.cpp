#include "platform/linux/x11/PointerScrim.h"

namespace kestrant {

namespace {

constexpr uint8_t depthWithAlpha = 32;
/// Compositors take a window that covers a screen exactly for one in full screen, and hide their bar for it.
constexpr int margin = 1;

xcb_visualid_t visualWithAlpha(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == depthWithAlpha && depth.data->visuals_len > 0)
            return xcb_depth_visuals_iterator(depth.data).data->visual_id;
    }
    return XCB_NONE;
}

}  // namespace

PointerScrim::PointerScrim() : server_(X11Connection::ofApplication()) {}

PointerScrim::~PointerScrim() {
    if (window_ == XCB_WINDOW_NONE)
        return;
    xcb_destroy_window(server_.get(), window_);
    xcb_free_colormap(server_.get(), colormap_);
    server_.flush();
}

void PointerScrim::create() {
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(server_.get())).data;
    const xcb_visualid_t visual = visualWithAlpha(screen);
    if (visual == XCB_NONE)
        return;
    colormap_ = xcb_generate_id(server_.get());
    xcb_create_colormap(server_.get(), XCB_COLORMAP_ALLOC_NONE, colormap_, screen.root, visual);
    window_ = xcb_generate_id(server_.get());
    constexpr uint32_t transparent = 0;
    const uint32_t values[] = {transparent, transparent, 1,
                               XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_POINTER_MOTION, colormap_};
    xcb_create_window(server_.get(), depthWithAlpha, window_, screen.root, -margin, -margin, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK |
                          XCB_CW_COLORMAP,
                      values);
}

void PointerScrim::spreadBelow(xcb_window_t panel) {
    if (isMapped_)
        return;
    if (window_ == XCB_WINDOW_NONE)
        create();
    if (window_ == XCB_WINDOW_NONE)
        return;
    // The desktop's size changes with its screens.
    const XcbReply<xcb_get_geometry_reply_t> desktop(
        xcb_get_geometry_reply(server_.get(), xcb_get_geometry(server_.get(), server_.root()), nullptr));
    if (!desktop)
        return;
    const uint32_t values[] = {desktop->width + 2U * margin, desktop->height + 2U * margin, panel,
                               XCB_STACK_MODE_BELOW};
    constexpr uint16_t place = XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT |
                               XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE;
    xcb_configure_window(server_.get(), window_, place, values);
    xcb_map_window(server_.get(), window_);
    // Once more, since a window may be raised when it is mapped.
    xcb_configure_window(server_.get(), window_, place, values);
    server_.flush();
    isMapped_ = true;
}

void PointerScrim::remove() {
    if (!isMapped_)
        return;
    isMapped_ = false;
    xcb_unmap_window(server_.get(), window_);
    server_.flush();
}

bool PointerScrim::handle(const xcb_generic_event_t& event) {
    if (window_ == XCB_WINDOW_NONE)
        return false;
    const int type = event.response_type & ~0x80;
    const bool isHeardOf = (type == XCB_ENTER_NOTIFY &&
                            reinterpret_cast<const xcb_enter_notify_event_t&>(event).event == window_) ||
                           (type == XCB_MOTION_NOTIFY &&
                            reinterpret_cast<const xcb_motion_notify_event_t&>(event).event == window_);
    if (isHeardOf)
        remove();
    return isHeardOf;
}

}  // namespace kestrant
