// The DVB API's commands and queries: each forwards to the service object and adds nothing but the lines written here.
#include "browser_dvb_apis.h"

#include "browser_dvb_service.h"
#include "browser_log.h"
#include "singleton.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagBrowser;

}  // namespace

BrowserDvbAPI::BrowserDvbAPI() {
    BLOG_TAGGED(blog::kOrdinary, "called.\n");
}

BrowserDvbAPI::~BrowserDvbAPI() = default;

BrowserDvbAPI* BrowserDvbAPI::GetInstance() {
    return base::Singleton<BrowserDvbAPI>::get();
}

BrowserDvbAPI* BrowserDvbAPI::getInstance() {
    return GetInstance();
}

void BrowserDvbAPI::AddRef() {}

void BrowserDvbAPI::Release() {}

std::string BrowserDvbAPI::name() {
    return "DvbAPIInterface";
}

int BrowserDvbAPI::getCurrentChannelInfo(int& onid, int& tsid, int& sid) {
    return BrowserDVBService::getInstance()->getCurrentChannelInfo(onid, tsid, sid);
}

std::string BrowserDvbAPI::getCurrentCCID() {
    return BrowserDVBService::getInstance()->getCurrentCCID();
}

std::string BrowserDvbAPI::getCurrentDsd() {
    return BrowserDVBService::getInstance()->getCurrentDsd();
}

// The status counts failures: 1 says that the application failed to start, 0 that it started.
int BrowserDvbAPI::sendApplicationStartedFailed() {
    return BrowserDVBService::getInstance()->sendApplicationStartStatus(lo::browserdvbservice::ApplicationStartFailed);
}

int BrowserDvbAPI::sendApplicationStartedSucceeded() {
    return BrowserDVBService::getInstance()->sendApplicationStartStatus(lo::browserdvbservice::ApplicationStarted);
}

void BrowserDvbAPI::triggerAitRestart() {
    BrowserDVBService::getInstance()->triggerAitRestart();
}

void BrowserDvbAPI::tuneToService(int idType, int onid, int tsid, int sid, int flags) {
    TRACE_SCOPE();
    BrowserDVBService::getInstance()->tuneToService(idType, onid, tsid, sid, flags);
}

void BrowserDvbAPI::tuneToService(const std::string& dsd, int sid, int flags) {
    TRACE_SCOPE();
    BrowserDVBService::getInstance()->tuneToService(dsd, sid, flags);
}

void BrowserDvbAPI::tuneToComponent(int first, int second, int third) {
    TRACE_SCOPE();
    BrowserDVBService::getInstance()->tuneToComponent(first, second, third);
}

void BrowserDvbAPI::selectComponent(int type) {
    BrowserDVBService::getInstance()->selectComponent(type);
}

void BrowserDvbAPI::unselectComponent(int type) {
    TRACE_SCOPE();
    BrowserDVBService::getInstance()->unselectComponent(type);
}

int BrowserDvbAPI::setAudioSource(std::string source) {
    TRACE_SCOPE();
    return BrowserDVBService::getInstance()->setAudioSourceSync(source);
}

void BrowserDvbAPI::notifyMwhbStart() {
    BLOG_TAGGED(blog::kOrdinary, "called.\n");
    BrowserDVBService::getInstance()->notifyMwhbStart();
}

int BrowserDvbAPI::sendPtsRequest(std::uint32_t request) {
    return BrowserDVBService::getInstance()->sendPtsRequest(request);
}

int BrowserDvbAPI::startTemiTimelineRequest(std::uint32_t first, std::uint32_t second, std::uint32_t third) {
    return BrowserDVBService::getInstance()->startTemiTimelineRequest(first, second, third);
}

int BrowserDvbAPI::stopTemiTimelineRequest() {
    return BrowserDVBService::getInstance()->stopTemiTimelineRequest();
}

int BrowserDvbAPI::startOSDDetection(std::uint32_t layer) {
    return BrowserDVBService::getInstance()->startOSDDetection(layer);
}

int BrowserDvbAPI::stopOSDDetection(std::uint32_t layer) {
    return BrowserDVBService::getInstance()->stopOSDDetection(layer);
}

int BrowserDvbAPI::sendDrmMessage(std::uint64_t sessionId, std::uint16_t caSystemId, std::uint16_t second,
                                  const std::string& firstText, const std::string& secondText) {
    BLOG_TAGGED(blog::kOrdinary, "session id = %llu, ca system id = %u\n", static_cast<unsigned long long>(sessionId),
                static_cast<unsigned int>(caSystemId));
    return BrowserDVBService::getInstance()->sendDrmMessage(sessionId, caSystemId, second, firstText, secondText);
}

int BrowserDvbAPI::connectCa(std::uint64_t session) {
    return BrowserDVBService::getInstance()->connectCa(session);
}

int BrowserDvbAPI::disconnectCa(std::uint16_t slot) {
    return BrowserDVBService::getInstance()->disconnectCa(slot);
}

int BrowserDvbAPI::sendOpAppInstallStatus(int type, int status) {
    return BrowserDVBService::getInstance()->sendOpAppInstallStatus(type, status);
}

void BrowserDvbAPI::vbStartDtvInfoRequest() {
    BrowserDVBService::getInstance()->vbStartDtvInfoRequest();
}

}  // namespace velmora::dvbservice
