// The section queues that this process shares with others: those that it has made, which it offers to every service it
// connects to, and those that its peers have given to it.
// Threads: any.
// Blocks:  never.
// Locks:   one leaf lock for each of the two lists.
// Fails:   give() with the reason.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "locks/lock.h"
#include "section_ring.h"

namespace host {

struct NamedQueue {
    std::string name;
    std::shared_ptr<SectionRing> ring;
};

/// The queues that this process has made, in the order of their making. Never destroyed.
class OwnQueues {
public:
    static OwnQueues& instance();

    void add(const NamedQueue& queue);
    void remove(const std::string& name);
    std::vector<NamedQueue> all();

private:
    std::mutex mutex;
    std::vector<NamedQueue> queues GUARDED_BY(mutex);
};

/// The queues that the peers of this process have given to it. Never destroyed.
class GivenQueues {
public:
    /// Most queues of one peer, and the longest name of one.
    static constexpr std::size_t kMostOfAPeer = 4;
    static constexpr std::size_t kLongestName = 64;

    static GivenQueues& instance();

    /// Maps the memory and keeps the queue, in place of an older one of that name. False with the reason.
    bool give(std::uint32_t peer, const std::string& name, int descriptor, std::string& error);
    /// The peer's queue of that name, or its newest one for an empty name; null if there is none.
    std::shared_ptr<SectionRing> find(std::uint32_t peer, const std::string& name);
    /// The peer has disconnected.
    void forget(std::uint32_t peer);

private:
    std::mutex mutex;
    std::map<std::uint32_t, std::vector<NamedQueue>> byPeer GUARDED_BY(mutex);
};

}  // namespace host
