// The current channel: parses the DTV service's reports, informs the listeners, and answers the browser's queries.
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/lexical_cast.hpp>

#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "browser_log.h"
#include "cut_to_16_bits.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;

}  // namespace

void BrowserDVBService::updateCurrentChannelInfo(const std::string& info) {
    std::atomic<int>* const members[] = {&onid, &tsid, &sid};
    for (std::atomic<int>* const member : members) {
        member->store(-1, std::memory_order_relaxed);
    }
    std::vector<std::string> parts;
    boost::split(parts, info, boost::is_any_of(":"));
    if (parts.size() != std::size(members)) {
        return;
    }
    try {
        for (std::size_t index = 0; index < parts.size(); ++index) {
            if (!parts[index].empty()) {
                members[index]->store(boost::lexical_cast<int>(parts[index]), std::memory_order_relaxed);
            }
        }
    } catch (const boost::bad_lexical_cast&) {
        BLOG_TAGGED(blog::kFailure, "Cpmpute Current Channel Info Failed: [%s]\n", info.c_str());
    }
}

int BrowserDVBService::getCurrentChannelInfo(int& currentOnid, int& currentTsid, int& currentSid) {
    const int network = onid.load(std::memory_order_relaxed);
    const int stream = tsid.load(std::memory_order_relaxed);
    const int service = sid.load(std::memory_order_relaxed);
    if (network < 0 || stream < 0 || service < 0) {
        return -1;
    }
    currentOnid = network;
    currentTsid = stream;
    currentSid = service;
    return 0;
}

/// Uses the process's global locale on purpose: if that groups digits, so does this text.
std::string BrowserDVBService::getCurrentCCID() {
    std::string ccid = "ccid:";
    ccid += boost::lexical_cast<std::string>(onid.load(std::memory_order_relaxed));
    ccid += ":";
    ccid += boost::lexical_cast<std::string>(tsid.load(std::memory_order_relaxed));
    ccid += ":";
    ccid += boost::lexical_cast<std::string>(sid.load(std::memory_order_relaxed));
    return ccid;
}

std::string BrowserDVBService::getCurrentDsd() {
    std::string current = dsd.get();
    BLOG_TAGGED(blog::kOrdinary, "Called,Dsd:[%s]\n", current.c_str());
    return current;
}

int BrowserDVBService::onServiceChanged(frame::MsgIds&, const frame::TransportInfo&, const std::string& state,
                                        const std::string& service) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called,state:%s,service:%s.\n", state.c_str(), service.c_str());
    updateCurrentChannelInfo(service);
    BrowserDvbAPI::getInstance()->OnChannelChanged(state == "service_started", cutTo16Bits(onid), cutTo16Bits(tsid),
                                                   cutTo16Bits(sid));
    return 0;
}

int BrowserDVBService::onAcquireDtvServiceInfo(frame::MsgIds&, const frame::TransportInfo&,
                                               const std::string& channelInfo) {
    BLOG_PLAIN(blog::kOrdinary, "channelInfo:%s.\n", channelInfo.c_str());
    updateCurrentChannelInfo(channelInfo);
    BLOG_PLAIN(blog::kOrdinary, "channel onid:%d, tsid:%d, sid:%d.\n", onid.load(std::memory_order_relaxed),
               tsid.load(std::memory_order_relaxed), sid.load(std::memory_order_relaxed));
    return 0;
}

}  // namespace velmora::dvbservice
