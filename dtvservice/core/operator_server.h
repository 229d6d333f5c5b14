// OperatorServer: takes operators' requests at a socket and has them answered on the loop's thread.
// Threads: one of its own.   Blocks: its end, until the request under way is answered.
// Fails:   a socket that cannot be made is told by error().
#pragma once

#include <functional>
#include <future>
#include <list>
#include <string>
#include <thread>

#include "control_socket.h"
#include "event_loop.h"

namespace dtvservice {

class OperatorServer {
public:
    /// Called on the loop's thread with a line; gives the answer's line.
    using Handler = std::function<std::string(const std::string& request)>;

    OperatorServer(const std::string& path, EventLoop& newLoop, Handler newHandler);
    OperatorServer(const OperatorServer&) = delete;
    OperatorServer& operator=(const OperatorServer&) = delete;
    ~OperatorServer();

    /// Why there is no socket; empty where there is one.
    const std::string& error() const { return error_; }

private:
    void run();
    bool serve(control::Connection& connection);
    std::string answer(const std::string& request);

    std::string error_;
    control::Listener listener;
    EventLoop& loop;
    Handler handler;
    int wakeUp = -1;  // an eventfd: written once, at the end
    std::thread thread;
};

}  // namespace dtvservice
