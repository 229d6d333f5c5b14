// What all threads that receive have in common: connections come and go, messages are handled.
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "envelope.h"
#include "host_log.h"
#include "io_service.h"
#include "peer_processes.h"
#include "plain_calls.h"
#include "several_messages.h"

namespace host {

namespace {

std::uint32_t nextPeerNumber() {
    static std::atomic<std::uint32_t> last{0};
    return ++last;
}

/// A packet in the receive buffer, with the descriptors that came with it; closes them.
class ReceivedPacket {
public:
    /// `length` is that of the packet, whatever its buffer has room for; 0 at the end; negative for none, with errno.
    ReceivedPacket(int socket, std::uint8_t* buffer, std::size_t room, bool mayHaveDescriptors, int flags) {
        if (!mayHaveDescriptors) {
            length = plain::recv(socket, buffer, room, flags | MSG_TRUNC);
            return;
        }
        iovec piece{buffer, room};
        alignas(cmsghdr) std::uint8_t control[CMSG_SPACE(sizeof(int))];
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        length = recvmsg(socket, &message, flags | MSG_TRUNC | MSG_CMSG_CLOEXEC);
        // An empty packet, which is taken for the end, may have descriptors too.
        if (length >= 0) {
            take(message);
        }
    }
    ReceivedPacket(const ReceivedPacket&) = delete;
    ReceivedPacket& operator=(const ReceivedPacket&) = delete;
    ~ReceivedPacket() {
        for (const int descriptor : descriptors) {
            close(descriptor);
        }
    }
    /// The first descriptor, or -1.
    int attached() const { return descriptors.empty() ? -1 : descriptors.front(); }

    ssize_t length = 0;

private:
    void take(msghdr& message) {
        for (cmsghdr* each = CMSG_FIRSTHDR(&message); each != nullptr; each = CMSG_NXTHDR(&message, each)) {
            if (each->cmsg_level == SOL_SOCKET && each->cmsg_type == SCM_RIGHTS) {
                const std::size_t start = descriptors.size();
                descriptors.resize(start + (each->cmsg_len - CMSG_LEN(0)) / sizeof(int));
                std::memcpy(descriptors.data() + start, CMSG_DATA(each), (descriptors.size() - start) * sizeof(int));
            }
        }
    }

