// HeadlessView: where the engine draws a page when there is no display: frames in shared memory, drawn without a GPU.
// It also takes the keys that the engine knows.
// Threads: the main one.
// Blocks:  never.
// Fails:   the constructor throws std::runtime_error when the engine cannot draw into memory.
#pragma once

#include <glib.h>
#include <wpe/wpe.h>

#include <cstdint>

#include "screen.h"

struct wpe_fdo_shm_exported_buffer;
struct wpe_view_backend_exportable_fdo;

namespace tvbrowser {

/// The engine's view of the page owns it, and deletes it when it ends.
class HeadlessView {
public:
    explicit HeadlessView(Screen& newScreen);
    HeadlessView(const HeadlessView&) = delete;
    HeadlessView& operator=(const HeadlessView&) = delete;
    ~HeadlessView();

    wpe_view_backend* backend() const;
    /// The screen is not this page's any more.
    void leaveScreen() { screen = nullptr; }
    /// A key goes down, or up. `keysym`: of XKB. `keycode`: of the hardware, as evdev numbers it, plus 8.
    void key(std::uint32_t keysym, std::uint32_t keycode, bool down);

private:
    static void onFrame(void* view, wpe_fdo_shm_exported_buffer* buffer);
    static gboolean askForFrame(gpointer view);

    Screen* screen;
    wpe_view_backend_exportable_fdo* exportable = nullptr;
    guint nextFrame = 0;  ///< timer; 0 if the engine draws
};

}  // namespace tvbrowser
