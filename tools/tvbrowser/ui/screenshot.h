// FirstPicture: waits until an application is on the screen and has drawn itself.
// Threads: the main one.
// Blocks:  never.
// Fails:   tells after some seconds that nothing was drawn.
#pragma once

#include <functional>

#include "television.h"

namespace tvbrowser {

class FirstPicture {
public:
    /// `onDrawn` gets whether an application has drawn.
    FirstPicture(const Television& newTelevision, std::function<void(bool)> newOnDrawn);
    FirstPicture(const FirstPicture&) = delete;
    FirstPicture& operator=(const FirstPicture&) = delete;
    ~FirstPicture();

private:
    static gboolean look(gpointer picture);

    const Television& television;
    const std::function<void(bool)> onDrawn;
    std::uint64_t version = 0;
    unsigned int looks = 0;
    unsigned int quietLooks = 0;
    guint timer = 0;
};

}  // namespace tvbrowser
