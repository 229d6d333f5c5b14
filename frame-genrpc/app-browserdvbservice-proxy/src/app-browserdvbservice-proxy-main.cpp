// The proxy: commands out, events in, the client registry, and the proxy's membership in the process.
#include "app-browserdvbservice-proxy-main.h"

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <cstdlib>
#include <memory>

#include "locks/posix_lock.h"
#include "message_transfer.h"
#include "ovx/log.h"
#include "service_presence.h"

namespace lo::browserdvbservice {

namespace {

constexpr int kClientAlreadyExists = -17;
constexpr int kClientNotFound = -2;

}  // namespace

Proxy::Proxy() : frame::AbstractMarshallingImpl(frame::CouplingModeClient) {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    setServiceName(kServiceName);
    ServicePresence::begin(*this);
}

Proxy::~Proxy() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    unregisterInterface(static_cast<ServiceInterface*>(this));
    ServicePresence::end(*this);
}

int Proxy::performSetupDone() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    const int base = AbstractMarshallingImpl::performSetupDone();
    if (base < 0) {
        BLOG_PLAIN(blog::kFailure, "Parent class performSetupDone() returned %d.\n", base);
        return base;
    }
    const int registered = registerInterface(static_cast<ServiceInterface*>(this), kInterfaceName);
    if (registered < 0) {
        BLOG_PLAIN(blog::kFailure, "Unable to register interface: %d.\n", registered);
        return registered;
    }
    return 0;
}

int Proxy::performStarting() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    const int base = AbstractMarshallingImpl::performStarting();
    if (base < 0) {
        BLOG_PLAIN(blog::kFailure, "Parent class performStarting() returned %d.\n", base);
        return base;
    }
    return 0;
}

int Proxy::performStopping() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    const int base = AbstractMarshallingImpl::performStopping();
    if (base < 0) {
        BLOG_PLAIN(blog::kFailure, "Parent class performStopping() returned %d.\n", base);
        return base;
    }
    return 0;
}

int Proxy::registerMessageHandlers() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
#define EVENT(identifier, operation, Message, decoder, fields) \
    registerHandler<messages::Message>(lmqIOService(), decoder, this);
#include "browserdvbservice_messages.inc"
    return 0;
}

template <typename Message, typename... Arguments>
int Proxy::send(frame::MsgIds& ids, const Arguments&... arguments) {
    BLOG_PLAIN_AS(blog::kOrdinary, Message::kName, "Called.\n");
    return sendMessage<Message>(lmqIOService(), ids, arguments...);
}

#define COMMAND(identifier, operation, Message, fields)                                               \
    int Proxy::operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETERS(fields)) { \
        return send<messages::Message>(ids FIELDS_ARGUMENTS(fields));                                 \
    }
#include "browserdvbservice_messages.inc"

/// Usually there is one client. Up to four are copied without an allocation.
using FewClients = boost::container::small_vector<boost::shared_ptr<ClientInterface>, 4>;

template <typename Message>
int Proxy::dispatch(const char* decoder, const frame::TransportInfo& transport, const void* record, void* context) {
    BLOG_PLAIN_AS(blog::kOrdinary, decoder, "Called.\n");
    const auto& fields = *static_cast<const typename Message::Record*>(record);
    FewClients now;
    static_cast<Proxy*>(context)->copyClients(now);
    for (const boost::shared_ptr<ClientInterface>& client : now) {
        Message::deliver(*client, frame::MsgIds::none, transport, fields);
    }
    return 0;
}

#define EVENT(identifier, operation, Message, decoder, fields)                                           \
    int Proxy::decoder(const frame::MsgMeta&, const frame::TransportInfo& transport, const void* record, \
                       void* context) {                                                                  \
        return dispatch<messages::Message>(#decoder, transport, record, context);                        \
    }
#include "browserdvbservice_messages.inc"

Proxy::Clients::iterator Proxy::find(const ClientInterface* client) {
    return std::find_if(clients.begin(), clients.end(), [client](const auto& known) { return known.get() == client; });
}

template <typename Copy>
void Proxy::copyClients(Copy& copy) {
    const locks::PosixLock guard(componentMutex());
    copy.assign(clients.begin(), clients.end());
}

int Proxy::addClient(boost::shared_ptr<ClientInterface> client) {
    const locks::PosixLock guard(componentMutex());
    if (find(client.get()) != clients.end()) {
        BLOG_PLAIN(blog::kFailure, "Client already exists, %d total.\n", static_cast<int>(clients.size()));
        return kClientAlreadyExists;
    }
    clients.push_back(client);
    BLOG_PLAIN(blog::kOrdinary, "success, %d total.\n", static_cast<int>(clients.size()));
    return 0;
}

int Proxy::removeClient(boost::shared_ptr<ClientInterface> client) {
    const locks::PosixLock guard(componentMutex());
    const auto found = find(client.get());
    if (found == clients.end()) {
        BLOG_PLAIN(blog::kFailure, "client not found (of %d known ones)\n", static_cast<int>(clients.size()));
        return kClientNotFound;
    }
    clients.erase(found);
    BLOG_PLAIN(blog::kOrdinary, "success, %d remaining.\n", static_cast<int>(clients.size()));
    return 0;
}

}  // namespace lo::browserdvbservice

frame::AbstractApplication** CreateBrowserDvbServiceProxy() {
    BLOG_PLAIN(blog::kOrdinary, "Called.\n");
    auto** const members =
        static_cast<frame::AbstractApplication**>(std::calloc(2, sizeof(frame::AbstractApplication*)));
    if (members == nullptr) {
        throw std::bad_alloc();
    }
    members[0] = new lo::browserdvbservice::Proxy;
    return members;
}

frame::AbstractApplication** frameCreateApplicationArray() {
    return CreateBrowserDvbServiceProxy();
}
