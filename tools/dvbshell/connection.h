// Connection: whether the DTV service is there, and what this program has open there.
// The interface has no such question. An operation that changes nothing, the end of reports about an on-screen display
// layer that nobody follows, tells by its result whether it reached the service.
// Threads: one.
// Blocks:  await() until its end; the others never.
// Fails:   never. A service that ends and starts again between two looks is not noticed.
#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <string>

#include "dvb_api_interface.h"
#include "events.h"

namespace dvbshell {

class Connection {
public:
    explicit Connection(velmora::dtv::DvbAPIInterface& newApi) : api(newApi) {}

    /// Asks now.
    bool isThere();
    /// Whether the service is there before the time is over.
    bool await(std::chrono::milliseconds longest);
    /// Whether the last look found no service.
    bool isGone() const { return gone; }
    /// Looks from time to time, or `now`. A text when the service has gone or has come back, with what was lost.
    std::optional<std::string> news(bool now = false);

    /// Remembers what is open until the service goes: "OSD layer 3", "filter on PID 18".
    void open(const std::string& what) { opened.insert(what); }
    void close(const std::string& what);
    /// Forgets everything whose text begins so.
    void closeAll(const std::string& beginning);
    /// The same for a layer; no question uses a layer that is followed.
    void followLayer(std::uint32_t layer);
    void leaveLayer(std::uint32_t layer);

private:
    velmora::dtv::DvbAPIInterface& api;
    bool gone = false;
    Clock::time_point nextLook{};
    std::multiset<std::string> opened;
    std::set<std::uint32_t> layers;
    std::string lost;
};

/// "no DTV service answers; start one: ...".
std::string noServiceText();

}  // namespace dvbshell
