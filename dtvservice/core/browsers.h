// Browsers: the connected browsers, and how events are sent to them.
// Threads: the loop's; call connect() before anything is played.
// Blocks:  never.
// Fails:   never; an event for a disconnected browser is dropped.
#pragma once

#include <cstdint>
#include <optional>
#include <set>

#include "browserdvbservice_interfaces.h"
#include "line_limits.h"
#include "watched_events.h"

namespace dtvservice {

/// The platform's number of a browser's connection.
using Browser = std::uint32_t;
/// The browsers that receive an event.
using Audience = std::set<Browser>;
using Events = lo::browserdvbservice::ClientInterface;

class Browsers {
    // Takes `Value` out of template argument deduction, so that the event alone determines the types of its values.
    template <typename Value>
    struct Given {
        using Type = Value;
    };

public:
    /// The tap must outlive this object.
    explicit Browsers(BusTap& newTap) : tap(newTap) {}

    /// Sets the interface that sends the events.
    void connect(Events& newEvents) {
        events = &newEvents;
        watched.emplace(newEvents, tap);
    }
    /// From now on all events are dropped, until the next connect().
    void disconnect() {
        watched.reset();
        events = nullptr;
    }
    /// What sends an event, and shows it to those who watch the bus; null while nothing is connected.
    Events* sender() { return watched && tap.isWatched() ? &*watched : events; }
    /// From now on events go to this interface, which may pass them to sender(); null ends it.
    void divert(Events* newDiversion) { diversion = newDiversion; }

    void add(Browser browser) { connected.insert(browser); }
    void remove(Browser browser) {
        connected.erase(browser);
        lines.forget(nameOf(browser));
    }
    /// The browsers that the loop knows. A new connection is posted to the loop, which adds the browser and then sends
    /// it the current state.
    const Audience& all() const { return connected; }

    /// Whether the calling function may write a log line about what this browser asks for now.
    bool mayTell(Browser browser, const char* function = __builtin_FUNCTION()) {
        return lines.mayTell(nameOf(browser), function);
    }

    /// Sends one event to every browser of the audience.
    template <typename... Values>
    void tell(const Audience& to,
              int (Events::*event)(frame::MsgIds& ids, const frame::TransportInfo& transport, Values... values),
              typename Given<Values>::Type... values) {
        Events* const taker = diversion != nullptr ? diversion : sender();
        if (taker == nullptr) {
            return;
        }
        for (const Browser browser : to) {
            frame::MsgIds ids;
            ids.peer = browser;
            (taker->*event)(ids, frame::TransportInfo(), values...);
        }
    }

private:
    static std::string nameOf(Browser browser) { return "browser " + std::to_string(browser); }

    BusTap& tap;
    Events* events = nullptr;
    std::optional<WatchedEvents> watched;  // sends the events while somebody watches
    Events* diversion = nullptr;
    Audience connected;
    LineLimits lines;
};

}  // namespace dtvservice
