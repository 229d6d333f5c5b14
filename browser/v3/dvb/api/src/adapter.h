// Adapter: the base of a client of the DTV service. Finds the proxy through the process, registers itself for events,
// and gives its subclass the commands. A subclass overrides the events that it needs.
//
// Threads: events on the transport thread; getServiceInterface() from any.
// Blocks:  never.
// Locks:   none; the service interface is set by start() and read atomically.
// Fails:   -1 from start(); boost::bad_weak_ptr from start() when no shared_ptr owns the object.
#pragma once

#include <atomic>
#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <optional>

#include "browserdvbservice_interfaces.h"
#include "frame/process.h"
#include "service_presence.h"

namespace lo::browserdvbservice {

class Adapter : public ClientInterface, public boost::enable_shared_from_this<Adapter> {
public:
    Adapter();
    ~Adapter() override;

    /// Looks the interface up and registers for events. 0, or -1 when the process does not know the interface.
    int start();
    /// Ends the registration if a shared_ptr still owns the object. Returns 0.
    int stop();
    /// The target of commands: the proxy, or the null service before start() succeeds and after the proxy is destroyed.
    /// Never null. The proxy may be destroyed at any time, so send commands through a Command.
    ServiceInterface* getServiceInterface() const;

    /// The service interface during one command. The proxy's destructor waits for the command, up to a second.
    class Command {
    public:
        explicit Command(const Adapter& adapter);
        ServiceInterface* get() const { return target; }
        ServiceInterface* operator->() const { return target; }

    private:
        std::optional<Occupancy::Stay> stay;
        ServiceInterface* target;
    };

#define EVENT(identifier, operation, Message, decoder, fields) \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override;
#include "browserdvbservice_messages.inc"

private:
    boost::shared_ptr<frame::Interface> interfaceReference;
    std::atomic<ServicePresence*> serviceInterface{nullptr};  // not owned
};

}  // namespace lo::browserdvbservice
