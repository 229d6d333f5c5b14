// OperatorRequests: what an operator may ask for. A request is a line with a JSON object that has a "command". Its
// answer is one too, and has "ok" and, where that is false, an "error".
// Threads: the loop's.   Blocks: never.
// Fails:   a request that cannot be carried out is answered so, with what is wrong.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace dtvservice {

class OperatorRequests {
public:
    /// Gives what the answer says. Throws std::invalid_argument with what is wrong with the request.
    using Handler = std::function<nlohmann::json(const nlohmann::json& request)>;

    /// Where several rooms have something to say to one command, the answer has it all.
    void add(const std::string& command, Handler handler);
    /// The answer to a line, without the end of the line.
    std::string answer(const std::string& line) const;

private:
    nlohmann::json answer(const std::string& command, const nlohmann::json& request) const;

    std::map<std::string, std::vector<Handler>> handlers;  // by command
};

}  // namespace dtvservice
