// The client adapter and the null service.
#include "adapter.h"

#include "empty_service_interface.h"
#include "ovx/log.h"

namespace lo::browserdvbservice {

Adapter::Adapter() {
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
}

Adapter::~Adapter() {
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
}

int Adapter::start() {
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    if (frame::Process::getInstance().getInterfaceReference(interfaceReference, kInterfaceName) < 0) {
        BLOG_PLAIN(blog::kFailure, "Getting browserdvbservice interface failed!\n");
        return -1;
    }
    auto* const found = static_cast<ServiceInterface*>(interfaceReference ? interfaceReference->pointer() : nullptr);
    if (found == nullptr) {
        return -1;
    }
    serviceInterface.store(&ServicePresence::of(*found), std::memory_order_release);
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    Command(*this)->addClient(shared_from_this());
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    return 0;
}

int Adapter::stop() {
    BLOG_PLAIN(blog::kOrdinary, "called.\n");
    if (const boost::shared_ptr<Adapter> self = weak_from_this().lock()) {
        Command(*this)->removeClient(self);
    }
    return 0;
}

ServiceInterface* Adapter::getServiceInterface() const {
    const ServicePresence* const held = serviceInterface.load(std::memory_order_acquire);
    return held != nullptr && held->isThere() ? &held->interface : EmptyServiceInterface::shared();
}

Adapter::Command::Command(const Adapter& adapter) {
    ServicePresence* const held = adapter.serviceInterface.load(std::memory_order_acquire);
    if (held != nullptr) {
        stay.emplace(held->occupancy, Occupancy::As::worker);
    }
    target = stay && *stay ? &held->interface : EmptyServiceInterface::shared();
}

#define EVENT(identifier, operation, Message, decoder, fields)                                           \
    int Adapter::operation(frame::MsgIds&, const frame::TransportInfo& FIELDS_PARAMETER_TYPES(fields)) { \
        return 0;                                                                                        \
    }
#include "browserdvbservice_messages.inc"

namespace {

int refuse(const char* operation) {
    BLOG_PLAIN_AS(blog::kFailure, operation, "Null Service Interface!!!\n");
    return -1;
}

}  // namespace

EmptyServiceInterface::EmptyServiceInterface() {
    refuse(__func__);
}

EmptyServiceInterface::~EmptyServiceInterface() {
    refuse(__func__);
}

EmptyServiceInterface* EmptyServiceInterface::shared() {
    static auto* const nullService = new EmptyServiceInterface;
    return nullService;
}

#define COMMAND(identifier, operation, Message, fields)                                                                \
    int EmptyServiceInterface::operation(frame::MsgIds&, const frame::TransportInfo& FIELDS_PARAMETER_TYPES(fields)) { \
        return refuse(#operation);                                                                                     \
    }
#include "browserdvbservice_messages.inc"

int EmptyServiceInterface::addClient(boost::shared_ptr<ClientInterface>) {
    return refuse(__func__);
}
int EmptyServiceInterface::removeClient(boost::shared_ptr<ClientInterface>) {
    return refuse(__func__);
}

}  // namespace lo::browserdvbservice
