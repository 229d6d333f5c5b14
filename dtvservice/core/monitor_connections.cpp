// Sends records.
#include "monitor_connections.h"

namespace dtvservice {

/// Sends what the connections still take.
MonitorConnections::~MonitorConnections() {
    serve();
    for (const Stream& stream : streams) {
        tap.leave(stream.monitor);
    }
}

void MonitorConnections::add(control::Connection connection, BusTap::Monitor monitor) {
    streams.push_back({std::move(connection), monitor, "", 0});
}

void MonitorConnections::serve() {
    for (auto stream = streams.begin(); stream != streams.end();) {
        if (serve(*stream)) {
            ++stream;
        } else {
            tap.leave(stream->monitor);
            stream = streams.erase(stream);
        }
    }
}

/// False if the connection must be closed. A monitor has nothing to say, so its connection is readable only at its end.
bool MonitorConnections::serve(Stream& stream) {
    pollfd end = {stream.connection.fd(), POLLIN, 0};
    if (poll(&end, 1, 0) != 0) {
        return false;
    }
    if (stream.sent == stream.outgoing.size()) {
        stream.outgoing = tap.take(stream.monitor);
        stream.sent = 0;
    }
    if (stream.sent == stream.outgoing.size()) {
        return true;
    }
    const std::optional<std::size_t> sent =
        stream.connection.sendSome(std::string_view(stream.outgoing).substr(stream.sent));
    stream.sent += sent.value_or(0);
    return sent.has_value();
}

}  // namespace dtvservice
