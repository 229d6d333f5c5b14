// Proxy: the browser's end of the interface. Turns each command into one message to the DTV service, and each event
// message into a call of every registered client.
//
// Threads: commands from any thread; events on the transport thread.
// Blocks:  the destructor, up to a second, while commands are under way. Everything else: never.
// Locks:   the component mutex guards clients; no client is called while it is held.
// Fails:   commands with the transport's result; -17 and -2 of the client registry.
#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "browserdvbservice_interfaces.h"
#include "frame/process.h"
#include "frame/process_member.h"

namespace lo::browserdvbservice {

class Proxy : public frame::AbstractMarshallingImpl, public ServiceInterface {
public:
    Proxy();
    /// Withdraws the interface, waits for commands under way, and lets go of every client.
    ~Proxy() override;

    /// Publishes the ServiceInterface under kInterfaceName; adapters find it from then on.
    int performSetupDone() override;
    int performStarting() override;
    int performStopping() override;
    /// Registers the decoder of each event; called by the platform.
    int registerMessageHandlers() override;

#define COMMAND(identifier, operation, Message, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

    int addClient(boost::shared_ptr<ClientInterface> client) override;
    int removeClient(boost::shared_ptr<ClientInterface> client) override;

private:
    using Clients = std::vector<boost::shared_ptr<ClientInterface>>;

#define EVENT(identifier, operation, Message, decoder, fields)                                                  \
    static int decoder(const frame::MsgMeta& header, const frame::TransportInfo& transport, const void* record, \
                       void* context);
#include "browserdvbservice_messages.inc"

    template <typename Message, typename... Arguments>
    int send(frame::MsgIds& ids, const Arguments&... arguments);
    template <typename Message>
    static int dispatch(const char* decoder, const frame::TransportInfo& transport, const void* record, void* context);

    Clients::iterator find(const ClientInterface* client);
    Clients clientsNow();

    Clients clients;  // guarded by the component mutex; in order of registration
};

}  // namespace lo::browserdvbservice

extern "C" {

/// The members of this library for the platform's process model: a calloc'ed array of one Proxy and a null pointer.
__attribute__((visibility("default"))) frame::AbstractApplication** CreateBrowserDvbServiceProxy();

/// The hook by which a process model that loads the library asks for its members; the same array.
__attribute__((visibility("default"))) frame::AbstractApplication** frameCreateApplicationArray();
}
