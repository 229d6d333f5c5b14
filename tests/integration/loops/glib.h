// The few declarations of GLib that docs/browser-guide.md uses, so that its code compiles without GLib.
#pragma once

using gboolean = int;
using guint = unsigned int;
using gint = int;
using gpointer = void*;
struct GMainContext;
struct GSource;
#define FALSE 0
#define G_PRIORITY_DEFAULT 0

extern "C" {
GSource* g_idle_source_new(void);
void g_source_set_priority(GSource* source, gint priority);
void g_source_set_callback(GSource* source, gboolean (*callback)(gpointer data), gpointer data,
                           void (*freeData)(gpointer data));
guint g_source_attach(GSource* source, GMainContext* context);
void g_source_unref(GSource* source);
}
