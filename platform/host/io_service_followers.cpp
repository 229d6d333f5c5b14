// A service's followers: each waits in the receive of one client.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <system_error>

#include "io_service.h"

namespace host {

/// False when the client must share the transport thread.
bool IOService::startFollower(const std::shared_ptr<Connection>& connection) {
    Inbox inbox;
    if (followers.size() >= kMostFollowers || !inbox.makeRoom()) {
        return false;
    }
    followers.reserve(kMostFollowers);
    connection->isFollowed = true;
    try {
        followers.push_back({connection, std::thread([this, &client = *connection, own = std::move(inbox)]() mutable {
                                 follow(client, own);
                             })});
    } catch (const std::system_error&) {
        connection->isFollowed = false;
    }
    return connection->isFollowed;
}

void IOService::joinEndedFollowers() {
    std::vector<const Connection*> now;
    {
        const locks::Lock lock(mutex);
        now.swap(unfollowed);
    }
    for (const Connection* ended : now) {
        const auto follower = std::find_if(followers.begin(), followers.end(),
                                           [ended](const Follower& each) { return each.connection.get() == ended; });
        follower->thread.join();
        unwatch(*follower->connection);
        follower->connection->isFollowed = false;
        followers.erase(follower);
    }
}

void IOService::endFollowers() {
    for (const Follower& follower : followers) {
        shutdown(follower.connection->socket(), SHUT_RDWR);
    }
    for (Follower& follower : followers) {
        follower.thread.join();
        unwatch(*follower.connection);
    }
    followers.clear();
}

void IOService::follow(Connection& connection, Inbox& inbox) {
    tellOfConnection(connection);
    for (Received received = Received::nothing; received != Received::end && !stopping;) {
        received = receive(connection, inbox, 0);
        if (received == Received::packet && connection.pace.isLimited()) {
            keepPace(connection);
        }
    }
    closeConnection(connection);
    {
        const locks::Lock lock(mutex);
        unfollowed.push_back(&connection);
        hasNews = true;
    }
    wake();
}

/// A packet has been read. Waits as long as the client has sent too much. What one that has gone has left behind is
/// read at once.
void IOService::keepPace(Connection& connection) const {
    Now now = ReadingPace::Clock::now();
    connection.pace.read(now);
    while (!stopping && isTooFast(connection, now)) {
        pollfd gone{connection.socket(), 0, 0};
        if (poll(&gone, 1, connection.pace.millisecondsFrom(now)) > 0) {
            return;
        }
        now = ReadingPace::Clock::now();
    }
}

}  // namespace host
