// What belongs to the running application and ends with it.
// Threads: one.
// Blocks:  never.
#pragma once

#include <set>

#include "application.h"
#include "keyset.h"

namespace tvbrowser {

struct ApplicationLife {
    /// A tune that the page of a broadcast-independent application has asked for.
    enum class Tune { none, asked, done };

    RunningApplication application;
    Keyset keyset;
    std::set<unsigned int> keysDown = {};  ///< keys that the page saw go down
    bool reportsStart = false;             ///< it was started as a broadcast-related one
    bool hasReported = false;              ///< that it has started
    bool isLoaded = false;
    bool hasRestarted = false;
    Tune tune = Tune::none;
};

}  // namespace tvbrowser
