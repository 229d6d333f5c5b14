// The library as a browser uses it, in a run directory of its own.
#pragma once

#include <dvb_api_interface.h>
#include <dvb_section_interface.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace bench {

/// Made at the first call, which must come before the first use of the library. The peers get the same environment.
inline const std::string& runDirectory() {
    static const std::string theOne = [] {
        char name[] = "/tmp/dtv-bench-XXXXXX";
        if (mkdtemp(name) == nullptr) {
            std::perror("bench: a run directory");
            std::exit(1);
        }
        setenv("DTV_RUN_DIR", name, 1);
        setenv("DTV_LOG_FILE", (std::string(name) + "/log").c_str(), 1);
        return std::string(name);
    }();
    return theOne;
}

template <typename Interface>
Interface& interfaceOf(const char* name) {
    velmora::dtv::IDTVUnknown* found = nullptr;
    if (DTVAPI_QueryInterface(name, &found) != 0) {
        std::fprintf(stderr, "bench: the library has no %s\n", name);
        std::exit(1);
    }
    return *static_cast<Interface*>(found);
}

inline velmora::dtv::DvbAPIInterface& dvbApi() {
    static auto& api = interfaceOf<velmora::dtv::DvbAPIInterface>("DvbAPIInterface");
    return api;
}
inline velmora::dtv::DVBSectionInterface& sectionApi() {
    static auto& api = interfaceOf<velmora::dtv::DVBSectionInterface>("SectionFilterAPI");
    return api;
}

/// Until the service takes commands.
inline void waitForService() {
    while (dvbApi().startOSDDetection(0) != 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace bench
