// Opens and closes filters: sends the request to the DTV service and waits for its confirmation.
#include <chrono>
#include <ctime>

#include "browser_dvb_service.h"
#include "browser_log.h"
#include "handshake_clock.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;
constexpr double kLongestWaitSeconds = 10.0;
constexpr std::chrono::seconds kLongestSleep{10};

}  // namespace

double monotonicSeconds() {
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
        return -1.0;
    }
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::atomic<double (*)()> handshakeClock{&monotonicSeconds};

int BrowserDVBService::startSection(dtv::SectionFilterClient* client, const std::string& session, unsigned int pid,
                                    const unsigned char* mask, const unsigned char* maskBits, int length) {
    TRACE_SCOPE();
    createIPCChannelForSectionData();
    const boost::shared_ptr<FilterParameter> filter =
        FilterParameter::create(client, session, pid, mask, maskBits, length);
    saveFilter(filter);
    registerClient(client);
    BLOG_TAGGED(blog::kOrdinary, "Open Filter: %p, %d,  %s\n", static_cast<void*>(client), static_cast<int>(pid),
                session.c_str());
    lo::browserdvbservice::OpenFilterMatchMask_t matchMask;
    matchMask.mask = filter->mask();
    matchMask.maskBits = filter->mask_bits();
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    Command(*this)->cmdFilterOpen(ids, transport, session, filter->pid(), matchMask);
    // After a failure the record and the client stay: only stopSection() removes them.
    if (!waitForStartSectionResult(pid, session)) {
        return 1;
    }
    BLOG_TAGGED(blog::kOrdinary, "startSection no error!\n");
    return 0;
}

/// Removes the record first, so that sections on their way to it are dropped. Then unregisters the client if it owns no
/// other filter.
void BrowserDVBService::releaseFilter(const char* function, dtv::SectionFilterClient* client,
                                      const boost::shared_ptr<FilterParameter>& filter) {
    removeFilter(filter);
    // Written when the client was removed, the opposite of its text, on purpose: log readers rely on this line.
    if (unRegisterClient(client)) {
        BLOG_TAGGED_AS(blog::kOrdinary, function, "client is still inuse %p\n", static_cast<void*>(client));
    }
}

int BrowserDVBService::stopSection(dtv::SectionFilterClient* client, const std::string& session) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, " Closing  Filter: %p, %s\n", static_cast<void*>(client), session.c_str());
    const boost::shared_ptr<FilterParameter> filter = findFilterParameterBySessionName(session);
    if (!filter) {
        BLOG_TAGGED(blog::kFailure, "Invalid Filter Session: %s for %p\n", session.c_str(), static_cast<void*>(client));
        unRegisterClient(client);
        return -1;
    }
    releaseFilter(__func__, client, filter);
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    Command(*this)->cmdFilterClose(ids, transport, session);
    if (!waitForStopSectionResult(session)) {
        return 1;
    }
    BLOG_TAGGED(blog::kOrdinary, "stopSection no error!\n");
    return 0;
}

int BrowserDVBService::startPMTRequest(dtv::SectionFilterClient* client, const std::string& session,
                                       unsigned int serviceId) {
    TRACE_SCOPE();
    createIPCChannelForSectionData();
    saveFilter(FilterParameter::create(client, session, serviceId, nullptr, nullptr, 0));
    registerClient(client);
    BLOG_TAGGED(blog::kOrdinary, "Start PMT Filter for %p ,sid:%d, session:%s \n", static_cast<void*>(client),
                static_cast<int>(serviceId), session.c_str());
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    Command(*this)->cmdStartPMTRequest(ids, transport, session, serviceId);
    return 0;
}

int BrowserDVBService::stopPMTRequest(dtv::SectionFilterClient* client, const std::string& session) {
    TRACE_SCOPE();
    if (client == nullptr) {
        BLOG_TAGGED(blog::kFailure, "Invalid Client\n");
        return -1;
    }
    if (session.empty()) {
        BLOG_TAGGED(blog::kFailure, "Invalid Session\n");
        return -1;
    }
    BLOG_TAGGED(blog::kOrdinary, "Stop PMT Filter: %p, %s\n", static_cast<void*>(client), session.c_str());
    const boost::shared_ptr<FilterParameter> filter = findFilterParameterBySessionName(session);
    if (!filter) {
        BLOG_TAGGED(blog::kFailure, " Filter For Session Not Found: %s for %p\n", session.c_str(),
                    static_cast<void*>(client));
        unRegisterClient(client);
        return -1;
    }
    releaseFilter(__func__, client, filter);
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    Command(*this)->cmdStopPMTRequest(ids, transport, session);
    return 0;
}

