// SectionFilterAPI forwards to the service object.
#include "section_filter_api.h"

#include "browser_dvb_service.h"
#include "singleton.h"

namespace velmora::dvbservice {

SectionFilterAPI* SectionFilterAPI::GetInstance() {
    return base::Singleton<SectionFilterAPI>::get();
}

SectionFilterAPI* SectionFilterAPI::getInstance() {
    return GetInstance();
}

void SectionFilterAPI::AddRef() {}

void SectionFilterAPI::Release() {}

std::string SectionFilterAPI::name() {
    return "SectionFilterAPI";
}

int SectionFilterAPI::startPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName,
                                      unsigned int serviceId) {
    return BrowserDVBService::visit(
        [&](auto& service) { return service.startPMTRequest(client, sessionName, serviceId); });
}

int SectionFilterAPI::stopPMTRequest(dtv::SectionFilterClient* client, const std::string& sessionName) {
    return BrowserDVBService::visit([&](auto& service) { return service.stopPMTRequest(client, sessionName); });
}

std::string SectionFilterAPI::generateSessionName() {
    return BrowserDVBService::visit([&](auto& service) { return service.generateSessionName(); });
}

bool SectionFilterAPI::startSection(dtv::SectionFilterClient* client, const std::string& sessionName, unsigned int pid,
                                    const unsigned char* mask, const unsigned char* maskBits, int length) {
    return BrowserDVBService::visit([&](auto& service) {
               return service.startSection(client, sessionName, pid, mask, maskBits, length);
           }) == 0;
}

bool SectionFilterAPI::stopSection(dtv::SectionFilterClient* client, const std::string& sessionName) {
    return BrowserDVBService::visit([&](auto& service) { return service.stopSection(client, sessionName); }) == 0;
}

}  // namespace velmora::dvbservice
