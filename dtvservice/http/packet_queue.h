// PacketQueue: the packets that one reader of the stream has not read yet.
// Threads: put() on the loop's thread, take() on the reader's; end() on any.
// Blocks:  take() until there are packets, or for a time; the others never.
// Locks:   mutex guards the packets; it is held for a copy of one packet at most.
// Fails:   put() drops a packet that has no room.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "locks/lock.h"

namespace dtvservice {

class PacketQueue {
public:
    /// Bytes: about three seconds at 10 Mbit/s.
    static constexpr std::size_t kMost = 4U << 20U;

    enum class Put { taken, dropped, ended };

    Put put(const std::uint8_t* packet) EXCLUDES(mutex);
    /// Copies bytes of the oldest packets and returns their number; 0 after end(), or if none has come for `longest`.
    /// Packets that come within a few milliseconds are taken together.
    std::size_t take(char* to, std::size_t most, std::chrono::milliseconds longest) EXCLUDES(mutex);
    /// The reader takes no more, or shall get no more.
    void end() EXCLUDES(mutex);
    bool isEnded() EXCLUDES(mutex);

private:
    bool refill(std::chrono::milliseconds longest) EXCLUDES(mutex);

    std::mutex mutex;
    std::condition_variable filled;
    std::string waiting GUARDED_BY(mutex);
    bool ended GUARDED_BY(mutex) = false;
    std::string taken;  // the reader's
    std::size_t given = 0;
};

}  // namespace dtvservice
