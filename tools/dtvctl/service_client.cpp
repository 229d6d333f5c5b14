// Connects and asks.
#include "service_client.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace dtvctl {

using nlohmann::json;

namespace {

control::Connection connectedTo(const std::string& path) {
    std::string error;
    control::Connection connection = control::Connection::connectTo(path, error);
    if (!connection) {
        throw NoService(error);
    }
    const std::optional<uid_t> server = connection.peerUser();
    if (!server || !mayServe(*server, geteuid())) {
        throw Refused(path + ": served by " + (server ? "user " + std::to_string(*server) : "an unknown user") +
                      ", neither this user nor root; not used");
    }
    return connection;
}

}  // namespace

ServiceClient::ServiceClient(const std::string& path, std::chrono::seconds newPatience)
    : connection(connectedTo(path)), patience(newPatience) {
    connection.waitAtMost(patience);
}

json ServiceClient::ask(const json& request) {
    std::optional<std::string> line;
    if (connection.sendLine(request.dump(-1, ' ', false, json::error_handler_t::replace), patience)) {
        errno = 0;
        line = connection.receiveAnswer();
    }
    if (!line) {
        throw NoService(errno == EAGAIN ? "the service does not answer" : "the service has gone");
    }
    return readAnswer(*line);
}

control::Connection ServiceClient::release() {
    connection.waitAtMost(std::chrono::seconds(0));
    return std::move(connection);
}

/// Whatever shows, copies or compares an answer goes down all of its levels, so a deep one would exhaust the stack.
json readAnswer(const std::string& line) {
    constexpr int kDeepest = 32;
    bool isTooDeep = false;
    const auto keep = [&isTooDeep](int depth, json::parse_event_t, const json&) {
        isTooDeep = isTooDeep || depth > kDeepest;
        return !isTooDeep;
    };
    json answer = json::parse(line, keep, false);
    if (isTooDeep || !answer.is_object() || !answer.contains("ok") || !answer["ok"].is_boolean()) {
        throw NoService("what serves the socket does not answer as the service does");
    }
    if (!answer["ok"].get<bool>()) {
        const auto error = answer.find("error");
        throw Refused(error != answer.end() && error->is_string() ? error->get<std::string>() : "refused");
    }
    return answer;
}

}  // namespace dtvctl
