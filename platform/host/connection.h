// Connection: one socket to one peer process. Packets leave in the order of their sends. A packet that the socket does
// not accept at once waits in a bounded queue, which another thread flushes when there is room.
// Threads: send(), hold(), sendHeld(), cutOff(), waiting() and flush() from any; the rest as it is said there.
// Blocks:  never.
// Locks:   mutex guards the outgoing queue and the order on the socket.
// Fails:   with negative error numbers.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "burst_guess.h"
#include "locks/lock.h"
#include "reading_pace.h"
#include "section_ring.h"
#include "several_messages.h"

namespace host {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    /// Most bytes that may wait for a peer. A peer that falls further behind has stalled and is disconnected.
    static constexpr std::size_t kMostWaiting = 4U << 20U;

    /// The longest packet that a receiver takes.
    static constexpr std::size_t kLargestPacket = 1U << 20U;

    /// Takes ownership of the socket.
    Connection(int connectedSocket, std::uint32_t peerNumber);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    int socket() const { return descriptor; }
    std::uint32_t peer() const { return peerNumber_; }

    /// Sends a packet with one system call, or queues it. A ring's descriptor is attached to the packet.
    /// 0 when sent; 1 when queued: somebody must then watch for room and flush; negative when neither.
    int send(const std::uint8_t* packet, std::size_t length, const std::shared_ptr<SectionRing>& ring = nullptr);
    /// Keeps the message for a packet of several, which leaves when it is full, by sendHeld(), or before the next send.
    /// Only services do so. 0 when kept; 1 when an older packet was queued by that; negative when not kept.
    int hold(const std::uint8_t* message, std::size_t length);
    /// Sends what is held. As send().
    int sendHeld();
    /// Ends the connection: its receive ends, and sends fail.
    void cutOff();
    /// Whether packets are queued.
    bool waiting();
    /// Sends the queued packets. False when the connection has failed.
    bool flush();

    // Used only by the thread that receives, or by the transport thread.
    std::uint64_t dropped = 0;          ///< unusable messages received; the first one is logged
    ReadingPace pace;                   ///< at which a service reads the client's packets
    std::uint32_t queuesAnnounced = 0;  ///< by a client, and not come yet
    BurstGuess burst;                   ///< whether to look for more packets behind one that was read
    static constexpr std::uint32_t kUnwatched = 0xFFFFFFFF;
    std::uint32_t watched = kUnwatched;  ///< for what a service's transport thread watches the socket
    bool isFollowed = false;             ///< a follower receives, and the rest above is its own

private:
    struct Packet {
        std::vector<std::uint8_t> bytes;
        std::shared_ptr<SectionRing> ring;  // may be null
    };

    int sendNow(const std::uint8_t* packet, std::size_t length, const std::shared_ptr<SectionRing>& ring)
        REQUIRES(mutex);
    int sendHeldNow() REQUIRES(mutex);

    const int descriptor;
    const std::uint32_t peerNumber_;
    const std::size_t longestPacket;
    std::mutex mutex;
    SeveralMessages held GUARDED_BY(mutex);
    std::deque<Packet> outgoing GUARDED_BY(mutex);
    std::size_t waitingBytes GUARDED_BY(mutex) = 0;
    bool isCutOff GUARDED_BY(mutex) = false;
};

/// True when the peer process runs as our own user.
bool peerIsOurs(int socket);

}  // namespace host
