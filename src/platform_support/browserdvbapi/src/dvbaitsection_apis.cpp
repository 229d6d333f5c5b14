// The AIT section API.
#include "dvbaitsection_apis.h"

#include "browser_AIT_catcher.h"
#include "browser_log.h"
#include "singleton.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagBrowser;

}  // namespace

DvbAITSectionAPI* DvbAITSectionAPI::GetInstance() {
    return base::Singleton<DvbAITSectionAPI>::get();
}

DvbAITSectionAPI* DvbAITSectionAPI::getInstance() {
    return GetInstance();
}

void DvbAITSectionAPI::AddRef() {}

void DvbAITSectionAPI::Release() {}

std::string DvbAITSectionAPI::name() {
    return "DvbAITAPI";
}

bool DvbAITSectionAPI::registerClient(dtv::AITSectionClient* client) {
    registered.store(client);
    return true;
}

// Removes the registered client, whichever client is given.
bool DvbAITSectionAPI::unRegisterClient(dtv::AITSectionClient*) {
    registered.store(nullptr);
    return true;
}

bool DvbAITSectionAPI::isRegistered(dtv::AITSectionClient*) {
    return registered.load() != nullptr;
}

bool DvbAITSectionAPI::getCurrentChannelAIT(dtv::AITSectionClient* client, std::uint16_t onId, std::uint16_t tsId,
                                            std::uint16_t sId) {
    registerClient(client);
    BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
    if (catcher == nullptr) {
        BLOG_TAGGED(blog::kFailure, "Get browserAitCatcher failed.\n");
        return false;
    }
    catcher->getCurrentChannelAIT(onId, tsId, sId);
    return true;
}

void DvbAITSectionAPI::notifyCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId,
                                               const std::vector<std::uint8_t>& section) {
    if (dtv::AITSectionClient* const client = registered.load()) {
        client->onCurrentChannelAIT(onId, tsId, sId, section);
    }
}

}  // namespace velmora::dvbservice
