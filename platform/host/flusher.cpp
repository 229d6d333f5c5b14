// The thread that flushes connections, one after the other: a client has one, and those of before fail at once.
#include "flusher.h"

#include <poll.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "host_log.h"

namespace host {

bool Flusher::watch(const std::shared_ptr<Connection>& connection) {
    const locks::Lock lock(mutex);
    if (std::find(watched.begin(), watched.end(), connection) == watched.end()) {
        watched.push_back(connection);
    }
    if (!thread.joinable()) {
        stopping = false;
        try {
            thread = std::thread([this] { run(); });
        } catch (const std::system_error& error) {
            BLOG_TAGGED(blog::kFailure, "no thread for packets that wait: %s\n", error.what());
            watched.pop_back();
            return false;
        }
    }
    changed.notify_one();
    return true;
}

void Flusher::stop() {
    std::thread ending;
    {
        const locks::Lock lock(mutex);
        stopping = true;
        ending.swap(thread);
    }
    changed.notify_one();
    if (ending.joinable()) {
        ending.join();
    }
}

void Flusher::run() {
    while (true) {
        std::shared_ptr<Connection> connection;
        {
            locks::Lock lock(mutex);
            changed.wait(lock.forWaiting(), [this]() REQUIRES(mutex) { return stopping || !watched.empty(); });
            if (stopping) {
                watched.clear();
                return;
            }
            connection = std::move(watched.back());
            watched.pop_back();
        }
        // A packet that comes to wait after the last look is told by another watch().
        bool isGood = true;
        while (isGood && connection->waiting()) {
            pollfd room{connection->socket(), POLLOUT, 0};
            poll(&room, 1, -1);
            isGood = connection->flush();
        }
    }
}

}  // namespace host
