// WatchedEvents: sends events, and shows them to the monitors of the bus.
// Threads: the loop's.
// Blocks:  never.
// Fails:   as the events do; an event that does not leave is shown with the transport's error number.
#pragma once

#include "browserdvbservice_interfaces.h"
#include "bus_tap.h"

namespace dtvservice {

class WatchedEvents : public lo::browserdvbservice::ClientInterface {
public:
    /// Both must outlive this object.
    WatchedEvents(ClientInterface& newSender, BusTap& newTap) : sender(newSender), tap(newTap) {}

// An event is shown before it leaves, so that the browser's answer comes after it.
#define EVENT(identifier, operation, Message, decoder, fields)                                                    \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& transport FIELDS_PARAMETERS(fields)) override { \
        tap.event(ids.peer, identifier FIELDS_ARGUMENTS(fields));                                                 \
        return checked(identifier, ids.peer, sender.operation(ids, transport FIELDS_ARGUMENTS(fields)));          \
    }
#include "browserdvbservice_messages.inc"

private:
    int checked(std::uint32_t identifier, std::uint32_t browser, int result) {
        if (result < 0) {
            tap.refused(bus::Direction::toBrowser, browser, identifier, "not sent", result);
        }
        return result;
    }

    ClientInterface& sender;
    BusTap& tap;
};

}  // namespace dtvservice
