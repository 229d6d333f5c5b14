// Room: one subject of the service, with its state, commands, events and operator's requests. Its constructor registers
// the handlers of its commands and requests with the core. The core calls the virtual functions when something happens.
// Threads: the loop's.
// Blocks:  never.
#pragma once

#include <functional>

#include "browsers.h"
#include "multiplexes.h"

namespace dtvservice {

class Core;

/// The parts of the information on a presented service, in the order in which browsers receive them.
enum class Part { pmt, eit, ait };

class Room {
public:
    Room() = default;
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;
    virtual ~Room() = default;

    /// From now on the tuner receives only this multiplex, which outlives the room.
    virtual void multiplexReceived(Multiplex& /*multiplex*/) {}
    virtual void channelListChanged(Multiplex& /*multiplex*/) {}
    /// A PMT of any service, new or changed. For the presented service, pmtChanged() follows.
    virtual void pmtArrived(Multiplex& /*multiplex*/, std::uint16_t /*serviceId*/,
                            const broadcast::Section& /*section*/) {}

    /// Another service is presented, or the same one again. Do not send events to browsers here: tell() does.
    virtual void servicePresented(const broadcast::Channel& /*channel*/) {}
    /// The presented service has left the channel list, and no other service is presented yet.
    virtual void serviceGone() {}
    /// A section of the presented service. `changed` is false for the first version and true for a later one.
    virtual void pmtChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/,
                            bool /*changed*/) {}
    virtual void eitChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/,
                            bool /*changed*/) {}
    virtual void aitChanged(const broadcast::Channel& /*channel*/, const broadcast::Section& /*section*/) {}
    /// The presented service starts or stops signalling an HbbTV AIT.
    virtual void aitSignalled(const broadcast::Channel& /*channel*/) {}
    /// Sends what this room knows of one part of the presented service.
    virtual void tell(Part /*part*/, const broadcast::Channel& /*channel*/, const Audience& /*to*/) {}

    virtual void browserConnected(Browser /*browser*/) {}
    virtual void browserGone(Browser /*browser*/) {}
};

/// Turns a room's member function into the handler of a command or request.
template <typename Owner, typename Result, typename... Values>
std::function<Result(Values...)> calls(Owner& owner, Result (Owner::*operation)(Values...)) {
    return [&owner, operation](Values... values) { return (owner.*operation)(values...); };
}

}  // namespace dtvservice
