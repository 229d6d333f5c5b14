// The transport thread: waits for the sockets, receives packets, flushes queued packets, and keeps the connection
// alive.
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "envelope.h"
#include "host_log.h"
#include "io_service.h"
#include "platform_common/record_image.h"

namespace host {

namespace {

/// How often a client tries to connect while its service is not running, and a service to accept a client that must
/// wait.
constexpr int kRetryMilliseconds = 100;
constexpr int kForever = -1;
/// Most packets read from one connection before the next connection is served: many while it is the only one that has
/// packets, and few while others wait for their turn.
constexpr int kPacketsInARow = 64;
constexpr int kPacketsInTurn = 4;

/// The descriptors that came with a packet; closes them.
class AttachedDescriptors {
public:
    explicit AttachedDescriptors(msghdr& message) {
        for (cmsghdr* each = CMSG_FIRSTHDR(&message); each != nullptr; each = CMSG_NXTHDR(&message, each)) {
            if (each->cmsg_level == SOL_SOCKET && each->cmsg_type == SCM_RIGHTS) {
                const std::size_t start = descriptors.size();
                descriptors.resize(start + (each->cmsg_len - CMSG_LEN(0)) / sizeof(int));
                std::memcpy(descriptors.data() + start, CMSG_DATA(each), (descriptors.size() - start) * sizeof(int));
            }
        }
    }
    AttachedDescriptors(const AttachedDescriptors&) = delete;
    AttachedDescriptors& operator=(const AttachedDescriptors&) = delete;
    ~AttachedDescriptors() {
        for (const int descriptor : descriptors) {
            close(descriptor);
        }
    }
    /// The first one, or -1.
    int first() const { return descriptors.empty() ? -1 : descriptors.front(); }

private:
    std::vector<int> descriptors;
};

std::uint32_t nextPeerNumber() {
    static std::atomic<std::uint32_t> last{0};
    return ++last;
}

}  // namespace

void IOService::run() {
    if (!isService() && connectionsNow().empty()) {
        failureTold = true;
        owner.onIOConnectionConnectionFailed({});
    }
    while (!stopping) {
        tellOfNewConnections();
        pollOnce();
    }
    tellOfNewConnections();
    for (const std::shared_ptr<Connection>& connection : connectionsNow()) {
        closeConnection(connection);
    }
    endpoint.close();
}

void IOService::pollOnce() {
    const Connections polled = connectionsNow();
    const bool lookingForService = !isService() && polled.empty();
    const bool acceptLater = std::exchange(isAcceptPaused, false);
    std::vector<pollfd> descriptors = {{wakeUp, POLLIN, 0}, {acceptLater ? -1 : endpoint.socket(), POLLIN, 0}};
    const auto now = ReadingPace::Clock::now();
    for (const std::shared_ptr<Connection>& connection : polled) {
        const int input = isPaused(*connection, now) ? 0 : POLLIN;
        const int output = connection->waiting() ? POLLOUT : 0;
        descriptors.push_back({connection->socket(), static_cast<short>(input | output), 0});
    }
    poll(descriptors.data(), descriptors.size(), patience(polled, lookingForService || acceptLater, now));
    drainWakeUps();
    const auto readable = std::count_if(descriptors.begin() + 2, descriptors.end(),
                                        [](const pollfd& each) { return (each.revents & POLLIN) != 0; });
    const int mostPackets = readable > 1 ? kPacketsInTurn : kPacketsInARow;
    for (std::size_t index = 0; index < polled.size() && !stopping; ++index) {
        const short ready = descriptors[index + 2].revents;
        const bool isFlushed = (ready & POLLOUT) == 0 || polled[index]->flush();
        const bool hasGone = !isFlushed || (ready & (POLLHUP | POLLERR)) != 0;
        // What the peer has sent before it went is handled first.
        const bool hasMore =
            (ready & (POLLIN | POLLHUP | POLLERR)) != 0 ? receive(*polled[index], mostPackets, hasGone) : isFlushed;
        if (!hasMore) {
            closeConnection(polled[index]);
        }
    }
    if ((descriptors[1].revents & POLLIN) != 0) {
        tryToAccept();
    }
    if (lookingForService && !stopping) {
        tryToConnect();
    }
}

/// Whether the client has sent so much that it must wait. A service's messages are all wanted.
bool IOService::isPaused(const Connection& connection, ReadingPace::Clock::time_point now) const {
    return isService() && connection.pace.isLimited() && !connection.pace.mayRead(now);
}

/// How long to wait for the sockets, in milliseconds, if those of clients that are paused now are not watched.
int IOService::patience(const Connections& polled, bool retries, ReadingPace::Clock::time_point now) const {
    int milliseconds = retries ? kRetryMilliseconds : kForever;
    for (const std::shared_ptr<Connection>& connection : polled) {
        if (isPaused(*connection, now)) {
            const auto rest = std::chrono::ceil<std::chrono::milliseconds>(connection->pace.readableAt() - now);
            const int until = static_cast<int>(rest.count());
            milliseconds = milliseconds == kForever ? until : std::min(milliseconds, until);
        }
    }
    return milliseconds;
}

void IOService::drainWakeUps() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(wakeUp, &count, sizeof count);
}

