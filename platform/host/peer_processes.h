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

private:
    std::mutex mutex;
    std::map<std::uint32_t, std::uint32_t> byPeer GUARDED_BY(mutex);
};

}  // namespace host
