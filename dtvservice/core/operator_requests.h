// OperatorRequests: the requests that an operator may send. A request is one line with a JSON object; its "command"
// names the request. The answer is one line with a JSON object, too: "ok" is true, or false with the reason in "error".
// Threads: the loop's.
// Blocks:  never.
// Fails:   a request that cannot be carried out gets an answer with the reason.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace dtvservice {

class OperatorRequests {
public:
    /// Returns the fields of the answer. Throws std::invalid_argument if the request is wrong; its text says why.
    using Handler = std::function<nlohmann::json(const nlohmann::json& request)>;

    /// Several rooms may handle one command: the answer then has the fields of all of them.
    void add(const std::string& command, Handler handler);
    /// The answer to one line. Neither line includes its line break.
    std::string answer(const std::string& line) const;

private:
    nlohmann::json answer(const std::string& command, const nlohmann::json& request) const;

    std::map<std::string, std::vector<Handler>> handlers;  // by command
};

}  // namespace dtvservice
