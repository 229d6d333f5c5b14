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
    filters.add(std::move(filter));
    return 0;
}

void BrowserDVBService::removeFilter(boost::shared_ptr<FilterParameter> filter) {
    const locks::Lock lock(registryLock);
    if (!filters.remove(filter)) {
        BLOG_TAGGED(blog::kFailure, "Unable to remove filter: pam: %p client:%p, pid: %d \n",
                    static_cast<void*>(filter.get()), static_cast<void*>(filter->client()),
                    static_cast<int>(filter->pid()));
    }
}

boost::shared_ptr<FilterParameter> BrowserDVBService::findFilterParameterBySessionName(const std::string& wanted) {
    const locks::Lock lock(registryLock);
    return filters.find(wanted);
}

BrowserDVBService::Receiver BrowserDVBService::findReceiver(const std::string& wanted) {
    const locks::Lock lock(registryLock);
    FilterTable::Entry* const entry = filters.lend(wanted);
    if (entry == nullptr) {
        return {};
    }
    const FilterParameter& filter = *entry->record;
    if (entry->registeredClient == nullptr && registered.count(filter.client()) != 0) {
        entry->registeredClient = filter.client();
    }
    return {&filter, entry->registeredClient};
}

bool BrowserDVBService::registerClient(dtv::SectionFilterClient* client) {
    TRACE_SCOPE();
    const locks::Lock lock(registryLock);
    if (registered.insert(client).second) {
        clients.push_back(client);
    }
    return true;
}

bool BrowserDVBService::isRegistered(dtv::SectionFilterClient* client) {
    const locks::Lock lock(registryLock);
    return registered.count(client) != 0;
}

bool BrowserDVBService::unRegisterClient(dtv::SectionFilterClient* client) {
    TRACE_SCOPE();
    const locks::Lock lock(registryLock);
    if (filters.hasRecordOf(client) || registered.erase(client) == 0) {
        return false;
    }
    clients.erase(std::find(clients.begin(), clients.end(), client));
    return true;
}

std::string BrowserDVBService::generateSessionName() {
    uuid_t uuid;
    uuid_generate(uuid);
    return formatSessionName(getpid(), uuid);
}

}  // namespace velmora::dvbservice
