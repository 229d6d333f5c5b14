// PNG images of frames.
// Threads: any.
// Blocks:  never.
// Fails:   with an empty text, if the image cannot be encoded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tvbrowser {

struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;  ///< three bytes a pixel, rows without a gap
};

std::string pngOf(const Image& image);

}  // namespace tvbrowser
