// PNG by libpng's simplified interface.
#include "png_image.h"

#include <png.h>

namespace tvbrowser {

std::string pngOf(const Image& image) {
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    header.width = image.width;
    header.height = image.height;
    header.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    if (png_image_write_to_memory(&header, nullptr, &size, 0, image.rgb.data(), 0, nullptr) == 0) {
        return "";
    }
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&header, bytes.data(), &size, 0, image.rgb.data(), 0, nullptr) == 0) {
        return "";
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace tvbrowser