/// Tells a problem once, until it is another one or none.
void IOService::tryToConnect() {
    std::string now;
    const int connected = connectToService(owner.serviceName(), now);
    if (!now.empty() && now != problem) {
        BLOG_TAGGED(blog::kFailure, "%s\n", now.c_str());
    }
    problem = now;
    adopt(connected);
}

/// A client that cannot be accepted stays in the queue of the socket, which would wake the thread again at once.
void IOService::tryToAccept() {
    std::string now;
    const int accepted = endpoint.accept(now);
    isAcceptPaused = !now.empty();
    if (!now.empty() && now != problem) {
        BLOG_TAGGED(blog::kFailure, "clients must wait: %s\n", now.c_str());
    }
    problem = now;
    adopt(accepted);
}

void IOService::adopt(int connectedSocket) {
    if (connectedSocket < 0) {
        return;
    }
    const auto connection = std::make_shared<Connection>(connectedSocket, nextPeerNumber());
    const locks::Lock lock(mutex);
    if (!isService()) {
        // The lock keeps back the first command until the queues are sent. A queue that is made meanwhile is among
        // these or finds the connection afterwards. It may be sent twice, which does no harm.
        give(*connection, OwnQueues::instance().all());
    }
    connections.push_back(connection);
    untold.push_back(connection);
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

void IOService::closeConnection(const std::shared_ptr<Connection>& connection) {
    {
        const locks::Lock lock(mutex);
        connections.erase(std::remove(connections.begin(), connections.end(), connection), connections.end());
    }
    GivenQueues::instance().forget(connection->peer());
    // A send that still holds the connection then fails.
    shutdown(connection->socket(), SHUT_RDWR);
    if (connection->dropped > 1) {
        BLOG_TAGGED(blog::kFailure, "peer %u: %llu messages were dropped in all\n", connection->peer(),
                    static_cast<unsigned long long>(connection->dropped));
    }
    frame::TransportInfo transport;
    transport.peer = connection->peer();
    owner.onIOConnectionDisconnected(transport);
}

/// False when the peer has disconnected. What is left of one that has gone is read at once, because its socket would
/// wake the thread again and again.
bool IOService::receive(Connection& connection, int mostPackets, bool hasGone) {
    for (int count = 0; count < mostPackets && !stopping; ++count) {
        const auto now = connection.pace.isLimited() ? ReadingPace::Clock::now() : ReadingPace::Clock::time_point();
        if (!hasGone && isPaused(connection, now)) {
            return true;
        }
        iovec piece{receiveBuffer.data(), receiveBuffer.size()};
        alignas(cmsghdr) std::uint8_t control[CMSG_SPACE(sizeof(int))];
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t received = recvmsg(connection.socket(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
        if (received < 0 && errno == ECONNRESET) {
            // The peer has gone and had not read everything. Its last packets are still there.
            continue;
        }
        if (received < 0) {
            return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
        }
        // Before anything else: an empty packet, which is taken for the end, may have descriptors too.
        const AttachedDescriptors attached(message);
        if (received == 0) {
            return false;
        }
        connection.pace.read(now);
        if ((message.msg_flags & MSG_TRUNC) != 0) {
            drop(connection, "packet is longer than " + std::to_string(receiveBuffer.size()) + " bytes");
        } else {
            take(connection, receiveBuffer.data(), static_cast<std::size_t>(received), attached.first());
        }
    }
    return true;
}

void IOService::take(Connection& connection, const std::uint8_t* packet, std::size_t length, int attached) {
    const std::string_view text(reinterpret_cast<const char*>(packet), length);
    if (text.substr(0, kQueueMark.size()) == kQueueMark) {
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
    const auto handler = handlers.find({header.interfaceId, header.messageId, header.direction});
    const std::string name = "message " + std::to_string(header.messageId);
    if (handler == handlers.end()) {
        drop(connection, name + " has no handler");
        return;
    }
    platform_common::DecodedRecord record;
    if (!platform_common::decodeRecord(*handler->second.table, packet + kEnvelopeSize, length - kEnvelopeSize, record,
                                       error)) {
        drop(connection, name + ": " + error);
        return;
    }
    frame::TransportInfo transport;
    transport.peer = connection.peer();
    handler->second.function(header, transport, record.record(), handler->second.context);
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
