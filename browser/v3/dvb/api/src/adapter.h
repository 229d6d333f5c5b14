// Adapter: the base of a client of the DTV service. Finds the proxy through the process, registers itself for events,
// and gives its subclass the commands. A subclass overrides the events that it needs.
// Threads: events on the transport thread; getServiceInterface() from any.   Blocks: never.
// Locks:   none; the service interface is set once by start() and read atomically.
// Fails:   -1 from start(); boost::bad_weak_ptr from start() when no shared_ptr owns the object.
#pragma once

#include <atomic>
#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>

#include "browserdvbservice_interfaces.h"
#include "frame/process.h"

namespace lo::browserdvbservice {

class Adapter : public ClientInterface, public boost::enable_shared_from_this<Adapter> {
public:
    Adapter();
    ~Adapter() override;

    /// Looks the interface up and registers for events. 0, or -1 when the process does not know the interface.
    int start();
    /// Ends the registration, if the object is still owned. 0.
    int stop();
    /// Where commands go: the proxy, or before start() has succeeded the null service. Never null.
    ServiceInterface* getServiceInterface() const;

#define EVENT(identifier, operation, Message, decoder, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

private:
    boost::shared_ptr<frame::Interface> interfaceReference;
    std::atomic<ServiceInterface*> serviceInterface{nullptr};  // not owned
};

}  // namespace lo::browserdvbservice
