// Packets that wait for a reader.
#include "packet_queue.h"

#include <algorithm>

#include "ts_packet.h"

namespace dtvservice {

namespace {

/// Packets that are worth waking the reader for; fewer are taken after kPatience.
constexpr std::size_t kBatch = 64 * broadcast::kPacketSize;
constexpr std::chrono::milliseconds kPatience{20};

}  // namespace

PacketQueue::Put PacketQueue::put(const std::uint8_t* packet) {
    const locks::Lock lock(mutex);
    if (ended) {
        return Put::ended;
    }
    if (waiting.size() + broadcast::kPacketSize > kMost) {
        return Put::dropped;
    }
    waiting.append(reinterpret_cast<const char*>(packet), broadcast::kPacketSize);
    if (waiting.size() >= kBatch && waiting.size() < kBatch + broadcast::kPacketSize) {
        filled.notify_one();
    }
    return Put::taken;
}

std::size_t PacketQueue::take(char* to, std::size_t most, std::chrono::milliseconds longest) {
    if (given == taken.size() && !refill(longest)) {
        return 0;
    }
    const std::size_t count = std::min(most, taken.size() - given);
    taken.copy(to, count, given);
    given += count;
    return count;
}

/// Exchanges the buffers, so that the lock is held for a moment only.
bool PacketQueue::refill(std::chrono::milliseconds longest) {
    const auto until = std::chrono::steady_clock::now() + longest;
    taken.clear();
    given = 0;
    locks::Lock lock(mutex);
    while (!ended && waiting.size() < kBatch && std::chrono::steady_clock::now() < until) {
        const bool isLate = filled.wait_for(lock.forWaiting(), kPatience) == std::cv_status::timeout;
        if (isLate && !waiting.empty()) {
            break;
        }
    }
    if (!ended) {
        taken.swap(waiting);
    }
    return !taken.empty();
}

void PacketQueue::end() {
    {
        const locks::Lock lock(mutex);
        ended = true;
    }
    filled.notify_one();
}

bool PacketQueue::isEnded() {
    const locks::Lock lock(mutex);
    return ended;
}

}  // namespace dtvservice
