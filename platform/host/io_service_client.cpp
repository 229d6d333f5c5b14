// A client's transport thread: waits in the receive of its one connection, or looks for its service again and again.
#include <poll.h>
#include <sys/socket.h>

#include "host_log.h"
#include "io_service.h"
#include "settings.h"

namespace host {

namespace {

/// How often a client tries to connect while its service is not running.
constexpr int kRetryMilliseconds = 100;

}  // namespace

void IOService::followService() {
    if (connectionsNow()->empty()) {
        failureTold = true;
        owner.onIOConnectionConnectionFailed({});
    }
    while (!stopping) {
        tellOfNewConnections();
        const Snapshot now = connectionsNow();
        if (now->empty()) {
            pauseBeforeRetry();
            if (!stopping) {
                tryToConnect();
            }
            continue;
        }
        Connection& connection = *now->front();
        while (!stopping && receive(connection, ownInbox, 0) != Received::end) {
        }
        if (!stopping) {
            disconnect(connection);
        }
    }
}

/// Ends early when the service stops.
void IOService::pauseBeforeRetry() {
    pollfd woken{wakeUp, POLLIN, 0};
    poll(&woken, 1, kRetryMilliseconds);
    drainWakeUps();
}

/// Tells a problem once, until it is another one or none.
void IOService::tryToConnect() {
    std::string now;
    const int connected = connectToService(owner.serviceName(), now);
    if (!now.empty() && now != problem) {
        BLOG_TAGGED(blog::kFailure, "%s\n", now.c_str());
    }
    problem = now;
    noteAbsence(connected < 0);
    adopt(connected);
}

/// Notes once that there is no service, until there is one.
void IOService::noteAbsence(bool isAbsent) {
    if (busFile != nullptr && isAbsent && !isAbsenceNoted) {
        busFile->refused(bus::Direction::toService, 0,
                         problem.empty() ? "no service is in " + settings().runDirectory : problem);
    }
    isAbsenceNoted = isAbsent;
}

}  // namespace host
