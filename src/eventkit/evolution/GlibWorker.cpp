#include "eventkit/evolution/GlibWorker.h"

#include <functional>
#include <utility>

namespace kestrant::evolution {

GlibWorker::GlibWorker()
    : context_(g_main_context_new())
    , loop_(g_main_loop_new(context_, FALSE))
    , thread_([this] {
        g_main_context_push_thread_default(context_);
        g_main_loop_run(loop_);
        g_main_context_pop_thread_default(context_);
    }) {}

GlibWorker::~GlibWorker() {
    run([this] { g_main_loop_quit(loop_); });
    thread_.join();
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
}

void GlibWorker::run(std::function<void()> work) {
    using Work = std::function<void()>;
    // Sources of one priority are served in the order in which they were attached.
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<Work*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Work(std::move(work)), [](gpointer data) { delete static_cast<Work*>(data); });
    g_source_attach(source, context_);
    g_source_unref(source);
}

}  // namespace kestrant::evolution
