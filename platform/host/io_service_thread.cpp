// What the transport threads of clients and of services have in common: connections come and go, messages are handled.
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string_view>
#include <utility>

#include "envelope.h"
#include "host_log.h"
#include "io_service.h"

namespace host {

namespace {

std::uint32_t nextPeerNumber() {
    static std::atomic<std::uint32_t> last{0};
    return ++last;
}

}  // namespace

void IOService::run() {
    if (isService()) {
        serve();
    } else {
        followService();
    }
    tellOfNewConnections();
    const Snapshot now = connectionsNow();
    for (const std::shared_ptr<Connection>& connection : *now) {
        closeConnection(*connection);
    }
    endpoint.close();
}

void IOService::drainWakeUps() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(wakeUp, &count, sizeof count);
}

void IOService::adopt(int connectedSocket) {
    if (connectedSocket < 0) {
        return;
    }
    const auto connection = std::make_shared<Connection>(connectedSocket, nextPeerNumber());
    bool waits = false;
    {
        const locks::Lock lock(mutex);
        if (!isService()) {
            // The lock keeps back the first command until the queues are sent. A queue that is made meanwhile is among
            // these or finds the connection afterwards. It may be sent twice, which does no harm.
            waits = give(*connection, OwnQueues::instance().all());
        }
        auto more = std::make_shared<Connections>(*connections);
        more->push_back(connection);
        connections = std::move(more);
        untold.push_back(connection);
        hasNews = true;
    }
    if (waits) {
        letFlush(connection);
    }
    if (isService()) {
        watch(*connection, EPOLLIN);
    }
}

/// Callbacks run on this thread, even for the connection that start() made on its caller's thread.
void IOService::tellOfNewConnections() {
    Connections news;
    {
        const locks::Lock lock(mutex);
        news.swap(untold);
    }
    for (const std::shared_ptr<Connection>& connection : news) {
        failureTold = false;
        frame::TransportInfo transport;
        transport.peer = connection->peer();
        owner.onIOConnectionConnected(transport);
    }
}

void IOService::closeConnection(Connection& connection) {
    const auto isIt = [&connection](const std::shared_ptr<Connection>& each) { return each.get() == &connection; };
    std::shared_ptr<Connection> kept;  // to the end of this function
    {
        const locks::Lock lock(mutex);
        const auto found = std::find_if(connections->begin(), connections->end(), isIt);
        kept = *found;
        auto rest = std::make_shared<Connections>(*connections);
        rest->erase(rest->begin() + (found - connections->begin()));
        connections = std::move(rest);
    }
    if (isService()) {
        forget(connection.socket());
        connection.watched = Connection::kUnwatched;
    }
    paused.erase(std::remove_if(paused.begin(), paused.end(), isIt), paused.end());
    GivenQueues::instance().forget(connection.peer());
    // A send that still holds the connection then fails.
    shutdown(connection.socket(), SHUT_RDWR);
    if (connection.dropped > 1) {
        BLOG_TAGGED(blog::kFailure, "peer %u: %llu messages were dropped in all\n", connection.peer(),
                    static_cast<unsigned long long>(connection.dropped));
    }
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    owner.onIOConnectionDisconnected(transport);
}

/// Handles the packet in the receive buffer.
void IOService::take(Connection& connection, std::size_t length, int attached) {
    if (length > Connection::kLargestPacket) {
        drop(connection, "packet is longer than " + std::to_string(Connection::kLargestPacket) + " bytes");
        return;
    }
    std::uint8_t* const packet = receiveBuffer.get();
    const std::string_view text(reinterpret_cast<const char*>(packet), length);
    if (text == kQueueAnnounced) {
        ++connection.queuesAnnounced;
        return;
    }
    if (text.substr(0, kQueueMark.size()) == kQueueMark) {
        connection.queuesAnnounced -= connection.queuesAnnounced == 0 ? 0 : 1;
        takeQueue(connection, std::string(text.substr(kQueueMark.size())), attached);
        return;
    }
    Envelope envelope;
    std::string error;
    if (!unpackEnvelope(packet, length, envelope, error)) {
        drop(connection, error);
        return;
    }
    const frame::MsgMeta& header = envelope.header;
    const auto handler = handlers.find(HandlerKey(header));
    if (handler == handlers.end()) {
        drop(connection, "message " + std::to_string(header.messageId) + " has no handler");
        return;
    }
    const Handler& to = handler->second;
    if (!platform_common::decodeRecordInPlace(*to.table, to.wireSize, packet + kEnvelopeSize, length - kEnvelopeSize,
                                              received, error)) {
        drop(connection, "message " + std::to_string(header.messageId) + ": " + error);
        return;
    }
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    to.function(header, transport, received.record(), to.context);
}

void IOService::takeQueue(Connection& connection, const std::string& name, int attached) {
    std::string error;
    if (!isService()) {
        error = "only clients give queues";
    } else if (attached < 0) {
        error = "its memory did not come with it";
    } else {
        GivenQueues::instance().give(connection.peer(), name, attached, error);
    }
    if (!error.empty()) {
        drop(connection, "section queue " + name.substr(0, GivenQueues::kLongestName) + ": " + error);
    }
}

void IOService::drop(Connection& connection, const std::string& reason) {
    if (++connection.dropped == 1) {
        BLOG_TAGGED(blog::kFailure, "peer %u: %s; dropped, as further ones will be without a line\n", connection.peer(),
                    reason.c_str());
    }
}

}  // namespace host
