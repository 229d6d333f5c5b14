// The processes at the other ends of this process's connections.
// Threads: any.
// Blocks:  never.
// Locks:   a leaf lock.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "locks/lock.h"

namespace host {

/// Never destroyed.
class PeerProcesses {
public:
    static PeerProcesses& instance();

    /// Asks the system whose the other end of the socket is.
    void add(std::uint32_t peer, int socket);
    void forget(std::uint32_t peer);
    /// 0 for an unknown one.
    std::uint32_t find(std::uint32_t peer);
    /// Ends the connection of the peer. False for an unknown one.
    bool cutOff(std::uint32_t peer);

private:
    struct Peer {
        std::uint32_t process = 0;
        int socket = -1;  // open until the peer is forgotten
    };

    std::mutex mutex;
    std::map<std::uint32_t, Peer> byPeer GUARDED_BY(mutex);
};

}  // namespace host
