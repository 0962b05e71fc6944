#include "ForeignClient.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <xcb/xtest.h>

#include <algorithm>

namespace kestrant {

namespace {
constexpr uint8_t leftButton = 1;
constexpr uint32_t controlKeysym = 0xffe3;
/// Flags (decorations are told), functions, decorations, input mode, status.
const std::vector<uint32_t> undecorated{2, 0, 0, 0, 0};
}  // namespace

ForeignClient::ForeignClient()
    : connection_(xcb_connect(nullptr, nullptr))
    , server_(connection_.get())
    , notifier_(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read) {
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(server_.get(), server_.root(), XCB_CW_EVENT_MASK, &events);
    server_.flush();
    connect(&notifier_, &QSocketNotifier::activated, this, [this] { readEvents(); });
}

ForeignClient::~ForeignClient() = default;

void ForeignClient::readEvents() {
    while (xcb_generic_event_t* raw = xcb_poll_for_event(server_.get())) {
        const XcbReply<xcb_generic_event_t> event(raw);
        switch (event->response_type & ~0x80) {
        case XCB_BUTTON_PRESS:
            clicked.push_back(reinterpret_cast<xcb_button_press_event_t*>(raw)->event);
            break;
        case XCB_KEY_PRESS:
            typed.push_back(reinterpret_cast<xcb_key_press_event_t*>(raw)->detail);
            break;
        case XCB_FOCUS_IN:
            focused = reinterpret_cast<xcb_focus_in_event_t*>(raw)->event;
            break;
        case XCB_MAP_NOTIFY:
            mapped_.push_back(reinterpret_cast<xcb_map_notify_event_t*>(raw)->window);
            break;
        default:
            break;
        }
    }
}

bool ForeignClient::waitUntil(const std::function<bool()>& done) {
    bool late = false;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, [&late] { late = true; });
    deadline.start(10'000);
    readEvents();
    while (!done() && !late) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // A reply that was waited for may have brought events that the notifier does not tell of.
        readEvents();
    }
    return done();
}

void ForeignClient::waitForWindowManager() {
    if (!waitUntil([this] { return !server_.windowManagerName().isEmpty(); }))
        qFatal("no window manager came up");
}

xcb_window_t ForeignClient::openWindow(const QRect& geometry, const std::vector<const char*>& states) {
    const xcb_window_t window = xcb_generate_id(server_.get());
    const uint32_t values[] = {0xffffff, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_KEY_PRESS |
                                             XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(server_.get(), XCB_COPY_FROM_PARENT, window, server_.root(),
                      static_cast<int16_t>(geometry.x()), static_cast<int16_t>(geometry.y()),
                      static_cast<uint16_t>(geometry.width()), static_cast<uint16_t>(geometry.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    server_.setProperty(window, "_MOTIF_WM_HINTS", server_.atom("_MOTIF_WM_HINTS"), undecorated);
    if (!states.empty())
        server_.setAtoms(window, "_NET_WM_STATE", states);
    xcb_map_window(server_.get(), window);
    server_.flush();
    const bool shown = waitUntil([&] { return std::count(mapped_.begin(), mapped_.end(), window) > 0; });
    if (!shown || !waitUntil([&] { return focused == window; }))
        qFatal("the other program's window did not come up");
    return window;
}

void ForeignClient::closeWindow(xcb_window_t window) {
    xcb_destroy_window(server_.get(), window);
    server_.flush();
}

void ForeignClient::fake(uint8_t type, uint8_t detail, QPoint at) {
    xcb_test_fake_input(server_.get(), type, detail, XCB_CURRENT_TIME, server_.root(),
                        static_cast<int16_t>(at.x()), static_cast<int16_t>(at.y()), 0);
}

void ForeignClient::movePointer(QPoint to) {
    fake(XCB_MOTION_NOTIFY, 0, to);
    // A reply means that the server has dealt with everything before it.
    (void)server_.inputFocus();
}

void ForeignClient::click(QPoint at) {
    movePointer(at);
    fake(XCB_BUTTON_PRESS, leftButton);
    fake(XCB_BUTTON_RELEASE, leftButton);
    server_.flush();
}

uint8_t ForeignClient::keycode(uint32_t keysym) const {
    const xcb_setup_t* setup = xcb_get_setup(server_.get());
    const int count = setup->max_keycode - setup->min_keycode + 1;
    const XcbReply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        server_.get(),
        xcb_get_keyboard_mapping(server_.get(), setup->min_keycode, static_cast<uint8_t>(count)), nullptr));
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply.get());
    for (int code = 0; code < count; ++code) {
        if (keysyms[code * reply->keysyms_per_keycode] == keysym)
            return static_cast<uint8_t>(setup->min_keycode + code);
    }
    qFatal("the keyboard lacks a key");
    return 0;
}

void ForeignClient::type(uint32_t keysym, bool withControl) {
    const uint8_t key = keycode(keysym);
    const uint8_t control = keycode(controlKeysym);
    if (withControl)
        fake(XCB_KEY_PRESS, control);
    fake(XCB_KEY_PRESS, key);
    fake(XCB_KEY_RELEASE, key);
    if (withControl)
        fake(XCB_KEY_RELEASE, control);
    server_.flush();
}

void ForeignClient::setCompositing(bool on) {
    if (on) {
        selectionOwner_ = xcb_generate_id(server_.get());
        xcb_create_window(server_.get(), XCB_COPY_FROM_PARENT, selectionOwner_, server_.root(), -1, -1, 1, 1,
                          0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(server_.get(), selectionOwner_, server_.atom("_NET_WM_CM_S0"),
                                XCB_CURRENT_TIME);
    } else {
        xcb_destroy_window(server_.get(), selectionOwner_);
    }
    server_.flush();
}

xcb_window_t ForeignClient::windowAt(QPoint place) {
    movePointer(place);
    xcb_window_t window = server_.root();
    while (true) {
        const XcbReply<xcb_query_pointer_reply_t> reply(
            xcb_query_pointer_reply(server_.get(), xcb_query_pointer(server_.get(), window), nullptr));
        if (!reply || reply->child == XCB_WINDOW_NONE)
            return window;
        window = reply->child;
    }
}

}  // namespace kestrant
