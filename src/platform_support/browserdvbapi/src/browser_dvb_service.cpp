// Creates the service object once, connects it to the DTV service, and destroys it when the process ends.
#include "browser_dvb_service.h"

#include <unistd.h>

#include "app-browserdvbservice-proxy-main.h"
#include "browser_log.h"

namespace velmora::dvbservice {

namespace {

constexpr const char* kBlogTag = kTagService;
constexpr std::chrono::seconds kLongestDelivery{1};

// The instance for readers without the lock. It is set before start(), so that code which the proxy calls meanwhile
// does not wait for the lock.
std::atomic<BrowserDVBService*> published{nullptr};

}  // namespace

const std::shared_ptr<Occupancy>& BrowserDVBService::occupancyOfInstance() {
    static const auto* const kept = new std::shared_ptr<Occupancy>(std::make_shared<Occupancy>());
    return *kept;
}

/// Runs at process exit. A thread inside the object prevents its destruction, but does not delay the exit.
void BrowserDVBService::destroyUnlessOccupied(BrowserDVBService* service) {
    if (service->occupancy->close(kLongestDelivery)) {
        delete service;
    }
}

BrowserDVBService* BrowserDVBService::getInstance() {
    static boost::shared_ptr<BrowserDVBService> instance;
    static std::mutex creationLock;

    if (BrowserDVBService* const found = published.load(std::memory_order_acquire)) {
        return found;
    }
    const locks::Lock lock(creationLock);
    if (!instance) {
        instance.reset(new BrowserDVBService(occupancyOfInstance()), &destroyUnlessOccupied);
        published.store(instance.get(), std::memory_order_release);
        instance->start();
        instance->TriggerServiceInfoAcquire();
    }
    return instance.get();
}

BrowserDVBService::BrowserDVBService(std::shared_ptr<Occupancy> newOccupancy) : occupancy(std::move(newOccupancy)) {
    frame::Process::getInstance().startAppMembersSync(CreateBrowserDvbServiceProxy);
    BLOG_TAGGED(blog::kAlways, "Creating BrowserDVBService(%p) in %d\n", static_cast<void*>(this), getpid());
    sessionName = generateSessionName();
    sectionDataChannelName.set("");
    secondChannelName.set("");
}

BrowserDVBService::~BrowserDVBService() {
    occupancy->close(kLongestDelivery);
    BLOG_TAGGED(blog::kAlways, "Destroy BrowserDVBService(%p) in %d\n", static_cast<void*>(this), getpid());
}

bool BrowserDVBService::keepRunning() {
    return true;
}

void BrowserDVBService::updateIPCChannelNames() {
    frame::MsgIds ids;
    const frame::TransportInfo transport;
    Command(*this)->cmdUpdateIPCChannelNames(ids, transport, sectionDataChannelName.get(), "", secondChannelName.get());
}

}  // namespace velmora::dvbservice
