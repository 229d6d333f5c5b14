// OperatorRequests: the requests that an operator may send. A request is one line with a JSON object; its "command"
// names the request. The answer is one line with a JSON object, too: "ok" is true, or false with the reason in "error".
// Threads: the loop's; the rest of a long answer on any.
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

    /// The rest of a long answer. It runs on another thread, so it has copies of what it uses.
    using Rest = std::function<nlohmann::json()>;
    /// Does as little as possible on the loop's thread.
    using LongHandler = std::function<Rest(const nlohmann::json& request)>;
    /// The line of an answer. Any thread calls it, once.
    using Answer = std::function<std::string()>;

    /// Several rooms may handle one command: the answer then has the fields of all of them.
    void add(const std::string& command, Handler handler);
    void addLong(const std::string& command, LongHandler handler);
    /// The answer to one line. Neither line includes its line break.
    Answer begin(const std::string& line) const;
    /// The same, whole.
    std::string answer(const std::string& line) const { return begin(line)(); }

private:
    Rest begin(const std::string& command, const nlohmann::json& request) const;
    nlohmann::json answer(const std::string& command, const nlohmann::json& request) const;

    std::map<std::string, std::vector<Handler>> handlers;  // by command
    std::map<std::string, LongHandler> longHandlers;       // by command
};

}  // namespace dtvservice
