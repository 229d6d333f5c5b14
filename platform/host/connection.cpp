// Sends packets on a connection.
#include "connection.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host_log.h"
#include "settings.h"

namespace host {

namespace {

constexpr int kQueued = 1;

/// Makes one system call. Returns 0 or an error number.
int sendPacket(int descriptor, const iovec* pieces, std::size_t count, const SectionRing* ring) {
    msghdr message{};
    message.msg_iov = const_cast<iovec*>(pieces);
    message.msg_iovlen = count;
    alignas(cmsghdr) std::uint8_t control[CMSG_SPACE(sizeof(int))]{};
    if (ring != nullptr) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* const attached = CMSG_FIRSTHDR(&message);
        const int memory = ring->descriptor();
        attached->cmsg_level = SOL_SOCKET;
        attached->cmsg_type = SCM_RIGHTS;
        attached->cmsg_len = CMSG_LEN(sizeof memory);
        std::memcpy(CMSG_DATA(attached), &memory, sizeof memory);
    }
    ssize_t sent = 0;
    do {
        sent = sendmsg(descriptor, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent < 0 ? errno : 0;
}

/// The longest packet that the socket and its receiver take. The system keeps some bytes of the buffer for itself.
std::size_t longestPacketOf(int descriptor) {
    constexpr int kOfTheSystem = 32;
    int buffer = 0;
    socklen_t length = sizeof buffer;
    const bool isKnown = getsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &buffer, &length) == 0 && buffer > kOfTheSystem;
    return isKnown ? std::min(static_cast<std::size_t>(buffer - kOfTheSystem), Connection::kLargestPacket)
                   : Connection::kLargestPacket;
}

bool noRoom(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == ENOBUFS;
}

}  // namespace

Connection::Connection(int connectedSocket, std::uint32_t peerNumber)
    : pace(settings().clientRate),
      descriptor(connectedSocket),
      peerNumber_(peerNumber),
      longestPacket(longestPacketOf(connectedSocket)) {}

Connection::~Connection() {
    close(descriptor);
}

int Connection::send(const void* head, std::size_t headLength, const void* body, std::size_t bodyLength,
                     const std::shared_ptr<SectionRing>& ring) {
    const iovec pieces[] = {{const_cast<void*>(head), headLength}, {const_cast<void*>(body), bodyLength}};
    const locks::Lock lock(mutex);
    if (stalled) {
        return -ENOTCONN;
    }
    // Behind packets that wait it would wait too, for room that never comes.
    const bool isTooLong = headLength + bodyLength > longestPacket;
    const int error = isTooLong ? EMSGSIZE : outgoing.empty() ? sendPacket(descriptor, pieces, 2, ring.get()) : EAGAIN;
    if (error == 0) {
        return 0;
    }
    if (error == EMSGSIZE) {
        BLOG_TAGGED(blog::kFailure, "message of %zu bytes does not fit a packet; not sent\n", headLength + bodyLength);
        return -EMSGSIZE;
    }
    if (!noRoom(error)) {
        return -ENOTCONN;
    }
    if (waitingBytes + headLength + bodyLength > kMostWaiting) {
        BLOG_TAGGED(blog::kFailure, "peer %u has stalled with %zu bytes waiting; cut off\n", peerNumber_, waitingBytes);
        stalled = true;
        shutdown(descriptor, SHUT_RDWR);
        return -ENOTCONN;
    }
    const auto* headBytes = static_cast<const std::uint8_t*>(head);
    const auto* bodyBytes = static_cast<const std::uint8_t*>(body);
    std::vector<std::uint8_t> packet(headBytes, headBytes + headLength);
    packet.insert(packet.end(), bodyBytes, bodyBytes + bodyLength);
    waitingBytes += packet.size();
    outgoing.push_back({std::move(packet), ring});
    return kQueued;
}

bool Connection::waiting() {
    const locks::Lock lock(mutex);
    return !outgoing.empty();
}

bool Connection::flush() {
    const locks::Lock lock(mutex);
    while (!outgoing.empty()) {
        Packet& packet = outgoing.front();
        const iovec piece{packet.bytes.data(), packet.bytes.size()};
        const int error = sendPacket(descriptor, &piece, 1, packet.ring.get());
        if (error != 0) {
            return noRoom(error);
        }
        waitingBytes -= packet.bytes.size();
        outgoing.pop_front();
    }
    return true;
}

bool peerIsOurs(int socket) {
    ucred credentials{};
    socklen_t length = sizeof credentials;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0) {
        return false;
    }
    return credentials.uid == geteuid();
}

}  // namespace host
