// Flusher: sends what waits in a connection as soon as its socket has room. A client's transport thread waits in a
// receive and cannot do it. Its thread begins with the first packet that waits: usually there is none.
// Threads: any.
// Blocks:  stop() until the thread has ended.
// Locks:   mutex guards the list of connections; it is not held during a flush or a wait for room.
// Fails:   watch(), when no thread can be made.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "connection.h"
#include "locks/lock.h"

namespace host {

class Flusher {
public:
    Flusher() = default;
    Flusher(const Flusher&) = delete;
    Flusher& operator=(const Flusher&) = delete;
    ~Flusher() { stop(); }

    /// Flushes the connection, which has waiting packets. False, with a line, when there is no thread for it.
    bool watch(const std::shared_ptr<Connection>& connection) EXCLUDES(mutex);
    /// The sockets of the connections must have been shut down, so that no wait for room goes on.
    void stop() EXCLUDES(mutex);

private:
    void run() EXCLUDES(mutex);

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::shared_ptr<Connection>> watched GUARDED_BY(mutex);
    bool stopping GUARDED_BY(mutex) = false;
    std::thread thread GUARDED_BY(mutex);
};

}  // namespace host
