// HttpServer: gives a machine's programs the presented service as a transport stream, and the operator's answers as
// JSON and XMLTV:
//
//  - /stream.ts      the packets of the presented service, from now on
//  - /channels.json  the channel list
//  - /epg.json, /epg.xml  the programme guide
//
// Threads: those of the HTTP library, one for each connection; the loop's only runs what they ask.
// Blocks:  the destructor, until all connections have ended.
// Fails:   error() gives the reason if it does not listen. A wrong request gets a status and a line of text.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "event_loop.h"
#include "http_address.h"
#include "packet_queue.h"

namespace dtvservice {

/// Why this build has no HTTP server; empty if it has one.
std::string checkHttp();

class HttpServer {
public:
    /// Readers of the stream at a time; one more gets 503.
    static constexpr int kMostReaders = 8;

    /// What it asks for, on the loop's thread.
    struct Service {
        /// Returns what gives the line of an operator's answer, on the connection's thread.
        std::function<std::function<std::string()>(const std::string& request)> ask;
        /// The queue gets the presented service's packets until it has ended.
        std::function<void(std::shared_ptr<PacketQueue> reader)> join;
    };

    HttpServer(const HttpAddress& address, EventLoop& loop, Service service);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    const std::string& error() const { return error_; }
    /// Where it listens, with the port that the system has chosen for 0.
    const HttpAddress& address() const { return address_; }

private:
    class Connections;

    HttpAddress address_;
    std::string error_;
    std::unique_ptr<Connections> connections;
};

}  // namespace dtvservice
