// Sends packets on a connection.
#include "connection.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host_log.h"
#include "plain_calls.h"
#include "settings.h"

namespace host {

namespace {

constexpr int kQueued = 1;

ssize_t sendWith(int descriptor, const std::uint8_t* packet, std::size_t length, int attachedDescriptor) {
    iovec piece{const_cast<std::uint8_t*>(packet), length};
    alignas(cmsghdr) std::uint8_t control[CMSG_SPACE(sizeof(int))]{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const attached = CMSG_FIRSTHDR(&message);
    attached->cmsg_level = SOL_SOCKET;
    attached->cmsg_type = SCM_RIGHTS;
    attached->cmsg_len = CMSG_LEN(sizeof attachedDescriptor);
    std::memcpy(CMSG_DATA(attached), &attachedDescriptor, sizeof attachedDescriptor);
    return sendmsg(descriptor, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
}

/// Makes one system call. Returns 0 or an error number.
int sendPacket(int descriptor, const std::uint8_t* packet, std::size_t length, const SectionRing* ring) {
    ssize_t sent = 0;
    do {
        sent = ring == nullptr ? plain::send(descriptor, packet, length, MSG_DONTWAIT | MSG_NOSIGNAL)
                               : sendWith(descriptor, packet, length, ring->descriptor());
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

/// The result of two sends, one after the other: an error, else whether something is queued.
int ofBoth(int first, int second) {
    return std::min(first, second) < 0 ? std::min(first, second) : std::max(first, second);
}

bool noRoom(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == ENOBUFS;
}

}  // namespace

Connection::Connection(int connectedSocket, std::uint32_t peerNumber)
    : pace(settings().clientRate),
      descriptor(connectedSocket),
      peerNumber_(peerNumber),
      longestPacket(longestPacketOf(connectedSocket)),
      held(longestPacket) {}

Connection::~Connection() {
    close(descriptor);
}

int Connection::send(const std::uint8_t* packet, std::size_t length, const std::shared_ptr<SectionRing>& ring) {
    const locks::Lock lock(mutex);
    if (held.empty()) {
        return sendNow(packet, length, ring);
    }
    const int before = sendHeldNow();
    return ofBoth(before, sendNow(packet, length, ring));
}

int Connection::hold(const std::uint8_t* message, std::size_t length) {
    const locks::Lock lock(mutex);
    if (isCutOff) {
        return -ENOTCONN;
    }
    if (held.add(message, length)) {
        return 0;
    }
    const int before = sendHeldNow();
    return before < 0 || held.add(message, length) ? before : ofBoth(before, sendNow(message, length, nullptr));
}

int Connection::sendHeld() {
    const locks::Lock lock(mutex);
    return held.empty() ? 0 : sendHeldNow();
}

int Connection::sendHeldNow() {
    const SeveralMessages::Packet packet = held.packet();
    const int result = sendNow(packet.bytes, packet.length, nullptr);
    held.clear();
    return result;
}

int Connection::sendNow(const std::uint8_t* packet, std::size_t length, const std::shared_ptr<SectionRing>& ring) {
    if (isCutOff) {
        return -ENOTCONN;
    }
    // Behind packets that wait it would wait too, for room that never comes.
    const bool isTooLong = length > longestPacket;
    const int error = isTooLong          ? EMSGSIZE
                      : outgoing.empty() ? sendPacket(descriptor, packet, length, ring.get())
                                         : EAGAIN;
    if (error == 0) {
        return 0;
    }
    if (error == EMSGSIZE) {
        BLOG_TAGGED(blog::kFailure, "message of %zu bytes does not fit a packet; not sent\n", length);
        return -EMSGSIZE;
    }
    if (!noRoom(error)) {
        return -ENOTCONN;
    }
    if (waitingBytes + length > kMostWaiting) {
        BLOG_TAGGED(blog::kFailure, "peer %u has stalled with %zu bytes waiting; cut off\n", peerNumber_, waitingBytes);
        isCutOff = true;
        shutdown(descriptor, SHUT_RDWR);
        return -ENOTCONN;
    }
    waitingBytes += length;
    outgoing.push_back({{packet, packet + length}, ring});
    return kQueued;
}

void Connection::cutOff() {
    const locks::Lock lock(mutex);
    isCutOff = true;
    shutdown(descriptor, SHUT_RDWR);
}

bool Connection::waiting() {
    const locks::Lock lock(mutex);
    return !outgoing.empty();
}

bool Connection::flush() {
    const locks::Lock lock(mutex);
    while (!outgoing.empty()) {
        Packet& packet = outgoing.front();
        const int error = sendPacket(descriptor, packet.bytes.data(), packet.bytes.size(), packet.ring.get());
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
