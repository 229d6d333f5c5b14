// Operators' connections.
#include "operator_server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "loop_question.h"
#include "service_log.h"

namespace dtvservice {

namespace {

bool asksToMonitor(const std::string& request) {
    const nlohmann::json read = nlohmann::json::parse(request, nullptr, false);
    const auto command = read.is_object() ? read.find("command") : read.end();
    return command != read.end() && *command == "monitor";
}

}  // namespace

OperatorServer::OperatorServer(const std::string& path, EventLoop& newLoop, BusTap& newTap, Handler newHandler)
    : listener(path, error_), loop(newLoop), tap(newTap), handler(std::move(newHandler)) {
    if (!listener) {
        return;
    }
    wakeUp = eventfd(0, EFD_CLOEXEC);
    if (wakeUp < 0) {
        error_ = path + ": no descriptor to end it by: " + std::strerror(errno);
        return;
    }
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& refused) {
        error_ = path + ": no thread: " + refused.what();
    }
}

OperatorServer::~OperatorServer() {
    if (thread.joinable()) {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
        thread.join();
        close(wakeUp);
    }
}

void OperatorServer::run() {
    std::list<control::Connection> connections;
    while (true) {
        // An operator who cannot be accepted stays in the queue of the socket, which would end each wait at once.
        constexpr int kPause = 100;
        const bool acceptLater = !problem.empty();
        std::vector<pollfd> waits = {{wakeUp, POLLIN, 0}, {acceptLater ? -1 : listener.fd(), POLLIN, 0}};
        for (const control::Connection& connection : connections) {
            waits.push_back({connection.fd(), POLLIN, 0});
        }
        constexpr int kMonitorPace = static_cast<int>(MonitorConnections::kPace.count());
        poll(waits.data(), waits.size(), !monitors.empty() ? kMonitorPace : acceptLater ? kPause : -1);
        monitors.serve();
        if (waits[0].revents != 0) {
            return;
        }
        std::size_t index = 2;
        for (auto connection = connections.begin(); connection != connections.end(); ++index) {
            const bool stays = waits[index].revents == 0 || serve(*connection);
            connection = stays ? std::next(connection) : connections.erase(connection);
        }
        if (acceptLater || waits[1].revents != 0) {
            accept(connections);
        }
    }
}

void OperatorServer::accept(std::list<control::Connection>& connections) {
    std::string now;
    if (control::Connection connection = listener.accept(now)) {
        connections.push_back(std::move(connection));
    }
    if (!now.empty() && now != problem) {
        BLOG_TAGGED(blog::kFailure, "operators must wait: %s\n", now.c_str());
    }
    problem = now;
}

/// Answers all complete lines; false if the connection must be closed.
bool OperatorServer::serve(control::Connection& connection) {
    if (!connection.fill()) {
        return false;
    }
    // A client that reads its answers slowly must not delay the others for long.
    constexpr std::chrono::seconds kLongestSend{1};
    while (const std::optional<std::string> request = connection.takeLine()) {
        if (asksToMonitor(*request)) {
            return startMonitor(connection);
        }
        if (!connection.sendLine(answer(*request), kLongestSend)) {
            return false;
        }
    }
    return !connection.isTooLong();
}

/// False: the connection has left, or must be closed.
bool OperatorServer::startMonitor(control::Connection& connection) {
    constexpr std::chrono::seconds kLongestSend{1};
    const std::optional<BusTap::Monitor> monitor = tap.join();
    const char* const answer = monitor ? R"({"ok":true})" : R"({"ok":false,"error":"as many monitors watch as may"})";
    if (connection.sendLine(answer, kLongestSend) && monitor) {
        monitors.add(std::move(connection), *monitor);
    } else if (monitor) {
        tap.leave(*monitor);
    }
    return false;
}

/// The loop stops before this object is destroyed. A request that it no longer runs would never be answered, so the
/// wait for an answer also ends on the wake-up.
std::string OperatorServer::answer(const std::string& request) {
    const auto isEnding = [this] {
        pollfd end = {wakeUp, POLLIN, 0};
        return poll(&end, 1, 0) > 0;
    };
    return askLoop(
               loop, [this, request] { return handler(request); }, isEnding)
        .value_or(R"({"ok":false,"error":"the service is ending"})");
}

}  // namespace dtvservice
