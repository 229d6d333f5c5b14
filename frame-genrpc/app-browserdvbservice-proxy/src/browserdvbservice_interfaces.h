// The two halves of the RPC interface as virtual operations: ServiceInterface, the commands that a browser sends to the
// DTV service, and ClientInterface, the events that the DTV service sends to a browser.
// The order of the operations is the order of the message catalogue.
// Every operation takes the message's addressing and its transport details, then the message's fields.
// Results: commands return the transport's result: 0, or negative when the message was not sent. Results of events are
// ignored.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "browserdvbservice_records.h"
#include "frame/message.h"

namespace lo::browserdvbservice {

/// The name under which the process publishes the ServiceInterface.
constexpr const char* kInterfaceName = "tarno.lm.interfaces.browserdvbservice";
/// The service name on which browsers and the DTV service connect.
constexpr const char* kServiceName = "browserdvbservice";

/// Events, called on the transport thread. No lock is held during the call.
class ClientInterface {
public:
    virtual ~ClientInterface() = default;

#define EVENT(identifier, operation, Message, decoder, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"
};

/// Commands, from any thread, and the registry of the clients that receive events.
class ServiceInterface {
public:
    virtual ~ServiceInterface() = default;

#define COMMAND(identifier, operation, Message, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"

    /// Adds a client at the end. 0, or -17 when that object is already registered.
    virtual int addClient(boost::shared_ptr<ClientInterface> client) = 0;
    /// Removes a client. 0, or -2 when that object is not registered. The client may still receive an event whose
    /// delivery has begun.
    virtual int removeClient(boost::shared_ptr<ClientInterface> client) = 0;
};

}  // namespace lo::browserdvbservice
