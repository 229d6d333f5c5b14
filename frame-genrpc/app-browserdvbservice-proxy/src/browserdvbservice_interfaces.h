// The two halves of the interface as virtual operations: ServiceInterface, what a browser asks of the DTV service, and
// ClientInterface, what the DTV service tells a browser. Slot order is the catalogue's.
// Every operation takes the message's addressing and its transport details, then the message's fields.
// Results: commands return what sending gave (0, or negative: not sent); the results of events are not looked at.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "browserdvbservice_records.h"
#include "frame/message.h"

namespace lo::browserdvbservice {

/// Under this name the process publishes the ServiceInterface.
constexpr const char* kInterfaceName = "tarno.lm.interfaces.browserdvbservice";
/// Under this name browsers and DTV service meet.
constexpr const char* kServiceName = "browserdvbservice";

/// Events, called on the transport thread without a lock held.
class ClientInterface {
public:
    virtual ~ClientInterface() = default;

#define EVENT(identifier, operation, Message, decoder, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"
};

/// Commands, from any thread, and the registry of who hears the events.
class ServiceInterface {
public:
    virtual ~ServiceInterface() = default;

#define COMMAND(identifier, operation, Message, fields) \
    virtual int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) = 0;
#include "browserdvbservice_messages.inc"

    /// Adds a client at the end. 0, or -17 when that object is registered already.
    virtual int addClient(boost::shared_ptr<ClientInterface> client) = 0;
    /// Removes a client. 0, or -2 when that object is not registered. It may still hear an event that is under way.
    virtual int removeClient(boost::shared_ptr<ClientInterface> client) = 0;
};

}  // namespace lo::browserdvbservice
