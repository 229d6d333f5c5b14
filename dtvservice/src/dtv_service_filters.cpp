// Commands for section filters and PMT requests.
#include "dtv_service.h"

namespace dtvservice {

namespace {

constexpr short kDone = 0;
constexpr short kRefused = -1;

}  // namespace

int DtvService::cmdUpdateIPCChannelNames(frame::MsgIds& ids, const frame::TransportInfo&,
                                         const std::string& sectionDataChannel, const std::string&,
                                         const std::string&) {
    loop.post([this, browser = ids.peer, name = sectionDataChannel] {
        if (!filters.setQueue(browser, name)) {
            BLOG_TAGGED_AS(blog::kFailure, "cmdUpdateIPCChannelNames", "browser %u: there is no queue %s\n", browser,
                           name.c_str());
        }
    });
    return 0;
}

int DtvService::cmdFilterOpen(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session,
                              unsigned int pid, const lo::browserdvbservice::OpenFilterMatchMask_t& matchMask) {
    loop.post([this, ids, session, pid, matchMask]() mutable {
        std::string error;
        const bool opened = filters.open(ids.peer, session, pid, matchMask.mask, matchMask.maskBits, error);
        if (!opened) {
            BLOG_TAGGED_AS(blog::kUnsupported, "cmdFilterOpen", "filter %s refused: %s\n", session.c_str(),
                           error.c_str());
        }
        events->onBrowserOpenFilterConf(ids, kNoTransport, pid, session, opened ? kDone : kRefused);
        events->onFilterOpened(ids, kNoTransport, session, opened ? session : std::string());
    });
    return 0;
}

int DtvService::cmdFilterClose(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session) {
    loop.post([this, ids, session]() mutable {
        const bool closed = filters.close(ids.peer, session);
        events->onBrowserOCloseFilterConf(ids, kNoTransport, session, closed ? kDone : kRefused);
        if (closed) {
            events->onFilterClosed(ids, kNoTransport, session);
        }
    });
    return 0;
}

int DtvService::cmdStartPMTRequest(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session,
                                   unsigned int serviceId) {
    loop.post([this, browser = ids.peer, session, serviceId] {
        filters.openPmt(browser, session, serviceId);
        const broadcast::Section known =
            current == nullptr ? broadcast::Section() : current->si.pmt(static_cast<std::uint16_t>(serviceId));
        if (!known.empty()) {
            filters.sendTo(browser, session, known);
        }
    });
    return 0;
}

int DtvService::cmdStopPMTRequest(frame::MsgIds& ids, const frame::TransportInfo&, const std::string& session) {
    loop.post([this, browser = ids.peer, session] { filters.close(browser, session); });
    return 0;
}

/// Sections go by the queue alone; there is no slot to free.
int DtvService::cmdDataReadFinished(frame::MsgIds&, const frame::TransportInfo&, const std::string&,
                                    const std::string&) {
    return 0;
}

}  // namespace dtvservice
