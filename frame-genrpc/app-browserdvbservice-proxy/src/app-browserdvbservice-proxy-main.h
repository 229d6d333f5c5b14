// Proxy: the browser's end of the RPC interface. Sends each command as one message to the DTV service, and passes each
// event message to every registered client.
//
// Threads: commands from any thread; events on the transport thread.
// Blocks:  the destructor, up to a second, while commands are in progress. Everything else: never.
// Locks:   the component mutex guards clients; it is not held while a client is called.
// Fails:   commands return the transport's result; addClient() -17, removeClient() -2.
#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "browserdvbservice_interfaces.h"
#include "frame/process.h"
#include "frame/process_member.h"
#include "locks/lock.h"

namespace lo::browserdvbservice {

class Proxy : public frame::AbstractMarshallingImpl, public ServiceInterface {
public:
    Proxy();
    /// Withdraws the interface, waits up to a second for commands in progress, and releases every client.
    ~Proxy() override;

    /// Publishes the ServiceInterface under kInterfaceName, so that adapters find it.
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

    Clients::iterator find(const ClientInterface* client) REQUIRES(componentMutex());
    template <typename Copy>
    void copyClients(Copy& copy) EXCLUDES(componentMutex());

    Clients clients GUARDED_BY(componentMutex());  // in order of registration
};

}  // namespace lo::browserdvbservice

extern "C" {

/// This library's members for the platform's process model: a calloc'ed array of one Proxy and a null pointer.
__attribute__((visibility("default"))) frame::AbstractApplication** CreateBrowserDvbServiceProxy();

/// A process model that loads the library calls this to get its members. Returns the same array.
__attribute__((visibility("default"))) frame::AbstractApplication** frameCreateApplicationArray();
}
