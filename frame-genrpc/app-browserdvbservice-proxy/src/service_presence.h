// ServicePresence: a service interface of this process and whether it is still there. The platform destroys the proxy
// when it stops its members, while threads of the browser may be about to send. They hold a presence, which is never
// freed, and stay inside of it for the length of a command.
//
// Threads: any.
// Blocks:  end() while commands are under way, up to a second.
// Locks:   one over the list of presences, a leaf.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "occupancy.h"

namespace lo::browserdvbservice {

class ServicePresence {
public:
    explicit ServicePresence(ServiceInterface& newInterface) : interface(newInterface) {}

    /// The presence of the interface at that address: the latest that began there.
    static ServicePresence& of(ServiceInterface& interface);
    /// An interface has been constructed.
    static void begin(ServiceInterface& interface);
    /// An interface is about to be destroyed: no further command is let in, and those under way are waited for.
    static void end(ServiceInterface& interface);

    bool isThere() const { return occupancy.admits(Occupancy::As::worker); }

    ServiceInterface& interface;
    Occupancy occupancy;
};

}  // namespace lo::browserdvbservice
