// Commands to the DTV service: each operation converts its arguments, sends one command and writes its line. A line
// that shows no result is written before the send.
#include "browser_dvb_service.h"
#include "browser_log.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

using lo::browserdvbservice::ApplicationStartStatus;
using lo::browserdvbservice::ComponentType;
using lo::browserdvbservice::OpappInstallStatus;
using lo::browserdvbservice::OpappType;
using lo::browserdvbservice::ServiceInterface;
using lo::browserdvbservice::TuneInfoChannel;
using lo::browserdvbservice::TuneInfoComponent;

namespace {

constexpr const char* kBlogTag = kTagService;

/// OIPF's channel idType for a channel given by a delivery system descriptor (OIPF DAE, clause 7.13.11).
constexpr unsigned int kIdTypeSiDirect = 13;

OpappType toOpappType(int type) {
    if (type != 0 && type != 1) {
        BLOG_TAGGED(blog::kFailure, "Invalid opapp type:%d.\n", type);
        return lo::browserdvbservice::OpappType0;
    }
    return static_cast<OpappType>(type);
}

OpappInstallStatus toOpappInstallStatus(int status) {
    if (status != 0 && status != 1) {
        BLOG_TAGGED(blog::kFailure, "Invalid install status:%d.\n", status);
        return lo::browserdvbservice::OpappInstallStatus0;
    }
    return static_cast<OpappInstallStatus>(status);
}

}  // namespace

template <typename Send>
int BrowserDVBService::sendUnguarded(Send send) {
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    const Command command(*this);
    return send(*command.get(), ids, transport);
}

/// For operations that check the service interface and log a failed send. `send` returns the command's result.
template <typename Send>
void BrowserDVBService::sendGuarded(const char* function, Send send) {
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    const Command command(*this);
    ServiceInterface* const service = command.get();
    if (service == nullptr) {
        BLOG_TAGGED_AS(blog::kFailure, function, "Can't get browser dvb service\n");
        return;
    }
    const int result = send(*service, ids, transport);
    if (result != 0) {
        BLOG_TAGGED_AS(blog::kFailure, function, "Failed. %d\n", result);
    }
}

void BrowserDVBService::tuneToService(int idType, int toOnid, int toTsid, int toSid, int flags) {
    TRACE_SCOPE();
    const char* const function = __func__;
    sendGuarded(function, [&](auto& service, auto& ids, auto& transport) {
        BLOG_TAGGED_AS(blog::kOrdinary, function, "TunerToService:{%d,%d:%d:%d}\n", idType, toOnid, toTsid, toSid);
        TuneInfoChannel channel;
        channel.idType = static_cast<unsigned int>(idType);
        channel.onid = static_cast<unsigned int>(toOnid);
        channel.tsid = static_cast<unsigned int>(toTsid);
        channel.sid = static_cast<unsigned int>(toSid);
        channel.flags = static_cast<unsigned int>(flags);
        const int result = service.cmdTuneToService(ids, transport, channel);
        if (result == 0) {
            pmtServiceId.store(toSid, std::memory_order_relaxed);
            dsd.set("");
        }
        return result;
    });
}

void BrowserDVBService::tuneToService(const std::string& toDsd, int toSid, int flags) {
    TRACE_SCOPE();
    const char* const function = __func__;
    sendGuarded(function, [&](auto& service, auto& ids, auto& transport) {
        BLOG_TAGGED_AS(blog::kOrdinary, function, "TunerToService:{ dsd len:%d,sid:%d}\n",
                       static_cast<int>(toDsd.size()), toSid);
        TuneInfoChannel channel;
        channel.idType = kIdTypeSiDirect;
        channel.dsd = toDsd;
        channel.sid = static_cast<unsigned int>(toSid);
        channel.flags = static_cast<unsigned int>(flags);
        const int result = service.cmdTuneToService(ids, transport, channel);
        // The last tuned service_id stays unchanged: only tunes by triplet set it.
        if (result == 0) {
            dsd.set(toDsd);
        }
        return result;
    });
}

