// Browsers: those that are connected, and the way to tell them events.
// Threads: the loop's; connect() before anything is played.   Blocks: never.
// Fails:   never; an event to a browser that has gone is dropped.
#pragma once

#include <cstdint>
#include <set>

#include "browserdvbservice_interfaces.h"

namespace dtvservice {

/// The platform's number of a browser's connection.
using Browser = std::uint32_t;
/// Those whom an event goes to.
using Audience = std::set<Browser>;
using Events = lo::browserdvbservice::ClientInterface;

class Browsers {
    // Leaves it to the event alone which types its values have.
    template <typename Value>
    struct Given {
        using Type = Value;
    };

public:
    /// Events leave by this interface.
    void connect(Events& newEvents) { events = &newEvents; }

    void add(Browser browser) { connected.insert(browser); }
    void remove(Browser browser) { connected.erase(browser); }
    /// Those that the loop knows. One that has just connected is told what it needs once the loop has heard of it.
    const Audience& all() const { return connected; }

    /// One event with its values to each of the audience.
    template <typename... Values>
    void tell(const Audience& to,
              int (Events::*event)(frame::MsgIds& ids, const frame::TransportInfo& transport, Values... values),
              typename Given<Values>::Type... values) {
        for (const Browser browser : to) {
            frame::MsgIds ids;
            ids.peer = browser;
            (events->*event)(ids, frame::TransportInfo(), values...);
        }
    }

private:
    Events* events = nullptr;
    Audience connected;
};

}  // namespace dtvservice