int BrowserDVBService::onBrowserOpenFilterConf(frame::MsgIds&, const frame::TransportInfo&, unsigned int pid,
                                               const std::string& session, short result) {
    TRACE_SCOPE();
    const locks::Lock lock(handshakeLock);
    filterResults.push_back({kOpenConfirmation, session, pid, result});
    BLOG_TAGGED(blog::kOrdinary, "Filter Open Result :  %s, %d, size:%d\n", session.c_str(), result,
                static_cast<int>(filterResults.size()));
    handshakeCondition.notify_all();
    return 0;
}

int BrowserDVBService::onBrowserOCloseFilterConf(frame::MsgIds&, const frame::TransportInfo&,
                                                 const std::string& session, short result) {
    TRACE_SCOPE();
    const locks::Lock lock(handshakeLock);
    filterResults.push_back({kCloseConfirmation, session, kNoPid, result});
    BLOG_TAGGED(blog::kOrdinary, "Filter Close Result :  %s, %d, size:%d\n", session.c_str(), result,
                static_cast<int>(filterResults.size()));
    handshakeCondition.notify_all();
    return 0;
}

int BrowserDVBService::onFilterOpened(frame::MsgIds&, const frame::TransportInfo&, const std::string& session,
                                      const std::string& newDataSlot) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "Filter Opened : %s\n", session.c_str());
    const boost::shared_ptr<FilterParameter> filter = findFilterParameterBySessionName(session);
    if (!filter) {
        BLOG_PLAIN(blog::kFailure, "Filter Not Found.\n");
    } else if (newDataSlot.empty()) {
        BLOG_PLAIN(blog::kFailure, "Filter Open Failed.\n");
        filter->setFailed();
    } else {
        filter->setDataSlot(newDataSlot);
    }
    return 0;
}

int BrowserDVBService::onFilterClosed(frame::MsgIds&, const frame::TransportInfo&, const std::string& session) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "Filter Closed: %s\n", session.c_str());
    const boost::shared_ptr<FilterParameter> filter = findFilterParameterBySessionName(session);
    if (!filter) {
        BLOG_TAGGED(blog::kFailure, "Unknown Filter closed: %s\n", session.c_str());
    } else {
        filter->closed();
    }
    return 0;
}

/// Waits for the first confirmation that `matches` and removes it from the queue. True when it reports success. A
/// confirmation that arrives after its wait gave up stays in the queue forever.
template <typename Matches>
bool BrowserDVBService::waitForResult(const char* function, const std::string& session, Matches matches) {
    double (*const clock)() = handshakeClock.load();
    locks::Lock lock(handshakeLock);
    const double begin = clock();
    while (true) {
        for (auto entry = filterResults.begin(); entry != filterResults.end(); ++entry) {
            if (entry->sessionName == session && matches(*entry)) {
                const short result = entry->result;
                filterResults.erase(entry);
                return result == 0;
            }
        }
        // If the clock cannot be read, both readings are equal and the wait never gives up.
        if (clock() - begin > kLongestWaitSeconds) {
            break;
        }
        handshakeCondition.wait_until(lock.forWaiting(), std::chrono::system_clock::now() + kLongestSleep);
    }
    BLOG_TAGGED_AS(blog::kFailure, function, "Wait response timeout for %s,  assume failed.\n", session.c_str());
    return false;
}

bool BrowserDVBService::waitForStartSectionResult(unsigned int pid, const std::string& session) {
    TRACE_SCOPE();
    return waitForResult(__func__, session, [pid](const _FilterResult& entry) {
        return entry.type == kOpenConfirmation && entry.pid == pid;
    });
}

bool BrowserDVBService::waitForStopSectionResult(const std::string& session) {
    TRACE_SCOPE();
    return waitForResult(__func__, session,
                         [](const _FilterResult& entry) { return entry.type == kCloseConfirmation; });
}

}  // namespace velmora::dvbservice
