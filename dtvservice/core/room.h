// Room: one subject of the service, with its state, its commands, its events and its operator's requests. It sets the
// handlers of its commands and requests with the core when it is made, and is told by the core what happens.
// Threads: the loop's.   Blocks: never.
#pragma once

#include <functional>

#include "browsers.h"
#include "multiplexes.h"

namespace dtvservice {

class Core;

/// What browsers are told of a service that is presented, in this order.
enum class Part { pmt, eit, ait };

class Room {
public:
    Room() = default;
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;
    virtual ~Room() = default;

    /// The tuner receives this multiplex alone from now on. It outlives the room.
    virtual void multiplexReceived(Multiplex& /*multiplex*/) {}
    virtual void channelListChanged(Multiplex& /*multiplex*/) {}
    /// A PMT of any service, new or changed. For the presented service, pmtChanged() follows.
    virtual void pmtArrived(Multiplex& /*multiplex*/, std::uint16_t /*serviceId*/,
                            const broadcast::Section& /*section*/) {}

    /// Another service is presented, or the same one anew. Browsers are told of it by tell().
    virtual void servicePresented(const broadcast::Channel& /*channel*/) {}
    /// The presented service is broadcast no longer, and none has taken its place yet.
    virtual void serviceGone() {}
    /// A section of the presented service; `changed` tells a new version from the first.
    virtual void pmtChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/,
                            bool /*changed*/) {}
    virtual void eitChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/,
                            bool /*changed*/) {}
    virtual void aitChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/) {}
    /// The presented service's PMT signals an HbbTV AIT for the first time, or no longer.
    virtual void aitSignalled(const broadcast::Channel& /*channel*/) {}
    /// Tells what is known of a part of the presented service, as far as it is the room's subject.
    virtual void tell(Part /*part*/, const broadcast::Channel& /*channel*/, const Audience& /*to*/) {}

    virtual void browserConnected(Browser /*browser*/) {}
    virtual void browserGone(Browser /*browser*/) {}
};

/// A room's operation as the handler of a command or request.
template <typename Owner, typename Result, typename... Values>
std::function<Result(Values...)> calls(Owner& owner, Result (Owner::*operation)(Values...)) {
    return [&owner, operation](Values... values) { return (owner.*operation)(values...); };
}

}  // namespace dtvservice
