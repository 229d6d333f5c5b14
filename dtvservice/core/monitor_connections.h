// MonitorConnections: operators' connections that have become streams of records of the bus.
// Threads: the thread of the operator's socket.
// Blocks:  never; a connection that does not take its bytes gets them later, or loses records.
// Fails:   a connection that ends, or sends something, is closed.
#pragma once

#include <poll.h>

#include <chrono>
#include <list>
#include <vector>

#include "bus_tap.h"
#include "control_socket.h"

namespace dtvservice {

class MonitorConnections {
public:
    /// How often a monitor gets what there is: a service that is watched then makes no system call for it.
    static constexpr std::chrono::milliseconds kPace{10};

    /// The tap must outlive this object.
    explicit MonitorConnections(BusTap& newTap) : tap(newTap) {}
    MonitorConnections(const MonitorConnections&) = delete;
    MonitorConnections& operator=(const MonitorConnections&) = delete;
    ~MonitorConnections();

    bool empty() const { return streams.empty(); }
    void add(control::Connection connection, BusTap::Monitor monitor);
    /// Sends what there is and what the connections take, and closes those that have ended.
    void serve();

private:
    struct Stream {
        control::Connection connection;
        BusTap::Monitor monitor;
        std::string outgoing;
        std::size_t sent = 0;
    };

    bool serve(Stream& stream);

    BusTap& tap;
    std::list<Stream> streams;
};

}  // namespace dtvservice
