#include "eventkit/evolution/ServiceBus.h"

#include <chrono>

namespace kestrant::evolution {
namespace {

/// A process that runs answers a ping at once, whatever it is busy with: a thread of its own does that.
constexpr std::chrono::milliseconds longestPing = std::chrono::seconds(3);

Variant callBus(GDBusConnection* bus, const char* method, GVariant* arguments, const char* answerType,
                GCancellable* cancellable) {
    return Variant(g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments,
        G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE, untilCancelled, cancellable, nullptr));
}

/// The name among those that a method of the bus lists.
QByteArray nameWithVersion(GDBusConnection* bus, const char* listing, const char* process,
                           GCancellable* cancellable) {
    const Variant names = callBus(bus, listing, nullptr, "(as)", cancellable);
    if (!names)
        return {};
    const Variant list(g_variant_get_child_value(names.get(), 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, list.get());
    const gchar* name = nullptr;
    QByteArray result;
    while (g_variant_iter_next(&iterator, "&s", &name)) {
        bool isNumber = false;
        (void)QByteArray(name).mid(static_cast<qsizetype>(qstrlen(process))).toInt(&isNumber);
        if (isNumber && g_str_has_prefix(name, process))
            result = name;
    }
    return result;
}

}  // namespace

QByteArray runningProcess(GDBusConnection* bus, const char* process, GCancellable* cancellable) {
    return nameWithVersion(bus, "ListNames", process, cancellable);
}

bool isResponding(const char* process, GCancellable* cancellable) {
    const Ref<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, nullptr));
    if (!bus)
        return true;
    QByteArray name = runningProcess(bus.get(), process, cancellable);
    const bool isRunning = !name.isEmpty();
    if (!isRunning)
        name = nameWithVersion(bus.get(), "ListActivatableNames", process, cancellable);
    if (name.isEmpty())
        return true;
    Error error;
    const Variant answer(g_dbus_connection_call_sync(
        bus.get(), name.constData(), "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
        G_DBUS_CALL_FLAGS_NONE, isRunning ? static_cast<int>(longestPing.count()) : untilCancelled,
        cancellable, error.out()));
    // Any other error is an answer.
    return answer ||
           !(error.is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT) || error.is(G_IO_ERROR, G_IO_ERROR_CANCELLED));
}

}  // namespace kestrant::evolution
