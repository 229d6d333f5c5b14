// A picture is complete when the engine has drawn nothing new for a while.
#include "screenshot.h"

#include <utility>

namespace tvbrowser {

namespace {

constexpr guint kMillisecondsOfLook = 100;
constexpr unsigned int kQuietLooks = 10;  ///< one second
constexpr unsigned int kMostLooks = 200;  ///< 20 seconds, for pages that never rest

}  // namespace

FirstPicture::FirstPicture(const Television& newTelevision, std::function<void(bool)> newOnDrawn)
    : television(newTelevision),
      onDrawn(std::move(newOnDrawn)),
      timer(g_timeout_add(kMillisecondsOfLook, look, this)) {}

FirstPicture::~FirstPicture() {
    if (timer != 0) {
        g_source_remove(timer);
    }
}

gboolean FirstPicture::look(gpointer picture) {
    auto& self = *static_cast<FirstPicture*>(picture);
    const Screen& screen = self.television.screen();
    const bool quiet = screen.showsPage() && screen.version() == self.version;
    self.version = screen.version();
    self.quietLooks = quiet ? self.quietLooks + 1 : 0;
    if (self.quietLooks < kQuietLooks && ++self.looks < kMostLooks) {
        return G_SOURCE_CONTINUE;
    }
    self.timer = 0;
    self.onDrawn(screen.showsPage());
    return G_SOURCE_REMOVE;
}

}  // namespace tvbrowser
