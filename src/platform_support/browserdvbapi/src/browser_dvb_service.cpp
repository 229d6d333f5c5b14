// The service object's life: made once, connected to the DTV service, and destroyed when the process ends.
#include "browser_dvb_service.h"

#include <unistd.h>

#include "app-browserdvbservice-proxy-main.h"
#include "browser_log.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;
constexpr std::chrono::seconds kLongestDelivery{1};

}  // namespace

/// At process exit. A client that does not come back from its section keeps the object from being destroyed, but not
/// the process from ending.
void BrowserDVBService::destroyUnlessDelivering(BrowserDVBService* service) {
    if (service->deliveryGate->close(kLongestDelivery)) {
        delete service;
    }
}

BrowserDVBService* BrowserDVBService::getInstance() {
    static boost::shared_ptr<BrowserDVBService> instance;
    // The pointer again, for those who come without the lock. It is there before the object is connected, so that
    // whoever is called by the proxy meanwhile need not wait.
    static std::atomic<BrowserDVBService*> published{nullptr};
    static std::mutex creationLock;

    if (BrowserDVBService* const found = published.load(std::memory_order_acquire)) {
        return found;
    }
    const std::lock_guard<std::mutex> lock(creationLock);
    if (!instance) {
        instance.reset(new BrowserDVBService, &destroyUnlessDelivering);
        published.store(instance.get(), std::memory_order_release);
        instance->start();
        instance->TriggerServiceInfoAcquire();
    }
    return instance.get();
}

BrowserDVBService::BrowserDVBService() {
    frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy);
    BLOG_TAGGED(blog::kAlways, "Creating BrowserDVBService(%p) in %d\n", static_cast<void*>(this), getpid());
    sessionName = generateSessionName();
    sectionDataChannelName.set("");
    secondChannelName.set("");
}

BrowserDVBService::~BrowserDVBService() {
    deliveryGate->close(kLongestDelivery);
    BLOG_TAGGED(blog::kAlways, "Destroy BrowserDVBService(%p) in %d\n", static_cast<void*>(this), getpid());
}

bool BrowserDVBService::keepRunning() {
    return true;
}

void BrowserDVBService::updateIPCChannelNames() {
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    getServiceInterface()->cmdUpdateIPCChannelNames(ids, transport, sectionDataChannelName.get(), "",
                                                    secondChannelName.get());
}

}  // namespace velmora::dvbservice
