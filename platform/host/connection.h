// Connection: one socket to one peer process. Packets leave in the order of their sends; what the socket does not take
// at once waits in a bounded queue, which the transport thread flushes.
// Threads: send() from any; the rest on the transport thread.
// Blocks:  never.
// Locks:   mutex guards the outgoing queue and the order on the socket.
// Fails:   with negative error numbers.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace host {

class Connection {
public:
    /// Bytes that may wait for a peer. One that falls further behind has stalled and is cut off.
    static constexpr std::size_t kMostWaiting = 4U << 20U;

    /// Takes the descriptor over.
    Connection(int connectedSocket, std::uint32_t peerNumber);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    int socket() const { return descriptor; }
    std::uint32_t peer() const { return peerNumber_; }

    /// Sends a packet of two pieces with one system call, or queues it; 1 when it is queued and the transport thread
    /// has to watch for room, 0 when it is sent, negative when it is neither.
    int send(const void* head, std::size_t headLength, const void* body, std::size_t bodyLength);
    /// Whether packets wait for room.
    bool waiting();
    /// Sends what waits; false when the connection has failed.
    bool flush();

    // For the transport thread alone.
    std::uint64_t dropped = 0;  ///< messages received that could not be used; the first is logged

private:
    const int descriptor;
    const std::uint32_t peerNumber_;
    std::mutex mutex;
    std::deque<std::vector<std::uint8_t>> outgoing;  // guarded by mutex
    std::size_t waitingBytes = 0;                    // guarded by mutex
    bool stalled = false;                            // guarded by mutex
};

/// True when the process at the other end runs as our own user.
bool peerIsOurs(int socket);

}  // namespace host