void BrowserDVBService::tuneToComponent(int first, int second, int third) {
    TRACE_SCOPE();
    const char* const function = __func__;
    sendGuarded(function, [&](auto& service, auto& ids, auto& transport) {
        BLOG_TAGGED_AS(blog::kOrdinary, function, "Tuner to Component: %d,%d,%d\n", first, second, third);
        TuneInfoComponent component;
        component.first = static_cast<unsigned int>(first);
        component.second = static_cast<unsigned int>(second);
        component.third = static_cast<unsigned int>(third);
        return service.cmdTuneToComponent(ids, transport, component);
    });
}

void BrowserDVBService::selectComponent(int type) {
    TRACE_SCOPE();
    sendGuarded(__func__, [type](auto& service, auto& ids, auto& transport) {
        return service.cmdSelectComponent(ids, transport, static_cast<ComponentType>(type));
    });
}

void BrowserDVBService::unselectComponent(int type) {
    TRACE_SCOPE();
    sendGuarded(__func__, [type](auto& service, auto& ids, auto& transport) {
        return service.cmdUnselectComponent(ids, transport, static_cast<ComponentType>(type));
    });
}

void BrowserDVBService::setAudioSource(unsigned int session, std::string source) {
    TRACE_SCOPE();
    sendGuarded(__func__, [&](auto& service, auto& ids, auto& transport) {
        return service.cmdSetAudioSource(ids, transport, session, source);
    });
}

int BrowserDVBService::setAudioSourceSync(const std::string& source) {
    TRACE_SCOPE();
    locks::Lock lock(audioSourceLock);
    ++audioSourceSession;
    BLOG_TAGGED(blog::kOrdinary, "set audio source, session %d\n", static_cast<int>(audioSourceSession));
    setAudioSource(audioSourceSession, source);
    // A single wait: the first report ends it, even after a failed send. An overlapping request has already incremented
    // the session, so an answer to the earlier request makes both fail.
    audioSourceCondition.wait(lock.forWaiting());
    if (audioSourceFinishedSession != audioSourceSession || audioSourceResult != 0) {
        BLOG_TAGGED(blog::kFailure, "set audio source failed, session %d, result %d\n",
                    static_cast<int>(audioSourceFinishedSession), audioSourceResult);
    } else {
        BLOG_TAGGED(blog::kOrdinary, "set audio source successfully, session %d\n",
                    static_cast<int>(audioSourceFinishedSession));
    }
    return audioSourceResult;
}

void BrowserDVBService::triggerAitRestart() {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    sendUnguarded(
        [](auto& service, auto& ids, auto& transport) { return service.cmdTriggerAitReparse(ids, transport); });
}

void BrowserDVBService::notifyMwhbStart() {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "notify tvmain mwhb is started.\n");
    sendUnguarded([](auto& service, auto& ids, auto& transport) { return service.cmdSendPMTCache(ids, transport); });
}

int BrowserDVBService::sendApplicationStartStatus(ApplicationStartStatus status) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "application start status %d.\n", static_cast<int>(status));
    sendUnguarded([status](auto& service, auto& ids, auto& transport) {
        return service.cmdHandleHbbtvStatus(ids, transport, static_cast<int>(status));
    });
    return 0;
}

void BrowserDVBService::TriggerServiceInfoAcquire() {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    sendUnguarded(
        [](auto& service, auto& ids, auto& transport) { return service.cmdTriggerServiceInfoAcquire(ids, transport); });
}

void BrowserDVBService::vbStartDtvInfoRequest() {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    sendUnguarded([](auto& service, auto& ids, auto& transport) { return service.cmdDtvInfoRequest(ids, transport); });
}

int BrowserDVBService::mountDsmcc(unsigned int request, unsigned short ofOnid, unsigned short ofTsid,
                                  unsigned short ofSid, short componentTag) {
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    return sendUnguarded([=](auto& service, auto& ids, auto& transport) {
        return service.cmdMountDsmcc(ids, transport, request, ofOnid, ofTsid, ofSid, componentTag);
    });
}

bool BrowserDVBService::addStreamEventListener(unsigned int request, unsigned short ofOnid, unsigned short ofTsid,
                                               unsigned short ofSid, short componentTag, std::string objectPath,
                                               std::string eventName) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    return sendUnguarded([&](auto& service, auto& ids, auto& transport) {
               return service.cmdAddStreamEventListener(ids, transport, request, ofOnid, ofTsid, ofSid, componentTag,
                                                        objectPath, eventName);
           }) == 0;
}

