// Sections: filters of the library on a service of its own, which writes as many sections as are asked for.
// Threads: one asks; the sections come on the delivery thread.
// Blocks:  the constructor until the filters are open; take() until all sections are there.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "browser.h"
#include "countdown.h"
#include "peer.h"

namespace bench {

class Sections final : velmora::dtv::SectionFilterClient {
public:
    Sections(int cpuOfService, std::int64_t filters, std::size_t bytes)
        : service("answering_service", {std::to_string(cpuOfService), std::to_string(bytes)}) {
        waitForService();
        const unsigned char none = 0;
        for (std::int64_t count = 0; count < filters; ++count) {
            sessions.push_back(sectionApi().generateSessionName());
            if (!sectionApi().startSection(this, sessions.back(), 100, &none, &none, 0)) {
                std::fprintf(stderr, "bench: a filter does not open\n");
                std::exit(1);
            }
        }
    }
    Sections(const Sections&) = delete;
    Sections& operator=(const Sections&) = delete;
    ~Sections() {
        for (const std::string& session : sessions) {
            sectionApi().stopSection(this, session);
        }
    }

    void take(std::int64_t sections) {
        left = sections;
        dvbApi().sendPtsRequest(static_cast<std::uint32_t>(sections));
        allTaken.wait();
    }

private:
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        if (--left == 0) {
            allTaken.end();
        }
    }

    const Peer service;
    std::vector<std::string> sessions;
    std::int64_t left = 0;
    Countdown allTaken;
};

}  // namespace bench
