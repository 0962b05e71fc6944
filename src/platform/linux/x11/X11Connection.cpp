#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QWindow>

#include <xcb/randr.h>

#include <algorithm>
#include <cstring>

namespace kestrant {

namespace {

/// More items than any property that is read here has.
constexpr uint32_t longestProperty = 1024;
/// As a pager: the person asked for it, so the window manager does not weigh it against their other doings.
constexpr uint32_t rootEvents = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;

}  // namespace

X11Connection::X11Connection(xcb_connection_t* connection)
    : connection_(connection)
    , root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

X11Connection X11Connection::ofApplication() {
    return X11Connection(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection());
}

xcb_atom_t X11Connection::atom(const char* name) const {
    if (const auto known = atoms_.find(name); known != atoms_.end())
        return known->second;
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<uint16_t>(std::strlen(name)), name),
        nullptr));
    const xcb_atom_t atom = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    atoms_.emplace(name, atom);
    return atom;
}

void X11Connection::setAtoms(xcb_window_t window, const char* property,
                             const std::vector<const char*>& values) const {
    std::vector<uint32_t> atoms;
    atoms.reserve(values.size());
    for (const char* value : values)
        atoms.push_back(atom(value));
    setProperty(window, property, XCB_ATOM_ATOM, atoms);
}

void X11Connection::setProperty(xcb_window_t window, const char* property, xcb_atom_t type,
                                const std::vector<uint32_t>& values) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                        static_cast<uint32_t>(values.size()), values.data());
}

std::vector<uint32_t> X11Connection::property(xcb_window_t window, const char* property) const {
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_,
                               xcb_get_property(connection_, 0, window, atom(property),
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty),
                               nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto* items = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return {items, items + reply->value_len};
}

void X11Connection::tellWindowManager(xcb_window_t window, const char* message,
                                      const std::vector<uint32_t>& data) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy_n(data.begin(), std::min<std::size_t>(data.size(), 5), event.data.data32);
    xcb_send_event(connection_, 0, root_, rootEvents, reinterpret_cast<const char*>(&event));
}

bool X11Connection::windowManagerSupports(const char* name) const {
    const std::vector<uint32_t> supported = property(root_, "_NET_SUPPORTED");
    return !windowManagerName().isEmpty() &&
           std::find(supported.begin(), supported.end(), atom(name)) != supported.end();
}

QByteArray X11Connection::windowManagerName() const {
    // The window named by the root window names itself in turn while its window manager is alive.
    const std::vector<uint32_t> check = property(root_, "_NET_SUPPORTING_WM_CHECK");
    if (check.empty() || property(check.front(), "_NET_SUPPORTING_WM_CHECK") != check)
        return {};
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_,
                               xcb_get_property(connection_, 0, check.front(), atom("_NET_WM_NAME"),
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, 64),
                               nullptr));
    const QByteArray name = reply && reply->format == 8
                                ? QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                             xcb_get_property_value_length(reply.get()))
                                : QByteArray();
    return name.isEmpty() ? QByteArrayLiteral("unnamed") : name;
}

bool X11Connection::isXWayland() const {
    // Later versions say so by an extension; earlier ones are known by the names of their outputs.
    const XcbReply<xcb_query_extension_reply_t> extension(
        xcb_query_extension_reply(connection_, xcb_query_extension(connection_, 8, "XWAYLAND"), nullptr));
    if (extension && extension->present)
        return true;
    const XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection_, xcb_randr_get_screen_resources_current(connection_, root_), nullptr));
    if (!resources || xcb_randr_get_screen_resources_current_outputs_length(resources.get()) == 0)
        return false;
    const XcbReply<xcb_randr_get_output_info_reply_t> output(xcb_randr_get_output_info_reply(
        connection_,
        xcb_randr_get_output_info(
            connection_, *xcb_randr_get_screen_resources_current_outputs(resources.get()), XCB_CURRENT_TIME),
        nullptr));
    return output && QByteArray(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(output.get())),
                                xcb_randr_get_output_info_name_length(output.get()))
                         .startsWith("XWAYLAND");
}

xcb_window_t X11Connection::activeWindow() const {
    const std::vector<uint32_t> active = property(root_, "_NET_ACTIVE_WINDOW");
    return active.empty() ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : active.front();
}

xcb_window_t X11Connection::inputFocus() const {
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return reply ? reply->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

bool X11Connection::isViewable(xcb_window_t window) const {
    const XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool isOwnWindow(xcb_window_t id) {
    const auto windows = QGuiApplication::allWindows();
    return std::any_of(windows.begin(), windows.end(),
                       [id](QWindow* window) { return window->handle() && window->winId() == id; });
}

}  // namespace kestrant