    std::vector<int> descriptors;
};

}  // namespace

bool IOService::Inbox::makeRoom() {
    // Not set to zero: what no packet fills takes no memory. The decoder needs a byte behind a packet.
    packet.reset(new (std::nothrow) std::uint8_t[Connection::kLargestPacket + 1]);
    return packet != nullptr;
}

void IOService::run() {
    if (isService()) {
        serve();
    } else {
        followService();
    }
    tellOfNewConnections();
    const Snapshot now = connectionsNow();
    for (const std::shared_ptr<Connection>& connection : *now) {
        disconnect(*connection);
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
    if (busFile != nullptr) {
        busFile->connected();
    }
    PeerProcesses::instance().add(connection->peer(), connectedSocket);
    {
        const locks::Lock lock(mutex);
        if (!isService()) {
            // The lock keeps back the first command until the queues are sent. A queue that is made meanwhile is among
            // these or finds the connection afterwards. It may be sent twice, which does no harm.
            waits = give(*connection, OwnQueues::instance().all());
        }
        auto more = std::make_shared<Connections>(*connections);
        more->push_back(connection);
        replaceConnections(std::move(more));
    }
    if (waits) {
        letFlush(connection);
    }
    if (isService() && startFollower(connection)) {
        return;
    }
    {
        const locks::Lock lock(mutex);
        untold.push_back(connection);
        hasNews = true;
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
        tellOfConnection(*connection);
    }
}

void IOService::tellOfConnection(const Connection& connection) {
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    const Turns::Turn turn(turnsOfHandlers());
    owner.onIOConnectionConnected(transport);
}

/// On the transport thread, for a connection without a follower.
void IOService::disconnect(Connection& connection) {
    const auto isIt = [&connection](const std::shared_ptr<Connection>& each) { return each.get() == &connection; };
    unwatch(connection);
    paused.erase(std::remove_if(paused.begin(), paused.end(), isIt), paused.end());
    closeConnection(connection);
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
        replaceConnections(std::move(rest));
    }
    releaseFormer();
    GivenQueues::instance().forget(connection.peer());
    // A send that still holds the connection then fails.
    shutdown(connection.socket(), SHUT_RDWR);
    if (busFile != nullptr) {
        busFile->disconnected();
    }
    if (connection.dropped > 1) {
        BLOG_TAGGED(blog::kFailure, "peer %u: %llu messages were dropped in all\n", connection.peer(),
                    static_cast<unsigned long long>(connection.dropped));
    }
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    const Turns::Turn turn(turnsOfHandlers());
    owner.onIOConnectionDisconnected(transport);
    PeerProcesses::instance().forget(connection.peer());
}

/// Receives one packet and handles it. With MSG_DONTWAIT there may be nothing; else only after a signal.
IOService::Received IOService::receive(Connection& connection, Inbox& inbox, int flags) {
    const ReceivedPacket packet(connection.socket(), inbox.packet.get(), Connection::kLargestPacket,
                                connection.queuesAnnounced != 0, flags);
    if (packet.length < 0 && errno == ECONNRESET) {
        // The peer has gone and had not read everything. Its last packets are still there.
        return receive(connection, inbox, flags);
    }
    if (packet.length < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? Received::nothing : Received::end;
    }
    if (packet.length == 0 || stopping) {
        return Received::end;
    }
    const auto length = static_cast<std::size_t>(packet.length);
    if (length <= Connection::kLargestPacket && beginsEnvelope(inbox.packet.get(), length)) {
        takeMessage(connection, inbox, inbox.packet.get(), length);
    } else {
        takeOther(connection, inbox, length, packet.attached());
    }
    return Received::packet;
}

/// Handles a packet that does not begin as a message. One that is nothing at all is dropped as an unreadable message.
void IOService::takeOther(Connection& connection, Inbox& inbox, std::size_t length, int attached) {
    if (length > Connection::kLargestPacket) {
        drop(connection, "packet is longer than " + std::to_string(Connection::kLargestPacket) + " bytes");
        return;
    }
    const std::string_view text(reinterpret_cast<const char*>(inbox.packet.get()), length);
    if (text == kQueueAnnounced) {
        ++connection.queuesAnnounced;
        return;
    }
    if (text.substr(0, kQueueMark.size()) == kQueueMark) {
        connection.queuesAnnounced -= connection.queuesAnnounced == 0 ? 0 : 1;
        takeQueue(connection, std::string(text.substr(kQueueMark.size())), attached);
        return;
    }
    if (!isService() && text.substr(0, kSeveralMark.size()) == kSeveralMark) {
        takeSeveral(connection, inbox, length);
        return;
    }
    takeMessage(connection, inbox, inbox.packet.get(), length);
}

/// A service takes none: it counts the packets of a client that sends too much, and not their messages.
void IOService::takeSeveral(Connection& connection, Inbox& inbox, std::size_t length) {
    ReceivedMessages messages(inbox.packet.get() + kSeveralMark.size(), length - kSeveralMark.size());
    ReceivedMessages::Message message{};
    std::string error;
    while (!stopping && messages.next(message, error)) {
        takeMessage(connection, inbox, message.bytes, message.length);
    }
    if (!error.empty()) {
        drop(connection, error);
    }
}

/// Handles a message, behind which there is room for a byte.
void IOService::takeMessage(Connection& connection, Inbox& inbox, std::uint8_t* packet, std::size_t length) {
    const std::string_view text(reinterpret_cast<const char*>(packet), length);
    Envelope envelope;
    std::string error;
    if (!unpackEnvelope(packet, length, envelope, error)) {
        drop(connection, error);
        return;
    }
    const frame::MsgMeta& header = envelope.header;
    if (busFile != nullptr) {
        busFile->message(bus::Direction::toBrowser, header.messageId, text.substr(kEnvelopeSize));
    }
    const auto handler = handlers.find(HandlerKey(header));
    if (handler == handlers.end()) {
        drop(connection, "message " + std::to_string(header.messageId) + " has no handler", header.messageId);
        return;
    }
    const Handler& to = handler->second;
    if (!platform_common::decodeRecordInPlace(*to.table, to.wireSize, packet + kEnvelopeSize, length - kEnvelopeSize,
                                              inbox.record, error)) {
        drop(connection, "message " + std::to_string(header.messageId) + ": " + error, header.messageId);
        return;
    }
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    const Turns::Turn turn(turnsOfHandlers());
    if (!stopping) {
        to.function(header, transport, inbox.record.record(), to.context);
    }
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

/// `message` is its identifier, as far as it is known.
void IOService::drop(Connection& connection, const std::string& reason, std::uint32_t message) {
    if (busFile != nullptr) {
        busFile->refused(bus::Direction::toBrowser, message, reason);
    }
    if (++connection.dropped == 1) {
        BLOG_TAGGED(blog::kFailure, "peer %u: %s; dropped, as further ones will be without a line\n", connection.peer(),
                    reason.c_str());
    }
}

}  // namespace host
