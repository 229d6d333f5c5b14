// A service's transport thread: accepts clients, flushes what waited, receives from clients that have no follower.
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "descriptors.h"
#include "host_log.h"
#include "io_service.h"
#include "plain_calls.h"

namespace host {

namespace {

/// How often a service tries to accept a client that must wait.
constexpr int kRetryMilliseconds = 100;
constexpr int kForever = -1;
/// Most packets read from one connection before the next connection is served: many while it is the only one that has
/// packets, and few while others wait for their turn.
constexpr int kPacketsInARow = 64;
constexpr int kPacketsInTurn = 4;
constexpr int kMostReady = 64;  // sockets looked at in one turn; the others come first in the next

/// `what` comes back with each event of the socket.
bool control(int sockets, int operation, int descriptor, std::uint32_t events, void* what) {
    epoll_event watched{};
    watched.events = events;
    watched.data.ptr = what;
    return epoll_ctl(sockets, operation, descriptor, &watched) == 0;
}

}  // namespace

bool IOService::makeSockets() {
    sockets = aboveStandard(epoll_create1(EPOLL_CLOEXEC));
    return sockets >= 0 && control(sockets, EPOLL_CTL_ADD, wakeUp, EPOLLIN, this);
}

void IOService::serve() {
    control(sockets, EPOLL_CTL_ADD, endpoint.socket(), EPOLLIN, &endpoint);
    while (!stopping) {
        serveOnce();
    }
    endFollowers();
    forget(endpoint.socket());
}

/// Before the socket is closed: a forked child may have it open, and it would then stay in the set.
void IOService::forget(int descriptor) const {
    control(sockets, EPOLL_CTL_DEL, descriptor, 0, nullptr);
}

void IOService::watch(Connection& connection, std::uint32_t events) const {
    if (connection.watched != events) {
        const int operation = connection.watched == Connection::kUnwatched ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
        control(sockets, operation, connection.socket(), events, &connection);
        connection.watched = events;
    }
}

void IOService::unwatch(Connection& connection) const {
    if (connection.watched != Connection::kUnwatched) {
        forget(connection.socket());
        connection.watched = Connection::kUnwatched;
    }
}

void IOService::serveOnce() {
    if (hasNews.exchange(false)) {
        joinEndedFollowers();
        tellOfNewConnections();
        awaitRoom();
    }
    int patience = resumePaused();
    if (isAcceptPaused) {
        patience = patience == kForever ? kRetryMilliseconds : std::min(patience, kRetryMilliseconds);
    }
    epoll_event events[kMostReady];
    const int ready = plain::epollWait(sockets, events, kMostReady, patience);
    if (std::exchange(isAcceptPaused, false)) {
        control(sockets, EPOLL_CTL_MOD, endpoint.socket(), EPOLLIN, &endpoint);
    }
    const auto end = events + std::max(ready, 0);
    const auto clients = std::count_if(
        events, end, [this](const epoll_event& each) { return each.data.ptr != this && each.data.ptr != &endpoint; });
    const int mostPackets = clients > 1 ? kPacketsInTurn : kPacketsInARow;
    bool mayAccept = false;
    for (const epoll_event* event = events; event != end && !stopping; ++event) {
        if (event->data.ptr == this) {
            drainWakeUps();
        } else if (event->data.ptr == &endpoint) {
            mayAccept = true;
        } else if (auto& client = *static_cast<Connection*>(event->data.ptr); client.isFollowed) {
            flushFollowed(client);
        } else if (!serveClient(client, event->events, mostPackets)) {
            disconnect(client);
        }
    }
    if (mayAccept && !stopping) {
        tryToAccept();
    }
}

/// Watches the sockets of connections where packets wait for room.
void IOService::awaitRoom() {
    Connections now;
    {
        const locks::Lock lock(mutex);
        now.swap(waiting);
    }
    for (const std::shared_ptr<Connection>& connection : now) {
        if (connection->isFollowed) {
            watch(*connection, EPOLLOUT);
        } else if (connection->watched != Connection::kUnwatched) {
            watch(*connection, connection->watched | EPOLLOUT);
        }
    }
}

void IOService::flushFollowed(Connection& connection) const {
    if (!connection.flush() || !connection.waiting()) {
        unwatch(connection);
    }
}

/// Whether the client has sent so much that it must wait.
bool IOService::isTooFast(const Connection& connection, Now now) {
    return connection.pace.isLimited() && !connection.pace.mayRead(now);
}

void IOService::pause(Connection& connection) {
    watch(connection, connection.watched & ~std::uint32_t{EPOLLIN});
    paused.push_back(connection.shared_from_this());
}

/// Watches those again that have paused long enough. Returns how long the next one pauses, in milliseconds.
int IOService::resumePaused() {
    if (paused.empty()) {
        return kForever;
    }
    const Now now = ReadingPace::Clock::now();
    int patience = kForever;
    for (const std::shared_ptr<Connection>& connection : std::exchange(paused, {})) {
        if (isTooFast(*connection, now)) {
            const int until = connection->pace.millisecondsFrom(now);
            patience = patience == kForever ? until : std::min(patience, until);
            paused.push_back(connection);
        } else {
            watch(*connection, connection->watched | EPOLLIN);
        }
    }
    return patience;
}

/// False when the client has disconnected.
bool IOService::serveClient(Connection& connection, std::uint32_t ready, int mostPackets) {
    bool isFlushed = true;
    if ((ready & EPOLLOUT) != 0) {
        isFlushed = connection.flush();
        if (!connection.waiting()) {
            watch(connection, connection.watched & ~std::uint32_t{EPOLLOUT});
        }
    }
    const bool hasGone = !isFlushed || (ready & (EPOLLHUP | EPOLLERR)) != 0;
    // What the client has sent before it went is handled first.
    return (ready & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 ? receiveSome(connection, mostPackets, hasGone) : isFlushed;
}

/// False when the client has disconnected. What is left of one that has gone is read at once, because its socket would
/// wake the thread again and again.
bool IOService::receiveSome(Connection& connection, int mostPackets, bool hasGone) {
    for (int count = 0; count < mostPackets && !stopping; ++count) {
        const Now now = connection.pace.isLimited() ? ReadingPace::Clock::now() : Now();
        if (!hasGone && isTooFast(connection, now)) {
            pause(connection);
            return true;
        }
        const Received received = receive(connection, ownInbox, MSG_DONTWAIT);
        if (received == Received::nothing && count > 0) {
            connection.burst.foundNone();
        }
        if (received != Received::packet) {
            return received != Received::end;
        }
        if (count > 0) {
            connection.burst.found();
        }
        connection.pace.read(now);
        if (count == 0 && !hasGone && !connection.burst.looks()) {
            return true;
        }
    }
    return true;
}

/// A client that cannot be accepted stays in the queue of the socket, which would wake the thread again at once.
void IOService::tryToAccept() {
    std::string now;
    const int accepted = endpoint.accept(now);
    isAcceptPaused = !now.empty();
    if (isAcceptPaused) {
        control(sockets, EPOLL_CTL_MOD, endpoint.socket(), 0, &endpoint);
    }
    if (!now.empty() && now != problem) {
        BLOG_TAGGED(blog::kFailure, "clients must wait: %s\n", now.c_str());
    }
    problem = now;
    adopt(accepted);
}

}  // namespace host
