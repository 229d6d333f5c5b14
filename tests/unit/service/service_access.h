// Gives tests access to the service object's private members.
#pragma once

#include <string>
#include <utility>

#include "browser_dvb_service.h"

namespace velmora::dvbservice {

struct BrowserDVBServiceTestAccess {
    // Locks and conditions.
    static boost::mutex& registryLock(BrowserDVBService& service) { return service.registryLock; }
    static std::mutex& handshakeLock(BrowserDVBService& service) { return service.handshakeLock; }
    static std::mutex& audioSourceLock(BrowserDVBService& service) { return service.audioSourceLock; }
    static pthread_cond_t* handshakeCondition(BrowserDVBService& service) {
        return service.handshakeCondition.native_handle();
    }
    static pthread_cond_t* audioSourceCondition(BrowserDVBService& service) {
        return service.audioSourceCondition.native_handle();
    }

    /// Session and result of the last report.
    static std::pair<unsigned int, int> lastAudioReport(BrowserDVBService& service) {
        const locks::Lock lock(service.audioSourceLock);
        return {service.audioSourceFinishedSession, service.audioSourceResult};
    }
    static int pmtServiceId(BrowserDVBService& service) { return service.pmtServiceId; }

    static void deliver(BrowserDVBService& service, const msgqueue::SectionDataIPCMessage& message) {
        service.deliverSection(message);
    }
    static std::string queueName(BrowserDVBService& service) { return "SECTION-" + service.sessionName; }
    static bool hasQueue(BrowserDVBService& service) { return service.sectionDataQueue != nullptr; }

    static std::size_t waitingResults(BrowserDVBService& service) {
        const locks::Lock lock(service.handshakeLock);
        return service.filterResults.size();
    }
    /// "type session pid result" of each confirmation that no wait has taken yet.
    static std::vector<std::string> results(BrowserDVBService& service) {
        const locks::Lock lock(service.handshakeLock);
        std::vector<std::string> shown;
        for (const auto& entry : service.filterResults) {
            shown.push_back(std::to_string(entry.type) + " " + entry.sessionName + " " + std::to_string(entry.pid) +
                            " " + std::to_string(entry.result));
        }
        return shown;
    }
    static std::vector<dtv::SectionFilterClient*> clients(BrowserDVBService& service) {
        const locks::Lock lock(service.registryLock);
        return service.clients;
    }
    static std::vector<boost::shared_ptr<FilterParameter>> filters(BrowserDVBService& service) {
        const locks::Lock lock(service.registryLock);
        return service.filters.all();
    }
};

}  // namespace velmora::dvbservice

using velmora::dvbservice::BrowserDVBServiceTestAccess;
