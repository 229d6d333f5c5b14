// Screen: what the television shows: the newest frame of the page, or the colour of a set without a picture.
// Threads: the main one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tvbrowser {

struct Frame {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;  ///< blue, green, red, alpha; none if nothing has been drawn
};

class Screen {
public:
    Screen(std::uint32_t newWidth, std::uint32_t newHeight) : width(newWidth), height(newHeight) {}
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// The newest frame, to be drawn anew at once.
    Frame& redraw() {
        ++changes;
        return newest;
    }
    /// Another page comes: nothing is drawn of it yet.
    void clear();
    /// Whether the page is on the screen; at first it is not.
    void show(bool isShown);
    /// Whether a page is on the screen that has drawn itself.
    bool showsPage() const { return shown && !newest.pixels.empty(); }
    /// What the screen shows, for pngOf(). Where no page is, and where it is transparent, is the colour of a set
    /// without a picture.
    Frame frame() const;
    /// Another number whenever the screen may have changed.
    std::uint64_t version() const { return changes; }

    const std::uint32_t width;
    const std::uint32_t height;

private:
    Frame newest;
    std::uint64_t changes = 0;
    bool shown = false;
};

/// The frame as a PNG, over the colour of a set without a picture. On any thread; takes some ten milliseconds.
std::string pngOf(const Frame& frame);

}  // namespace tvbrowser
