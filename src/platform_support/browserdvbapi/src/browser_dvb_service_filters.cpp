// Section filters: the table of filter records and the registry of their clients.
#include <unistd.h>
#include <uuid/uuid.h>

#include <algorithm>

#include "browser_dvb_service.h"
#include "browser_log.h"
#include "session_name.h"
#include "trace_scope.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;

}  // namespace

int BrowserDVBService::saveFilter(boost::shared_ptr<FilterParameter> filter) {
    const locks::Lock lock(registryLock);
    if (std::find(filters.begin(), filters.end(), filter) == filters.end()) {
        filters.push_back(std::move(filter));
    }
    return 0;
}

void BrowserDVBService::removeFilter(boost::shared_ptr<FilterParameter> filter) {
    const locks::Lock lock(registryLock);
    const auto found = std::find(filters.begin(), filters.end(), filter);
    if (found == filters.end()) {
        BLOG_TAGGED(blog::kFailure, "Unable to remove filter: pam: %p client:%p, pid: %d \n",
                    static_cast<void*>(filter.get()), static_cast<void*>(filter->client()),
                    static_cast<int>(filter->pid()));
        return;
    }
    filters.erase(found);
}

boost::shared_ptr<FilterParameter> BrowserDVBService::findFilterParameterBySessionName(const std::string& wanted) {
    const locks::Lock lock(registryLock);
    const auto found =
        std::find_if(filters.begin(), filters.end(), [&wanted](const auto& filter) { return filter->isNamed(wanted); });
    return found == filters.end() ? boost::shared_ptr<FilterParameter>() : *found;
}

bool BrowserDVBService::registerClient(dtv::SectionFilterClient* client) {
    TRACE_SCOPE();
    const locks::Lock lock(registryLock);
    if (std::find(clients.begin(), clients.end(), client) == clients.end()) {
        clients.push_back(client);
    }
    return true;
}

bool BrowserDVBService::isRegistered(dtv::SectionFilterClient* client) {
    const locks::Lock lock(registryLock);
    return std::find(clients.begin(), clients.end(), client) != clients.end();
}

bool BrowserDVBService::unRegisterClient(dtv::SectionFilterClient* client) {
    TRACE_SCOPE();
    const locks::Lock lock(registryLock);
    const bool ownsFilter = std::any_of(filters.begin(), filters.end(),
                                        [client](const auto& filter) { return filter->client() == client; });
    const auto found = std::find(clients.begin(), clients.end(), client);
    if (ownsFilter || found == clients.end()) {
        return false;
    }
    clients.erase(found);
    return true;
}

std::string BrowserDVBService::generateSessionName() {
    uuid_t uuid;
    uuid_generate(uuid);
    return formatSessionName(getpid(), uuid);
}

}  // namespace velmora::dvbservice
