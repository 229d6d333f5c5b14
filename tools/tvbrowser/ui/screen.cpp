// The screen, and its pictures.
#include "screen.h"

#include <array>

#include "png_image.h"

namespace tvbrowser {

namespace {

constexpr std::array<unsigned int, 3> kNoPicture{0x10, 0x18, 0x20};
constexpr unsigned int kOpaque = 255;
constexpr std::size_t kBytesOfPixel = 4;

/// Appends a pixel of the engine's, blue first and premultiplied, over the set's empty picture.
void append(std::vector<std::uint8_t>& rgb, const std::uint8_t* pixel) {
    const unsigned int alpha = pixel[3];
    for (std::size_t channel = 0; channel < kNoPicture.size(); ++channel) {
        const unsigned int below = kNoPicture[channel] * (kOpaque - alpha) / kOpaque;
        const unsigned int value = pixel[kNoPicture.size() - 1 - channel] + below;
        rgb.push_back(static_cast<std::uint8_t>(value > kOpaque ? kOpaque : value));
    }
}

}  // namespace

void Screen::clear() {
    newest = {};
    ++changes;
}

void Screen::show(bool isShown) {
    shown = isShown;
    ++changes;
}

Frame Screen::frame() const {
    if (showsPage()) {
        return newest;
    }
    return {width, height, std::vector<std::uint8_t>(std::size_t{width} * height * kBytesOfPixel)};
}

std::string pngOf(const Frame& frame) {
    Image image{frame.width, frame.height, {}};
    image.rgb.reserve(std::size_t{frame.width} * frame.height * kNoPicture.size());
    for (std::size_t at = 0; at < frame.pixels.size(); at += kBytesOfPixel) {
        append(image.rgb, frame.pixels.data() + at);
    }
    return pngOf(image);
}

}  // namespace tvbrowser
