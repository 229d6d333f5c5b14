// Frames in shared memory.
#include "headless_view.h"

#include <wayland-server.h>
#include <wpe/fdo.h>
#include <wpe/unstable/fdo-shm.h>

#include <algorithm>
#include <ctime>
#include <stdexcept>

namespace tvbrowser {

namespace {

constexpr std::size_t kBytesOfPixel = 4;
constexpr unsigned int kMillisecondsOfFrame = 16;
constexpr std::uint32_t kMillisecondsOfSecond = 1000;
constexpr std::uint32_t kNanosecondsOfMillisecond = 1000000;

std::uint32_t milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(now.tv_sec) * kMillisecondsOfSecond +
           static_cast<std::uint32_t>(now.tv_nsec) / kNanosecondsOfMillisecond;
}

/// Copies the pixels of a buffer.
void copy(wl_shm_buffer* buffer, Frame& frame) {
    frame.width = static_cast<std::uint32_t>(wl_shm_buffer_get_width(buffer));
    frame.height = static_cast<std::uint32_t>(wl_shm_buffer_get_height(buffer));
    const auto stride = static_cast<std::size_t>(wl_shm_buffer_get_stride(buffer));
    const std::size_t row = frame.width * kBytesOfPixel;
    frame.pixels.resize(row * frame.height);
    wl_shm_buffer_begin_access(buffer);
    const auto* const pixels = static_cast<const std::uint8_t*>(wl_shm_buffer_get_data(buffer));
    for (std::size_t y = 0; y < frame.height; ++y) {
        std::copy_n(pixels + y * stride, row, frame.pixels.begin() + static_cast<std::ptrdiff_t>(y * row));
    }
    wl_shm_buffer_end_access(buffer);
}

}  // namespace

HeadlessView::HeadlessView(Screen& newScreen) : screen(&newScreen) {
    static const bool kIsReady = wpe_loader_init("libWPEBackend-fdo-1.0.so.1") && wpe_fdo_initialize_shm();
    if (!kIsReady) {
        throw std::runtime_error("the engine's backend cannot draw into memory");
    }
    static const wpe_view_backend_exportable_fdo_client kClient{nullptr, nullptr, onFrame, nullptr, nullptr};
    exportable = wpe_view_backend_exportable_fdo_create(&kClient, this, screen->width, screen->height);
    wpe_view_backend_add_activity_state(backend(), wpe_view_activity_state_visible | wpe_view_activity_state_in_window |
                                                       wpe_view_activity_state_focused);
}

HeadlessView::~HeadlessView() {
    if (nextFrame != 0) {
        g_source_remove(nextFrame);
    }
    wpe_view_backend_exportable_fdo_destroy(exportable);
}

wpe_view_backend* HeadlessView::backend() const {
    return wpe_view_backend_exportable_fdo_get_view_backend(exportable);
}

void HeadlessView::key(std::uint32_t keysym, std::uint32_t keycode, bool down) {
    wpe_input_keyboard_event event{milliseconds(), keysym, keycode, down, 0};
    wpe_view_backend_dispatch_keyboard_event(backend(), &event);
}

void HeadlessView::onFrame(void* view, wpe_fdo_shm_exported_buffer* buffer) {
    auto& self = *static_cast<HeadlessView*>(view);
    // The buffer goes back at once: it ends with the web process, which may die at any time.
    if (self.screen != nullptr) {
        copy(wpe_fdo_shm_exported_buffer_get_shm_buffer(buffer), self.screen->redraw());
    }
    wpe_view_backend_exportable_fdo_dispatch_release_shm_exported_buffer(self.exportable, buffer);
    if (self.nextFrame != 0) {
        g_source_remove(self.nextFrame);
    }
    // A set draws with its screen. Without a pause an animation would take a whole processor.
    self.nextFrame = g_timeout_add(kMillisecondsOfFrame, askForFrame, &self);
}

gboolean HeadlessView::askForFrame(gpointer view) {
    auto& self = *static_cast<HeadlessView*>(view);
    self.nextFrame = 0;
    wpe_view_backend_exportable_fdo_dispatch_frame_complete(self.exportable);
    return G_SOURCE_REMOVE;
}

}  // namespace tvbrowser
