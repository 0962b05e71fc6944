#include "platform/linux/x11/XInputScroll.h"

#include <QByteArray>

#include <algorithm>

namespace kestrant {

namespace {

double toDouble(const xcb_input_fp3232_t& value) {
    return value.integral + value.frac / 4294967296.0;
}

template <typename Class>
const Class* as(const xcb_input_device_class_t* item) {
    return reinterpret_cast<const Class*>(item);
}

}  // namespace

XInputScroll::XInputScroll(const X11Connection& server, bool assumeNaturalScrolling)
    : server_(server)
    , assumeNaturalScrolling_(assumeNaturalScrolling) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(server_.get(), &xcb_input_id);
    if (extension && extension->present)
        opcode_ = extension->major_opcode;
    refresh();
}

std::map<int, ScrollDeviceKind> XInputScroll::kinds() const {
    std::map<int, ScrollDeviceKind> result;
    const XcbReply<xcb_input_list_input_devices_reply_t> reply(xcb_input_list_input_devices_reply(
        server_.get(), xcb_input_list_input_devices(server_.get()), nullptr));
    if (!reply)
        return result;
    const xcb_atom_t touchpad = server_.atom("TOUCHPAD");
    const xcb_input_device_info_t* infos = xcb_input_list_input_devices_devices(reply.get());
    for (int i = 0; i < xcb_input_list_input_devices_devices_length(reply.get()); ++i) {
        if (infos[i].device_type == XCB_ATOM_NONE)
            continue;
        result[infos[i].device_id] =
            infos[i].device_type == touchpad ? ScrollDeviceKind::touchpad : ScrollDeviceKind::wheel;
    }
    return result;
}

bool XInputScroll::naturalScrolling(int deviceId) const {
    const XcbReply<xcb_input_xi_get_property_reply_t> reply(xcb_input_xi_get_property_reply(
        server_.get(),
        xcb_input_xi_get_property(server_.get(), static_cast<xcb_input_device_id_t>(deviceId), 0,
                                  server_.atom("libinput Natural Scrolling Enabled"),
                                  XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
        nullptr));
    if (!reply || reply->format != 8 || reply->num_items == 0)
        return assumeNaturalScrolling_;
    return *static_cast<const uint8_t*>(xcb_input_xi_get_property_items(reply.get())) != 0;
}

void XInputScroll::refresh() {
    devices_.clear();
    if (opcode_ == 0)
        return;
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        server_.get(), xcb_input_xi_query_device(server_.get(), XCB_INPUT_DEVICE_ALL), nullptr));
    if (!reply)
        return;
    const std::map<int, ScrollDeviceKind> kindOf = kinds();
    for (auto info = xcb_input_xi_query_device_infos_iterator(reply.get()); info.rem;
         xcb_input_xi_device_info_next(&info)) {
        if (info.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER)
            continue;
        Device device;
        std::map<int, double> totals;
        for (auto item = xcb_input_xi_device_info_classes_iterator(info.data); item.rem;
             xcb_input_device_class_next(&item)) {
            if (item.data->type == XCB_INPUT_DEVICE_CLASS_TYPE_SCROLL) {
                const auto* scroll = as<xcb_input_scroll_class_t>(item.data);
                const double increment = toDouble(scroll->increment);
                if (increment != 0.0)
                    device.axes.push_back({scroll->number,
                                           scroll->scroll_type == XCB_INPUT_SCROLL_TYPE_VERTICAL,
                                           increment,
                                           {}});
            } else if (item.data->type == XCB_INPUT_DEVICE_CLASS_TYPE_VALUATOR) {
                const auto* valuator = as<xcb_input_valuator_class_t>(item.data);
                totals[valuator->number] = toDouble(valuator->value);
            }
        }
        if (device.axes.empty())
            continue;
        for (Axis& axis : device.axes) {
            if (const auto total = totals.find(axis.number); total != totals.end())
                axis.total = total->second;
        }
        const QByteArray name(xcb_input_xi_device_info_name(info.data),
                              xcb_input_xi_device_info_name_length(info.data));
        // The pointer of a nested server has a type, but it says nothing of the devices behind it.
        const auto kind = kindOf.find(info.data->deviceid);
        if (kind != kindOf.end() && !name.startsWith("xwayland-"))
            device.kind = kind->second;
        device.naturalScrolling = naturalScrolling(info.data->deviceid);
        devices_.emplace(info.data->deviceid, std::move(device));
    }
}

void XInputScroll::setAssumeNaturalScrolling(bool assumed) {
    if (assumed == assumeNaturalScrolling_)
        return;
    assumeNaturalScrolling_ = assumed;
    refresh();
}

bool XInputScroll::touchpadScrollsNaturally() const {
    bool scrollsNaturally = false;
    for (const auto& [id, device] : devices_) {
        if (device.kind == ScrollDeviceKind::touchpad)
            return device.naturalScrolling;
        // The device may be a touchpad.
        if (device.kind == ScrollDeviceKind::unknown)
            scrollsNaturally = scrollsNaturally || device.naturalScrolling;
    }
    return scrollsNaturally;
}

bool XInputScroll::isExtensionEvent(const xcb_generic_event_t& event, int type) const {
    if (opcode_ == 0 || (event.response_type & ~0x80) != XCB_GE_GENERIC)
        return false;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    return generic.extension == opcode_ && generic.event_type == type;
}

const xcb_input_motion_event_t* XInputScroll::motionEvent(const xcb_generic_event_t& event) const {
    return isExtensionEvent(event, XCB_INPUT_MOTION)
               ? reinterpret_cast<const xcb_input_motion_event_t*>(&event)
               : nullptr;
}

bool XInputScroll::isHierarchyChange(const xcb_generic_event_t& event) const {
    return isExtensionEvent(event, XCB_INPUT_HIERARCHY);
}

std::optional<ScrollSample> XInputScroll::sample(const xcb_input_motion_event_t& event) {
    const auto found = devices_.find(event.sourceid);
    if (found == devices_.end())
        return std::nullopt;
    Device& device = found->second;

    ScrollSample result;
    result.deviceId = event.sourceid;
    result.kind = device.kind;
    result.naturalScrolling = device.naturalScrolling;
    bool scrolled = false;
    const uint32_t* mask = xcb_input_button_press_valuator_mask(&event);
    const xcb_input_fp3232_t* value = xcb_input_button_press_axisvalues(&event);
    for (int number = 0; number < event.valuators_len * 32; ++number) {
        if (!(mask[number / 32] & (1u << (number % 32))))
            continue;
        const double total = toDouble(*value++);
        for (Axis& axis : device.axes) {
            if (axis.number != number)
                continue;
            const double delta = total - axis.total.value_or(total);
            axis.total = total;
            (axis.vertical ? result.deltaY : result.deltaX) = delta;
            (axis.vertical ? result.incrementY : result.incrementX) = axis.increment;
            scrolled = scrolled || delta != 0.0;
        }
    }
    return scrolled ? std::optional(result) : std::nullopt;
}

}  // namespace kestrant
