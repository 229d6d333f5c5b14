// OperatorServer: receives operators' requests on a socket. The loop's thread makes the answers. A connection whose
// operator wants to watch the bus leaves this class's requests for good.
// Threads: one of its own for the socket.
// Blocks:  the destructor, until this thread has ended.
// Fails:   error() gives the reason if the socket cannot be made.
#pragma once

#include <functional>
#include <list>
#include <string>
#include <thread>

#include "control_socket.h"
#include "event_loop.h"
#include "monitor_connections.h"

namespace dtvservice {

class OperatorServer {
public:
    /// Called on the loop's thread with the line of a request; returns what gives the line of its answer, on the
    /// socket's thread.
    using Handler = std::function<std::function<std::string()>(const std::string& request)>;

    /// With the request "monitor" a connection becomes a stream of what the tap sees. Loop and tap must outlive this
    /// object.
    OperatorServer(const std::string& path, EventLoop& newLoop, BusTap& newTap, Handler newHandler);
    OperatorServer(const OperatorServer&) = delete;
    OperatorServer& operator=(const OperatorServer&) = delete;
    ~OperatorServer();

    /// Why there is no socket; empty if there is one.
    const std::string& error() const { return error_; }

private:
    void run();
    void accept(std::list<control::Connection>& connections);
    bool serve(control::Connection& connection);
    bool startMonitor(control::Connection& connection);
    std::string answer(const std::string& request);

    std::string error_;
    control::Listener listener;
    EventLoop& loop;
    BusTap& tap;
    MonitorConnections monitors{tap};  // used by the thread
    Handler handler;
    int wakeUp = -1;      // an eventfd; the destructor writes to it to end the thread
    std::string problem;  // of accepting, told; used by the thread
    std::thread thread;
};

}  // namespace dtvservice
