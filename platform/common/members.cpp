// The bases of process members: lifecycle entry points, event handler table, event queue, marshalling.
#include <atomic>

#include "frame/process.h"
#include "frame/process_member.h"
#include "locks/posix_lock.h"
#include "platform_common/interface_registry.h"
#include "platform_common/io_backend.h"

namespace frame {

MsgIds MsgIds::none;

AbstractProcessMember::~AbstractProcessMember() = default;

int AbstractProcessMember::attachProcess(Process&) {
    return 0;
}
int AbstractProcessMember::detachProcess() {
    return 0;
}
int AbstractProcessMember::setupDone() {
    return performSetupDone();
}
int AbstractProcessMember::start() {
    return performStarting();
}
int AbstractProcessMember::stop() {
    return performStopping();
}
int AbstractProcessMember::performSetupDone() {
    return 0;
}
int AbstractProcessMember::performStarting() {
    return 0;
}
int AbstractProcessMember::performStopping() {
    return 0;
}

int AbstractProcessMember::registerInterface(void* pointer, const std::string& name) {
    return platform_common::InterfaceRegistry::instance().add(pointer, name);
}

int AbstractProcessMember::unregisterInterface(void* pointer) {
    return platform_common::InterfaceRegistry::instance().remove(pointer);
}

AbstractComponent::AbstractComponent() {
    static std::atomic<std::uint32_t> lastServiceId{0};
    componentNumber = ++lastServiceId;
    pthread_mutex_init(&mutex, nullptr);
    pthread_mutex_init(&handlersMutex, nullptr);
}

AbstractComponent::~AbstractComponent() {
    pthread_mutex_destroy(&handlersMutex);
    pthread_mutex_destroy(&mutex);
}

std::uint32_t AbstractComponent::getServiceId() const {
    return componentNumber;
}
int AbstractComponent::deliverEvent(const Event& event) {
    return handleEvent(event);
}

int AbstractComponent::handleEvent(const Event& event) {
    Registration registration{};
    {
        locks::PosixLock guard(handlersMutex);
        const auto found = handlers.find(event.id);
        if (found == handlers.end()) {
            return -1;
        }
        registration = found->second;
    }
    return registration.handler(event, registration.context);
}

int AbstractComponent::registerEventHandler(std::uint32_t id, EventHandler handler, void* context) {
    if (handler == nullptr) {
        return -1;
    }
    locks::PosixLock guard(handlersMutex);
    return handlers.emplace(id, Registration{handler, context}).second ? 0 : -1;
}

int AbstractComponent::unregisterEventHandler(std::uint32_t id) {
    locks::PosixLock guard(handlersMutex);
    return handlers.erase(id) == 1 ? 0 : -1;
}

AbstractApplication::AbstractApplication() {
    pthread_mutex_init(&queueMutex, nullptr);
}
AbstractApplication::~AbstractApplication() {
    pthread_mutex_destroy(&queueMutex);
}

int AbstractApplication::deliverEvent(const Event& event) {
    return AbstractComponent::deliverEvent(event);
}
int AbstractApplication::deliverInternalEvent(const Event& event) {
    return handleEvent(event);
}

int AbstractApplication::postEvent(const Event& event) {
    locks::PosixLock guard(queueMutex);
    events.push_back(event);
    return 0;
}

int AbstractApplication::postInternalEvent(const Event& event) {
    locks::PosixLock guard(queueMutex);
    internalEvents.push_back(event);
    return 0;
}

int AbstractApplication::scheduleEvents() {
    std::deque<Event> internalNow;
    std::deque<Event> now;
    {
        locks::PosixLock guard(queueMutex);
        internalNow.swap(internalEvents);
        now.swap(events);
    }
    for (const Event& event : internalNow) {
        deliverInternalEvent(event);
    }
    for (const Event& event : now) {
        deliverEvent(event);
    }
    return static_cast<int>(internalNow.size() + now.size());
}

AbstractMarshallingImpl::AbstractMarshallingImpl(int couplingMode) : couplingMode_(couplingMode) {}

AbstractMarshallingImpl::~AbstractMarshallingImpl() = default;

int AbstractMarshallingImpl::performSetupDone() {
    const int base = AbstractApplication::performSetupDone();
    return base < 0 ? base : platform_common::setUpIOService(ioService);
}

int AbstractMarshallingImpl::performStarting() {
    const int base = AbstractApplication::performStarting();
    return base < 0 ? base : platform_common::startIOService(ioService);
}

int AbstractMarshallingImpl::performStopping() {
    const int stopped = platform_common::stopIOService(ioService);
    const int base = AbstractApplication::performStopping();
    return stopped < 0 ? stopped : base;
}

int AbstractMarshallingImpl::setLmqIOModule(frameLmqIOService* service) {
    ioService = service;
    return registerMessageHandlers();
}

int AbstractMarshallingImpl::registerMessageHandlers() {
    return 0;
}
void AbstractMarshallingImpl::onIOConnectionConnected(const TransportInfo&) {}
void AbstractMarshallingImpl::onIOConnectionConnectionFailed(const TransportInfo&) {}
void AbstractMarshallingImpl::onIOConnectionDisconnected(const TransportInfo&) {}
void AbstractMarshallingImpl::setServiceName(const std::string& name) {
    serviceName_ = name;
}

}  // namespace frame
