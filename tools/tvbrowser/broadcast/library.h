// Loads the library by path, as a browser does: with dlopen, its symbols visible to nobody else.
// Threads: one.
// Blocks:  while loading.
// Fails:   with a text that names the library and the reason.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "dvb_ait_section_interface.h"
#include "dvb_api_interface.h"
#include "dvb_section_interface.h"

namespace velmora::dvbservice {
class BrowserAITCatcher;
}

namespace tvbrowser {

/// The catcher's operations. The library exports them by their mangled names.
struct AitCatcher {
    using Update = int (*)(velmora::dvbservice::BrowserAITCatcher*, std::uint16_t, std::uint16_t, std::uint16_t,
                           std::uint16_t);
    using UpdateAit = int (*)(velmora::dvbservice::BrowserAITCatcher*, std::string);

    velmora::dvbservice::BrowserAITCatcher* catcher = nullptr;
    Update updateCurrentChannelInfo = nullptr;
    UpdateAit updateAIT = nullptr;
};

/// What the library offers. It stays loaded, and all of this stays valid, until the process ends.
struct Library {
    velmora::dtv::DvbAPIInterface* api = nullptr;
    velmora::dtv::DVBSectionInterface* filters = nullptr;
    velmora::dtv::DVBAITSectionInterface* ait = nullptr;
    AitCatcher catcher;
};

std::optional<Library> loadLibrary(const std::string& path, std::string& error);

}  // namespace tvbrowser
