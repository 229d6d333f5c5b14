// What belongs to the running application and ends with it.
// Threads: one.
// Blocks:  never.
#pragma once

#include <set>

#include "application.h"
#include "keyset.h"
#include "page_tune.h"

namespace tvbrowser {

struct ApplicationLife {
    RunningApplication application;
    Keyset keyset;
    std::set<unsigned int> keysDown = {};  ///< keys that the page saw go down
    bool reportsStart = false;             ///< it was started as a broadcast-related one
    bool hasReported = false;              ///< that it has started
    bool isByXmlAit = false;               ///< its entry point is known from an XML AIT
    bool isLoaded = false;
    bool hasRestarted = false;
    std::vector<std::string> otherUrls = {};  ///< to be tried when the page does not load
    PageTune tune = {};                       ///< while it is broadcast-independent
};

}  // namespace tvbrowser
