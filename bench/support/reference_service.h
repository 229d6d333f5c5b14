// ReferenceService: dtvserviced on tsmake's sample, which takes commands as fast as they come.
// Blocks:  the constructor until the sample is written.
#pragma once

#include <cstdlib>
#include <string>

#include "browser.h"
#include "peer.h"

namespace bench {

class ReferenceService {
public:
    ReferenceService() : process((setenv("DTV_CLIENT_RATE", "0", 1), "dtvserviced"), {"--input", broadcastPath()}) {}

private:
    /// The sample, as a file.
    static std::string broadcastPath() {
        std::string path = runDirectory() + "/sample.ts";
        if (Peer("tsmake", {path}).wait() != 0) {
            std::exit(1);
        }
        return path;
    }

    const Peer process;
};

}  // namespace bench
