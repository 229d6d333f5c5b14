// Members and the process.
#include <cstdlib>
#include <map>
#include <mutex>

#include "frame/process.h"

namespace frame {

namespace {

std::mutex lock;  // guards published
std::map<std::string, void*>& published() {
    static auto& names = *new std::map<std::string, void*>;
    return names;
}

/// The library only passes a pointer to this back to the platform.
char theService;

}  // namespace

MsgIds MsgIds::none;

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
    const std::lock_guard<std::mutex> guard(lock);
    return published().emplace(name, pointer).second ? 0 : -1;
}

int AbstractProcessMember::unregisterInterface(void* pointer) {
    const std::lock_guard<std::mutex> guard(lock);
    for (const auto& entry : published()) {
        if (entry.second == pointer) {
            published().erase(entry.first);
            return 0;
        }
    }
    return -1;
}

std::uint32_t AbstractComponent::getServiceId() const {
    return 1;
}
int AbstractComponent::deliverEvent(const Event&) {
    return 0;
}
int AbstractComponent::handleEvent(const Event&) {
    return 0;
}
int AbstractComponent::registerEventHandler(std::uint32_t, EventHandler, void*) {
    return 0;
}
int AbstractComponent::unregisterEventHandler(std::uint32_t) {
    return 0;
}
int AbstractApplication::deliverInternalEvent(const Event&) {
    return 0;
}
int AbstractApplication::postEvent(const Event&) {
    return 0;
}
int AbstractApplication::postInternalEvent(const Event&) {
    return 0;
}
int AbstractApplication::scheduleEvents() {
    return 0;
}

AbstractMarshallingImpl::AbstractMarshallingImpl(int) {}
int AbstractMarshallingImpl::setLmqIOModule(frameLmqIOService* newService) {
    service = newService;
    return registerMessageHandlers();
}
int AbstractMarshallingImpl::registerMessageHandlers() {
    return 0;
}
void AbstractMarshallingImpl::onIOConnectionConnected(const TransportInfo&) {}
void AbstractMarshallingImpl::onIOConnectionConnectionFailed(const TransportInfo&) {}
void AbstractMarshallingImpl::onIOConnectionDisconnected(const TransportInfo&) {}
void AbstractMarshallingImpl::setServiceName(const std::string&) {}

Process Process::getInstance() {
    return {};
}

int Process::getInterfaceReference(boost::shared_ptr<Interface>& reference, const std::string& name) {
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = published().find(name);
    if (found == published().end()) {
        return -1;
    }
    reference.reset(new Interface(found->second));
    return 0;
}

/// Members live as long as the process.
int Process::startAppMembersSync(AbstractApplication** (*create)()) {
    AbstractApplication** const members = create();
    for (AbstractApplication** member = members; *member != nullptr; ++member) {
        (*member)->attachProcess(*this);
        if (auto* const marshalling = dynamic_cast<AbstractMarshallingImpl*>(*member)) {
            marshalling->setLmqIOModule(reinterpret_cast<frameLmqIOService*>(&theService));
        }
        (*member)->setupDone();
        (*member)->start();
    }
    std::free(members);
    return 0;
}

}  // namespace frame
