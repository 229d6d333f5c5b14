// ServicePresence: a service interface of this process, and whether it still exists. The platform destroys the proxy
// when it stops its members, while browser threads may be about to send. Those threads use a presence, which is never
// freed, and stay inside it during a command.
//
// Threads: any.
// Blocks:  end() while commands are in progress, up to a second.
// Locks:   one over the list of presences, a leaf.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "occupancy.h"

namespace lo::browserdvbservice {

class ServicePresence {
public:
    explicit ServicePresence(ServiceInterface& newInterface) : interface(newInterface) {}

    /// The presence of the interface at that address. When addresses are reused, the latest one.
    static ServicePresence& of(ServiceInterface& interface);
    /// Call when an interface has been constructed.
    static void begin(ServiceInterface& interface);
    /// Call before an interface is destroyed. Admits no new command and waits up to a second for those in progress.
    static void end(ServiceInterface& interface);

    bool isThere() const { return occupancy.admits(Occupancy::As::worker); }

    ServiceInterface& interface;
    Occupancy occupancy;
};

}  // namespace lo::browserdvbservice
