#include "eventkit/evolution/ServiceReader.h"

#include "eventkit/evolution/ServiceBus.h"
#include "eventkit/icalendar/Document.h"

#include <libecal/libecal.h>

#include <utility>

namespace kestrant::evolution {
namespace {

constexpr const char* factoryPath = "/org/gnome/evolution/dataserver/CalendarFactory";
constexpr const char* factoryInterface = "org.gnome.evolution.dataserver.CalendarFactory";
constexpr const char* calendarInterface = "org.gnome.evolution.dataserver.Calendar";

/// A connection to the session's bus that nobody shares, and that ends with this. Empty where there is none.
class OwnConnection {
  public:
    explicit OwnConnection(GCancellable* cancellable) {
        const Text address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, cancellable, nullptr));
        if (address)
            bus_.reset(g_dbus_connection_new_for_address_sync(
                address.get(),
                static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                  G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, cancellable, nullptr));
    }
    OwnConnection(const OwnConnection&) = delete;
    OwnConnection& operator=(const OwnConnection&) = delete;
    ~OwnConnection() {
        if (bus_)
            g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    }

    explicit operator bool() const { return bus_ != nullptr; }
    [[nodiscard]] Ref<GDBusConnection> bus() const {
        return Ref<GDBusConnection>(G_DBUS_CONNECTION(g_object_ref(bus_.get())));
    }

  private:
    Ref<GDBusConnection> bus_;
};

}  // namespace

std::unique_ptr<ServiceReader> ServiceReader::open(EKEntityType type, const QByteArray& listUid,
                                                   GCancellable* cancellable) {
    return openOver(Ref<GDBusConnection>(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, nullptr)), type,
                    listUid, cancellable);
}

std::unique_ptr<ServiceReader> ServiceReader::openOver(Ref<GDBusConnection> bus, EKEntityType type,
                                                       const QByteArray& listUid, GCancellable* cancellable) {
    const QByteArray factory = bus ? runningProcess(bus.get(), calendarProcess, cancellable) : QByteArray();
    if (factory.isEmpty())
        return nullptr;
    const Variant answer(
        g_dbus_connection_call_sync(bus.get(), factory.constData(), factoryPath, factoryInterface,
                                    type == EKEntityType::reminder ? "OpenTaskList" : "OpenCalendar",
                                    g_variant_new("(s)", listUid.constData()), G_VARIANT_TYPE("(ss)"),
                                    G_DBUS_CALL_FLAGS_NONE, untilCancelled, cancellable, nullptr));
    if (!answer)
        return nullptr;
    const gchar* path = nullptr;
    const gchar* name = nullptr;
    g_variant_get(answer.get(), "(&s&s)", &path, &name);
    // The list is open already, for the client library.
    return std::unique_ptr<ServiceReader>(new ServiceReader(type, listUid, std::move(bus), name, path));
}

ServiceReader::ServiceReader(EKEntityType type, QByteArray listUid, Ref<GDBusConnection> bus,
                             QByteArray busName, QByteArray objectPath)
    : type_(type)
    , listUid_(std::move(listUid))
    , bus_(std::move(bus))
    , busName_(std::move(busName))
    , objectPath_(std::move(objectPath)) {}

ServiceReader::~ServiceReader() {
    // The answer is not awaited.
    g_dbus_connection_call(bus_.get(), busName_.constData(), objectPath_.constData(), calendarInterface,
                           "Close", nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr,
                           nullptr);
}

GVariant* ServiceReader::call(const char* method, GVariant* arguments, const char* answerType,
                              GCancellable* cancellable, GError** error) const {
    return g_dbus_connection_call_sync(bus_.get(), busName_.constData(), objectPath_.constData(),
                                       calendarInterface, method, arguments, G_VARIANT_TYPE(answerType),
                                       G_DBUS_CALL_FLAGS_NO_AUTO_START, untilCancelled, cancellable, error);
}

std::optional<std::vector<QByteArray>> ServiceReader::readAll(GCancellable* cancellable, Error& error) {
    const OwnConnection own(cancellable);
    const auto reader = own ? openOver(own.bus(), type_, listUid_, cancellable) : nullptr;
    return reader ? reader->list(cancellable, error) : list(cancellable, error);
}

std::optional<std::vector<QByteArray>> ServiceReader::list(GCancellable* cancellable, Error& error) {
    const Variant answer(call("GetObjectList", g_variant_new("(s)", "#t"), "(as)", cancellable, error.out()));
    if (!answer)
        return std::nullopt;
    const Variant list(g_variant_get_child_value(answer.get(), 0));
    std::vector<QByteArray> result;
    result.reserve(g_variant_n_children(list.get()));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, list.get());
    const gchar* text = nullptr;
    while (g_variant_iter_next(&iterator, "&s", &text))
        result.emplace_back(text);
    return result;
}

std::optional<bool> ServiceReader::isWritable(GCancellable* cancellable) const {
    const Variant answer(g_dbus_connection_call_sync(
        bus_.get(), busName_.constData(), objectPath_.constData(), "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", calendarInterface, "Writable"), G_VARIANT_TYPE("(v)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, untilCancelled, cancellable, nullptr));
    if (!answer)
        return std::nullopt;
    GVariant* value = nullptr;
    g_variant_get(answer.get(), "(v)", &value);
    const Variant owned(value);
    return g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(value);
}

std::optional<std::vector<QByteArray>> ServiceReader::read(const QByteArray& uid, GCancellable* cancellable,
                                                           Error& error) {
    // Makes the service's errors known by their names.
    (void)E_CLIENT_ERROR;
    (void)E_CAL_CLIENT_ERROR;
    const Variant answer(
        call("GetObject", g_variant_new("(ss)", uid.constData(), ""), "(s)", cancellable, error.out()));
    if (!answer)
        return std::nullopt;
    const gchar* text = nullptr;
    g_variant_get(answer.get(), "(&s)", &text);
    // One component stands alone, several stand in a calendar.
    const auto calendar = icalendar::Document::parse(text);
    if (!calendar)
        return std::vector<QByteArray>{text};
    std::vector<QByteArray> result;
    for (const icalendar::ComponentView& component :
         calendar->components(type_ == EKEntityType::reminder ? "VTODO" : "VEVENT"))
        result.push_back(component.text());
    return result;
}

}  // namespace kestrant::evolution
