// Frames in shared memory.
#include "headless_view.h"

#include <wayland-server.h>
#include <wpe/fdo.h>
#include <wpe/unstable/fdo-shm.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <stdexcept>

#include "png_image.h"

namespace tvbrowser {

namespace {

constexpr std::array<unsigned int, 3> kNoPicture{0x10, 0x18, 0x20};
constexpr unsigned int kOpaque = 255;
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

/// Appends a pixel of the engine's, blue first and premultiplied, over the set's empty picture.
void append(std::vector<std::uint8_t>& rgb, const std::uint8_t* pixel) {
    const unsigned int alpha = pixel[3];
    for (std::size_t channel = 0; channel < kNoPicture.size(); ++channel) {
        const unsigned int below = kNoPicture[channel] * (kOpaque - alpha) / kOpaque;
        const unsigned int value = pixel[kNoPicture.size() - 1 - channel] + below;
        rgb.push_back(static_cast<std::uint8_t>(value > kOpaque ? kOpaque : value));
    }
}

/// Copies the pixels of a buffer.
void copy(wl_shm_buffer* buffer, HeadlessView::Frame& frame) {
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

HeadlessView::HeadlessView(std::uint32_t newWidth, std::uint32_t newHeight) : width(newWidth), height(newHeight) {
    if (!wpe_loader_init("libWPEBackend-fdo-1.0.so.1") || !wpe_fdo_initialize_shm()) {
        throw std::runtime_error("the engine's backend cannot draw into memory");
    }
    static const wpe_view_backend_exportable_fdo_client kClient{nullptr, nullptr, onFrame, nullptr, nullptr};
    exportable = wpe_view_backend_exportable_fdo_create(&kClient, this, width, height);
    wpe_view_backend_add_activity_state(backend(), wpe_view_activity_state_visible | wpe_view_activity_state_in_window |
                                                       wpe_view_activity_state_focused);
}

wpe_view_backend* HeadlessView::backend() const {
    return wpe_view_backend_exportable_fdo_get_view_backend(exportable);
}

void HeadlessView::end() {
    if (nextFrame != 0) {
        g_source_remove(nextFrame);
        nextFrame = 0;
    }
    wpe_view_backend_exportable_fdo_destroy(exportable);
    exportable = nullptr;
}

void HeadlessView::key(std::uint32_t keysym, std::uint32_t keycode, bool down) {
    wpe_input_keyboard_event event{milliseconds(), keysym, keycode, down, 0};
    wpe_view_backend_dispatch_keyboard_event(backend(), &event);
}

std::string HeadlessView::png() const {
    const bool isEmpty = !shown || newest.pixels.empty();
    Image image{isEmpty ? width : newest.width, isEmpty ? height : newest.height, {}};
    const std::size_t size = std::size_t{image.width} * image.height * kBytesOfPixel;
    const std::vector<std::uint8_t> transparent(isEmpty ? size : 0);
    const std::vector<std::uint8_t>& pixels = isEmpty ? transparent : newest.pixels;
    image.rgb.reserve(size);
    for (std::size_t at = 0; at < size; at += kBytesOfPixel) {
        append(image.rgb, pixels.data() + at);
    }
    return pngOf(image);
}

void HeadlessView::onFrame(void* view, wpe_fdo_shm_exported_buffer* buffer) {
    auto& self = *static_cast<HeadlessView*>(view);
    // The buffer goes back at once: it ends with the web process, which may die at any time.
    copy(wpe_fdo_shm_exported_buffer_get_shm_buffer(buffer), self.newest);
    wpe_view_backend_exportable_fdo_dispatch_release_shm_exported_buffer(self.exportable, buffer);
    ++self.frameCount;
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