bool BrowserDVBService::removeStreamEventListener(unsigned int request, unsigned short ofOnid, unsigned short ofTsid,
                                                  unsigned short ofSid, short componentTag, std::string objectPath,
                                                  std::string eventName) {
    TRACE_SCOPE();
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    return sendUnguarded([&](auto& service, auto& ids, auto& transport) {
               return service.cmdRemoveStreamEventListener(ids, transport, request, ofOnid, ofTsid, ofSid, componentTag,
                                                           objectPath, eventName);
           }) == 0;
}

int BrowserDVBService::sendPtsRequest(unsigned int request) {
    TRACE_SCOPE();
    const int result = sendUnguarded([request](auto& service, auto& ids, auto& transport) {
        return service.cmdSendPtsRequest(ids, transport, request);
    });
    BLOG_TAGGED(blog::kOrdinary, "send pts request res: %d\n", result);
    return result;
}

int BrowserDVBService::startTemiTimelineRequest(unsigned int first, unsigned int second, unsigned int third) {
    TRACE_SCOPE();
    const int result = sendUnguarded([=](auto& service, auto& ids, auto& transport) {
        return service.cmdStartTemiTimelineRequest(ids, transport, first, second, third);
    });
    BLOG_TAGGED(blog::kOrdinary, "startTemiTimelineRequest request res: %d\n", result);
    return result;
}

int BrowserDVBService::stopTemiTimelineRequest() {
    TRACE_SCOPE();
    const int result = sendUnguarded(
        [](auto& service, auto& ids, auto& transport) { return service.cmdStopTemiTimelineRequest(ids, transport); });
    BLOG_TAGGED(blog::kOrdinary, "stopTemiTimelineRequest request res: %d\n", result);
    return result;
}

int BrowserDVBService::startOSDDetection(unsigned int layer) {
    TRACE_SCOPE();
    const int result = sendUnguarded([layer](auto& service, auto& ids, auto& transport) {
        return service.cmdStartOSDDetection(ids, transport, layer);
    });
    BLOG_TAGGED(blog::kOrdinary, "start OSD Detection res: %d\n", result);
    return result;
}

int BrowserDVBService::stopOSDDetection(unsigned int layer) {
    TRACE_SCOPE();
    const int result = sendUnguarded([layer](auto& service, auto& ids, auto& transport) {
        return service.cmdStopOSDDetection(ids, transport, layer);
    });
    // Uses the words of the start request on purpose: log readers rely on them.
    BLOG_TAGGED(blog::kOrdinary, "start OSD Detection res: %d\n", result);
    return result;
}

int BrowserDVBService::sendDrmMessage(unsigned long long session, unsigned short caSystemId, unsigned short second,
                                      std::string firstText, std::string secondText) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "session id = %llu, ca system id = %u\n", session,
                static_cast<unsigned int>(caSystemId));
    const int result = sendUnguarded([&](auto& service, auto& ids, auto& transport) {
        return service.cmdSendDrmMessage(ids, transport, session, caSystemId, second, firstText, secondText);
    });
    BLOG_TAGGED(blog::kOrdinary, "send Drm message res: %d\n", result);
    return result;
}

int BrowserDVBService::connectCa(unsigned long long session) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "connect CA, session is %llu\n", session);
    return sendUnguarded([session](auto& service, auto& ids, auto& transport) {
        return service.cmdCaDrmRequestConnect(ids, transport, session);
    });
}

int BrowserDVBService::disconnectCa(unsigned short slot) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "disconnect CA, slot id is %d\n", slot);
    return sendUnguarded([slot](auto& service, auto& ids, auto& transport) {
        return service.cmdCaDrmRequestDisconnect(ids, transport, slot);
    });
}

int BrowserDVBService::sendOpAppInstallStatus(int type, int status) {
    TRACE_SCOPE();
    BLOG_TAGGED(blog::kOrdinary, "opappType:%d, installStatus:%d.\n", type, status);
    const OpappType opappType = toOpappType(type);
    const OpappInstallStatus installStatus = toOpappInstallStatus(status);
    return sendUnguarded([=](auto& service, auto& ids, auto& transport) {
        return service.cmdSendOpAppInstallStatus(ids, transport, opappType, installStatus);
    });
}

}  // namespace velmora::dvbservice
