// HeadlessView: where the engine draws when there is no display: frames in shared memory, drawn without a GPU. It also
// takes the keys that the engine knows.
// Threads: the main one.
// Blocks:  never.
// Fails:   the constructor throws std::runtime_error when the engine cannot draw into memory.
#pragma once

#include <glib.h>
#include <wpe/wpe.h>

#include <cstdint>
#include <string>
#include <vector>

struct wpe_fdo_shm_exported_buffer;
struct wpe_view_backend_exportable_fdo;

namespace tvbrowser {

class HeadlessView {
public:
    struct Frame {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<std::uint8_t> pixels;  ///< blue, green, red, alpha; none if nothing has been drawn
    };

    HeadlessView(std::uint32_t newWidth, std::uint32_t newHeight);
    HeadlessView(const HeadlessView&) = delete;
    HeadlessView& operator=(const HeadlessView&) = delete;
    ~HeadlessView() = default;  // the engine's view owns the backend and ends it

    wpe_view_backend* backend() const;
    /// Ends the backend; for the engine's view, when it lets go of it.
    void end();
    /// A key goes down, or up. `keysym`: of XKB. `keycode`: of the hardware, as evdev numbers it, plus 8.
    void key(std::uint32_t keysym, std::uint32_t keycode, bool down);
    /// Whether the page is on the screen; at first it is not.
    void show(bool isShown) { shown = isShown; }
    /// The screen as a PNG. Where no page is, and where it is transparent, is the colour of a set without a picture.
    std::string png() const;
    /// How many frames have been drawn.
    std::uint64_t frames() const { return frameCount; }

private:
    static void onFrame(void* view, wpe_fdo_shm_exported_buffer* buffer);
    static gboolean askForFrame(gpointer view);

    const std::uint32_t width;
    const std::uint32_t height;
    wpe_view_backend_exportable_fdo* exportable = nullptr;
    Frame newest;
    std::uint64_t frameCount = 0;
    bool shown = false;
    guint nextFrame = 0;  ///< timer; 0 if the engine draws
};

}  // namespace tvbrowser
