// StreamReaders: the readers of the stream, for the threads of the HTTP server.
// Threads: any.
// Blocks:  never.
// Locks:   mutex guards the list.
// Fails:   add() gives none beyond the most readers.
#pragma once

#include <memory>
#include <mutex>
#include <set>

#include "packet_queue.h"

namespace dtvservice {

class StreamReaders {
public:
    explicit StreamReaders(std::size_t newMost) : most(newMost) {}

    /// A new reader's queue; null if there are too many readers, or after endAll().
    std::shared_ptr<PacketQueue> add() EXCLUDES(mutex) {
        const locks::Lock lock(mutex);
        if (isOver || queues.size() >= most) {
            return nullptr;
        }
        return *queues.insert(std::make_shared<PacketQueue>()).first;
    }
    void remove(const std::shared_ptr<PacketQueue>& queue) EXCLUDES(mutex) {
        queue->end();
        const locks::Lock lock(mutex);
        queues.erase(queue);
    }
    /// No reader gets any more.
    void endAll() EXCLUDES(mutex) {
        std::set<std::shared_ptr<PacketQueue>> all;
        {
            const locks::Lock lock(mutex);
            isOver = true;
            all = queues;
        }
        for (const std::shared_ptr<PacketQueue>& queue : all) {
            queue->end();
        }
    }

private:
    const std::size_t most;
    std::mutex mutex;
    std::set<std::shared_ptr<PacketQueue>> queues GUARDED_BY(mutex);
    bool isOver GUARDED_BY(mutex) = false;
};

}  // namespace dtvservice
