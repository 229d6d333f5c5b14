// ServiceClient: asks the service, and trusts only a service of this user or of root.
// Threads: one.
// Blocks:  ask() until the answer has come, or does not come for ten seconds.
// Fails:   throws NoService if there is no service, it has gone, or does not answer; Refused with the reason if it
//          refuses a request, or must not be trusted.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "control_socket.h"

namespace dtvctl {

struct NoService : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The answer of a line; an answer has only a few levels of nesting.
nlohmann::json readAnswer(const std::string& line);

class ServiceClient {
public:
    /// Connects to the socket. `newPatience`: the longest wait for each part of an answer.
    explicit ServiceClient(const std::string& path, std::chrono::seconds newPatience = std::chrono::seconds(10));

    /// The answer to a request that the service has accepted.
    nlohmann::json ask(const nlohmann::json& request);
    /// The connection, for what follows an answer. Its waits have no end.
    control::Connection release();

private:
    control::Connection connection;
    std::chrono::seconds patience;
};

/// Whether a process of user `server` may serve user `client`. Anybody else's could lie to the operator.
constexpr bool mayServe(uid_t server, uid_t client) {
    return server == client || server == 0;
}

}  // namespace dtvctl
