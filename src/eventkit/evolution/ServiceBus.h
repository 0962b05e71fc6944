#pragma once

#include "eventkit/evolution/Glib.h"

#include <QByteArray>

#include <memory>

namespace kestrant::evolution {

// Processes of the desktop's calendar service on the session's bus. Thread: any; blocks until the cancellable
// ends it.

struct UnrefVariant {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, UnrefVariant>;

/// Waits for as long as the caller's cancellable allows.
inline constexpr int untilCancelled = G_MAXINT;

/// Names of processes; on the bus they go on with the version of the service's interface.
inline constexpr const char* registryProcess = "org.gnome.evolution.dataserver.Sources";
inline constexpr const char* calendarProcess = "org.gnome.evolution.dataserver.Calendar";

/// The name of a process with its version; empty where no such process runs.
[[nodiscard]] QByteArray runningProcess(GDBusConnection* bus, const char* process, GCancellable* cancellable);

/// False where the process runs and hangs, or is started and does not come up in time. One that does not run
/// may take as long to start as the cancellable allows. True where nothing is known of such a process: the
/// calls that follow say what is wrong.
[[nodiscard]] bool isResponding(const char* process, GCancellable* cancellable);

}  // namespace kestrant::evolution
