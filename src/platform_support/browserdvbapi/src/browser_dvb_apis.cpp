// The DVB API's commands and queries: each forwards to the service object and only adds the lines written here.
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
    return BrowserDVBService::visit([&](auto& service) { return service.getCurrentChannelInfo(onid, tsid, sid); });
}

std::string BrowserDvbAPI::getCurrentCCID() {
    return BrowserDVBService::visit([&](auto& service) { return service.getCurrentCCID(); });
}

std::string BrowserDvbAPI::getCurrentDsd() {
    return BrowserDVBService::visit([&](auto& service) { return service.getCurrentDsd(); });
}

// The status counts failures: 1 means that the application failed to start, 0 that it started.
int BrowserDvbAPI::sendApplicationStartedFailed() {
    return BrowserDVBService::visit([&](auto& service) {
        return service.sendApplicationStartStatus(lo::browserdvbservice::ApplicationStartFailed);
    });
}

int BrowserDvbAPI::sendApplicationStartedSucceeded() {
    return BrowserDVBService::visit(
        [&](auto& service) { return service.sendApplicationStartStatus(lo::browserdvbservice::ApplicationStarted); });
}

void BrowserDvbAPI::triggerAitRestart() {
    BrowserDVBService::visit([&](auto& service) { return service.triggerAitRestart(); });
}

void BrowserDvbAPI::tuneToService(int idType, int onid, int tsid, int sid, int flags) {
    TRACE_SCOPE();
    BrowserDVBService::visit([&](auto& service) { return service.tuneToService(idType, onid, tsid, sid, flags); });
}

void BrowserDvbAPI::tuneToService(const std::string& dsd, int sid, int flags) {
    TRACE_SCOPE();
    BrowserDVBService::visit([&](auto& service) { return service.tuneToService(dsd, sid, flags); });
}

void BrowserDvbAPI::tuneToComponent(int first, int second, int third) {
    TRACE_SCOPE();
    BrowserDVBService::visit([&](auto& service) { return service.tuneToComponent(first, second, third); });
}

void BrowserDvbAPI::selectComponent(int type) {
    BrowserDVBService::visit([&](auto& service) { return service.selectComponent(type); });
}

void BrowserDvbAPI::unselectComponent(int type) {
    TRACE_SCOPE();
    BrowserDVBService::visit([&](auto& service) { return service.unselectComponent(type); });
}

int BrowserDvbAPI::setAudioSource(std::string source) {
    TRACE_SCOPE();
    return BrowserDVBService::visit([&](auto& service) { return service.setAudioSourceSync(source); });
}

void BrowserDvbAPI::notifyMwhbStart() {
    BLOG_TAGGED(blog::kOrdinary, "called.\n");
    BrowserDVBService::visit([&](auto& service) { return service.notifyMwhbStart(); });
}

int BrowserDvbAPI::sendPtsRequest(std::uint32_t request) {
    return BrowserDVBService::visit([&](auto& service) { return service.sendPtsRequest(request); });
}

int BrowserDvbAPI::startTemiTimelineRequest(std::uint32_t first, std::uint32_t second, std::uint32_t third) {
    return BrowserDVBService::visit(
        [&](auto& service) { return service.startTemiTimelineRequest(first, second, third); });
}

int BrowserDvbAPI::stopTemiTimelineRequest() {
    return BrowserDVBService::visit([&](auto& service) { return service.stopTemiTimelineRequest(); });
}

int BrowserDvbAPI::startOSDDetection(std::uint32_t layer) {
    return BrowserDVBService::visit([&](auto& service) { return service.startOSDDetection(layer); });
}

int BrowserDvbAPI::stopOSDDetection(std::uint32_t layer) {
    return BrowserDVBService::visit([&](auto& service) { return service.stopOSDDetection(layer); });
}

int BrowserDvbAPI::sendDrmMessage(std::uint64_t sessionId, std::uint16_t caSystemId, std::uint16_t second,
                                  const std::string& firstText, const std::string& secondText) {
    BLOG_TAGGED(blog::kOrdinary, "session id = %llu, ca system id = %u\n", static_cast<unsigned long long>(sessionId),
                static_cast<unsigned int>(caSystemId));
    return BrowserDVBService::visit(
        [&](auto& service) { return service.sendDrmMessage(sessionId, caSystemId, second, firstText, secondText); });
}

int BrowserDvbAPI::connectCa(std::uint64_t session) {
    return BrowserDVBService::visit([&](auto& service) { return service.connectCa(session); });
}

int BrowserDvbAPI::disconnectCa(std::uint16_t slot) {
    return BrowserDVBService::visit([&](auto& service) { return service.disconnectCa(slot); });
}

int BrowserDvbAPI::sendOpAppInstallStatus(int type, int status) {
    return BrowserDVBService::visit([&](auto& service) { return service.sendOpAppInstallStatus(type, status); });
}

void BrowserDvbAPI::vbStartDtvInfoRequest() {
    BrowserDVBService::visit([&](auto& service) { return service.vbStartDtvInfoRequest(); });
}

}  // namespace velmora::dvbservice
