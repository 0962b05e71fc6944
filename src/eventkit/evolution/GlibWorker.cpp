#include "eventkit/evolution/GlibWorker.h"

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
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(work));
    }
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer worker) -> gboolean {
            static_cast<GlibWorker*>(worker)->runNext();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(source, context_);
    g_source_unref(source);
}

void GlibWorker::runNext() {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex_);
        work = std::move(queue_.front());
        queue_.pop_front();
    }
    work();
}

}  // namespace kestrant::evolution
