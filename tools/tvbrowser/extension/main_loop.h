// Passing work to the GLib main loop.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <glib.h>

#include <functional>
#include <utility>

namespace tvbrowser {

/// Runs the task in the default main loop, in the order of the calls. Never g_main_context_invoke(): before the loop
/// runs, that would run the task on the calling thread.
inline void postToMainLoop(std::function<void()> task) {
    using Task = std::function<void()>;
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);  // an idle source's own priority waits behind all drawing
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<Task*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Task(std::move(task)), [](gpointer data) { delete static_cast<Task*>(data); });
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

}  // namespace tvbrowser
